// Stand-ins for programs, first on the PATH, that record how they were called; and names that would do harm
// if any shell or program took them for more than names.
#pragma once

#include <filesystem>

#include "platform/host.h"
#include "tests/support/shown_dir.h"

// Each would leave a file "canary" if anything of it were executed as it stands in the directory shown.
inline std::vector<std::string> hostile_names() {
  std::vector<std::string> names = {std::string(255, 'n')};
  for (const char* name :
       {"$(touch canary)", "`touch canary`", ";touch canary;", "|touch canary&", ">canary",
        "'$(touch canary)'", "';touch canary;'", "\"$(touch canary)\"", "\";touch canary;\"",
        "\ntouch canary;#", "-rf", "+!touch canary", "#@%s%n", "\\", "$HOME *", "\xff\x01\x1b[31m\x7f", " "})
    names.push_back(name);
  return names;
}

// A name as a started program gets it: the quoting passes a single quote on as four characters.
inline std::string as_received(std::string name) {
  for (size_t at = 0; (at = name.find('\'', at)) != std::string::npos;) name.replace(at, 1, "\\047");
  return name;
}

class StandIns {
 public:
  using Call = std::vector<std::string>;  // the program's name, then its arguments

  // Puts the stand-ins' directory before the PATH and the companions' behind it, names the stand-in
  // "terminal" in TERMINAL and sets a DISPLAY that is none.
  StandIns() {
    dir_.shell("mkdir bin log tools");
    const std::string path = dir_ / "bin" + ":" + getenv("PATH");
    for (const char* name : {"PATH", "TERMINAL", "DISPLAY", "WAYLAND_DISPLAY", "VISUAL", "EDITOR", "PAGER",
                             "BROWSER", "XDG_RUNTIME_DIR"}) {
      const char* value = getenv(name);
      environment_.emplace_back(name, value ? value : "");
      unsetenv(name);
    }
    setenv("PATH", path.c_str(), 1);
    setenv("TERMINAL", "terminal", 1);
    setenv("DISPLAY", ":stand-in", 1);
    host_extend_path();
  }
  ~StandIns() {
    for (const auto& [name, value] : environment_)
      value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
  }
  // A program that records its call and ends with that status, or goes on with a line of shell.
  void add(const std::string& name, const std::string& then = "exit 0") {
    // A call is either not there or complete.
    write_file(dir_ / ("bin/" + name),
               "#!/bin/sh\nat=$(date +%s%N).$$\nlog='" + dir_ / "log" + "'\n" + "{ printf '%s\\0' '" + name +
                   "' \"$@\"; } > \"$log/.$at\" && mv \"$log/.$at\" \"$log/$at\"\n" + then + "\n",
               0755);
  }
  // A terminal that runs "-e PROGRAM ARGUMENT..." (or a shell that ends at once) without a window.
  void add_running_terminal() { add("terminal", "[ $# -gt 0 ] || exit 0; shift; exec \"$@\""); }
  // From now on nothing else is found but the companions and what the stand-ins themselves need.
  void hide_other_programs() {
    dir_.shell("for tool in sh date mv cat touch; do ln -s $(command -v $tool) tools; done");
    setenv("PATH", (dir_ / "bin" + ":" + dir_ / "tools").c_str(), 1);
    host_extend_path();
  }
  // The calls, in the order they came, once there are at least so many.
  std::vector<Call> calls(size_t count) { return calls_of("", count); }
  // Of the program of that name.
  std::vector<Call> calls_of(const std::string& name, size_t count) {
    for (int i = 0; i < 6000; ++i, usleep(10000)) {
      std::vector<std::string> files;
      for (const auto& file : std::filesystem::directory_iterator(dir_ / "log"))
        if (!file.path().filename().string().starts_with('.')) files.push_back(file.path());
      std::sort(files.begin(), files.end());
      std::vector<Call> calls;
      for (const std::string& file : files) {
        const std::string text = read_file(file);
        Call call;
        for (size_t at = 0; at < text.size(); at = text.find('\0', at) + 1) call.push_back(text.c_str() + at);
        if (name.empty() || call[0] == name) calls.push_back(call);
      }
      if (calls.size() >= count) return calls;
    }
    ADD_FAILURE() << name << " was never called";
    return {count, Call(8)};
  }
  // The first of them; then all calls are forgotten.
  Call take(const std::string& name = "") {
    const Call call = calls_of(name, 1)[0];
    clear();
    return call;
  }
  void clear() { dir_.shell("/bin/rm -f log/*"); }  // forgets the calls so far

 private:
  TempDir dir_;
  std::vector<std::pair<std::string, std::string>> environment_;  // as it was
};

// With a directory that is shown.
struct ProgramsTest : testing::Test {
  using Call = StandIns::Call;
  ShownDir dir;
  StandIns programs;
};
