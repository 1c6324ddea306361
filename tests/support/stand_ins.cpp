#include "tests/support/stand_ins.h"

#include <algorithm>
#include <filesystem>

#include "platform/host.h"

std::vector<std::string> hostile_names() {
  return {std::string(255, 'n'),
          "$(touch canary)",
          "`touch canary`",
          ";touch canary;",
          "|touch canary&",
          ">canary",
          "'$(touch canary)'",
          "';touch canary;'",
          "\"$(touch canary)\"",
          "\";touch canary;\"",
          "\ntouch canary;#",
          "-rf",
          "+!touch canary",
          "#@%s%n",
          "\\",
          "$HOME *",
          "\xff\x01\x1b[31m\x7f",
          " "};
}

std::string as_received(std::string name) {
  for (size_t at = 0; (at = name.find('\'', at)) != std::string::npos;) name.replace(at, 1, "\\047");
  return name;
}

StandIns::StandIns() {
  dir_.shell("mkdir bin log tools");
  const std::string path = dir_ / "bin" + ":" + getenv("PATH");
  for (const char* name :
       {"PATH", "TERMINAL", "DISPLAY", "WAYLAND_DISPLAY", "VISUAL", "EDITOR", "PAGER", "BROWSER"}) {
    const char* value = getenv(name);
    environment_.emplace_back(name, value ? value : "");
    unsetenv(name);
  }
  setenv("PATH", path.c_str(), 1);
  setenv("TERMINAL", "terminal", 1);
  setenv("DISPLAY", ":stand-in", 1);
  host_extend_path();
}

StandIns::~StandIns() {
  for (const auto& [name, value] : environment_)
    value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
}

void StandIns::add(const std::string& name, const std::string& then) {
  // A call is either not there or complete.
  write_file(dir_ / ("bin/" + name),
             "#!/bin/sh\nat=$(date +%s%N).$$\nlog='" + dir_ / "log" + "'\n" + "{ printf '%s\\0' '" + name +
                 "' \"$@\"; } > \"$log/.$at\" && mv \"$log/.$at\" \"$log/$at\"\n" + then + "\n",
             0755);
}

void StandIns::hide_other_programs() {
  dir_.shell(
      "ln -s $(command -v sh) $(command -v date) $(command -v mv) $(command -v cat) $(command -v touch) "
      "tools");
  setenv("PATH", (dir_ / "bin" + ":" + dir_ / "tools").c_str(), 1);
  host_extend_path();
}

std::vector<StandIns::Call> StandIns::calls_of(const std::string& name, size_t count) {
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
