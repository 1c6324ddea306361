// Templates with names put into them, run by the real shell: whatever the template, a name must not execute.
#include <sys/wait.h>
#include <unistd.h>

#include <cstdlib>
#include <string>

#include "core/command_text.h"

namespace {
// Letters of commands are taken away, so that all the template itself can run is nothing: what then runs a
// program is a name.
std::string harmless_template(const uint8_t* data, size_t size) {
  static const char kAllowed[] = "@'\"\\`$(){}<>#;&| \t\n=:!x-";
  std::string text;
  for (size_t i = 0; i < size && i < 60; ++i) text += kAllowed[data[i] % (sizeof kAllowed - 1)];
  return text;
}

// Whether the shell that runs the line touches the file. Nothing but that one program is on its path.
bool executes(const std::string& line) {
  static char sDirectory[] = "/tmp/command-fuzz-XXXXXX";
  static const bool made = mkdtemp(sDirectory) != nullptr && chdir(sDirectory) == 0;
  if (!made) abort();
  const pid_t pid = fork();
  if (pid == 0) {
    std::freopen("/dev/null", "w", stderr);
    std::freopen("/dev/null", "w", stdout);
    std::freopen("/dev/null", "r", stdin);
    setenv("PATH", "/nonexistent", 1);
    alarm(5);
    execl("/bin/sh", "sh", "-c", line.c_str(), nullptr);
    _exit(127);
  }
  int status = 0;
  waitpid(pid, &status, 0);
  const bool found = access("canary", F_OK) == 0;
  unlink("canary");
  return found;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text = harmless_template(data, size);
  for (const char* name : {"$(: >canary)", "`: >canary`", "\n: >canary\n", "\n: >canary;#", ";: >canary;",
                           "'$(: >canary)'", "\";: >canary;\"", "x'\n: >canary #"}) {
    std::string command;
    if (!command_expand(text, {name}, &command)) continue;
    if (executes(command)) {
      fprintf(stderr, "template <%s> name <%s> command <%s>\n", text.c_str(), name, command.c_str());
      abort();
    }
  }
  return 0;
}
