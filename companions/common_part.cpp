#include "companions/common_part.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>

namespace {
std::string sName;

bool is_program(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0;
}

bool file_exists(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0;
}

std::string sibling(const std::string& name) {
  char path[PATH_MAX];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  const std::string own(path, length > 0 ? static_cast<size_t>(length) : 0);
  const std::string found = own.substr(0, own.rfind('/') + 1) + name;
  return is_program(found) ? found : companion_find(name);
}

// The ways to show a text in a window, in the order of their looks.
void show_in_window(const std::string& text) {
  const Words ways[] = {{"kdialog", "--title", sName, "--error", text},
                        {"zenity", "--error", "--no-markup", "--title=" + sName, "--text=" + text},
                        {"xmessage", "-center", "-title", sName, text}};
  for (const Words& way : ways)
    if (!companion_find(way[0]).empty()) return companion_exec(way);
  const std::string conwin = sibling("conwin");
  if (sName != "conwin" && !conwin.empty()) companion_exec({conwin, "-z", "printf", "%s\n", text});
}
}  // namespace

void companion_start(int argc, char** argv, const char* help) {
  sName = companion_base_name(argv[0]);
  for (int number = 1; number < NSIG; ++number) std::signal(number, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0 && !file_exists("--help")) {
    std::fputs(help, stdout);
    std::exit(0);
  }
}

std::string companion_find(const std::string& program) {
  if (program.empty() || program.find('/') != std::string::npos) return is_program(program) ? program : "";
  const char* value = getenv("PATH");
  const std::string list = value ? value : "/usr/local/bin:/usr/bin:/bin";
  for (size_t start = 0; start <= list.size();) {
    size_t end = list.find(':', start);
    if (end == std::string::npos) end = list.size();
    const std::string path = list.substr(start, end - start) + "/" + program;
    if (end > start && is_program(path)) return path;
    start = end + 1;
  }
  return {};
}

std::string companion_find_first(const std::vector<const char*>& programs) {
  for (const char* program : programs)
    if (std::string found = companion_find(program); !found.empty()) return found;
  return {};
}

std::string companion_base_name(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

bool companion_has_display() {
  const auto is_set = [](const char* name) {
    const char* value = getenv(name);
    return value && *value;
  };
  return is_set("DISPLAY") || is_set("WAYLAND_DISPLAY");
}

bool companion_has_terminal() {
  return isatty(STDIN_FILENO) && isatty(STDOUT_FILENO);
}

std::string companion_file(const std::string& argument) {
  if (file_exists(argument)) return argument;
  std::string meant = argument;
  for (size_t at = 0; (at = meant.find("\\047", at)) != std::string::npos; ++at) meant.replace(at, 4, "'");
  return file_exists(meant) ? meant : argument;
}

std::string companion_file_argument(const std::string& argument) {
  const std::string file = companion_file(argument);
  const unsigned char first = file.empty() ? 0 : static_cast<unsigned char>(file[0]);
  const bool ordinary = isalnum(first) || first >= 0x80 || (first && std::strchr("/._", first));
  return ordinary ? file : "./" + file;
}

std::string companion_file_path(const std::string& argument) {
  const std::string file = companion_file(argument);
  if (file.starts_with('/')) return file;
  char* here = getcwd(nullptr, 0);
  const std::string directory = here ? here : ".";
  free(here);
  return directory + (directory.ends_with('/') ? "" : "/") + file;
}

void companion_exec(const Words& words) {
  std::vector<char*> argv;
  for (const std::string& word : words) argv.push_back(const_cast<char*>(word.c_str()));
  argv.push_back(nullptr);
  const std::string path = companion_find(words[0]);
  if (!path.empty()) execv(path.c_str(), argv.data());
  if (errno == ENOEXEC) {  // a script without a first line "#!"
    argv[0] = const_cast<char*>(path.c_str());
    argv.insert(argv.begin(), const_cast<char*>("sh"));
    execv("/bin/sh", argv.data());
  }
}

void companion_exec_in_terminal(const Words& words) {
  if (companion_has_terminal()) return companion_exec(words);
  Words all{sibling("conwin"), "-e"};
  all.insert(all.end(), words.begin(), words.end());
  companion_exec(all);
}

int companion_run(const Words& words) {
  std::fflush(nullptr);
  const pid_t pid = fork();
  if (pid < 0) return 127;
  if (pid == 0) {
    companion_exec(words);
    _exit(127);
  }
  int status = 0;
  while (waitpid(pid, &status, 0) < 0 && errno == EINTR) continue;
  return WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status);
}

void companion_detach() {
  int ready[2];
  if (pipe2(ready, O_CLOEXEC) != 0) return;
  const pid_t pid = fork();
  if (pid < 0) return;
  if (pid > 0) {
    // Not before the other one has left this terminal: its end would take that one along.
    char byte;
    close(ready[1]);
    (void)!read(ready[0], &byte, 1);
    _exit(0);
  }
  setsid();
  const int null = open("/dev/null", O_RDWR | O_CLOEXEC);
  for (const int fd : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
    if (isatty(fd)) dup2(null, fd);
  close(ready[0]);
  close(ready[1]);
}

void companion_fail(const std::string& message) {
  std::fprintf(stderr, "%s: %s\n", sName.c_str(), message.c_str());
  // A terminal shows it already: conwin keeps the window of a command that failed.
  if (!isatty(STDERR_FILENO) && companion_has_display() && fork() == 0) {
    setsid();
    show_in_window(sName + ": " + message);
    _exit(1);
  }
  std::exit(1);
}
