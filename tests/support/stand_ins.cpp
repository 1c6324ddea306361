#include "tests/support/stand_ins.h"

#include <algorithm>
#include <cstdlib>
#include <filesystem>

#include "platform/host.h"

std::vector<std::string> hostile_names() {
  std::vector<std::string> names = {std::string(255, 'n')};
  for (const char* name :
       {"$(touch canary)", "`touch canary`", ";touch canary;", "|touch canary&", ">canary",
        "'$(touch canary)'", "';touch canary;'", "\"$(touch canary)\"", "\";touch canary;\"",
        "\ntouch canary;#", "-rf", "+!touch canary", "#@%s%n", "\\", "$HOME *", "\xff\x01\x1b[31m\x7f", " "})
    names.push_back(name);
  return names;
}

std::string as_received(std::string name) {
  for (size_t at = 0; (at = name.find('\'', at)) != std::string::npos;) name.replace(at, 1, "\\047");
  return name;
}

StandIns::StandIns() {
  const std::pair<const char*, std::string> wanted[] = {
      {"PATH", dir_ / "bin" + ":" + getenv("PATH")}, {"TERMINAL", "terminal"}, {"DISPLAY", ":stand-in"}};
  for (const char* name :
       {"PATH", "TERMINAL", "DISPLAY", "WAYLAND_DISPLAY", "VISUAL", "EDITOR", "PAGER", "BROWSER"}) {
    const char* value = getenv(name);
    environment_.emplace_back(name, value ? value : "");
    if (std::string(name) != "PATH") unsetenv(name);
  }
  for (const auto& [name, value] : wanted) setenv(name, value.c_str(), 1);
  std::filesystem::create_directory(dir_ / "bin");
  std::filesystem::create_directory(dir_ / "log");
  host_extend_path();
}

StandIns::~StandIns() {
  for (const auto& [name, value] : environment_)
    value.empty() ? unsetenv(name.c_str()) : setenv(name.c_str(), value.c_str(), 1);
}

void StandIns::add(const std::string& name, const std::string& then) {
  // A call is either not there or complete.
  const std::string log = dir_ / "log";
  write_file(dir_ / ("bin/" + name),
             "#!/bin/sh\n"
             "at=$(date +%s%N).$$\n"
             "{ printf '%s\\0' '" +
                 name + "' \"$@\"; } > '" + log + "'/.$at && mv '" + log + "'/.$at '" + log + "'/$at\n" +
                 then + "\n",
             0755);
}

void StandIns::hide_other_programs() {
  std::filesystem::create_directory(dir_ / "tools");
  for (const char* tool : {"sh", "date", "mv", "cat", "touch"})
    std::filesystem::create_symlink(pathfind_r("/usr/bin:/bin", tool), dir_ / ("tools/" + std::string(tool)));
  setenv("PATH", (dir_ / "bin" + ":" + (dir_ / "tools")).c_str(), 1);
  host_extend_path();
}

std::vector<StandIns::Call> StandIns::read_calls() const {
  std::vector<std::string> files;
  for (const auto& file : std::filesystem::directory_iterator(dir_ / "log"))
    if (!file.path().filename().string().starts_with('.')) files.push_back(file.path());
  std::sort(files.begin(), files.end());
  std::vector<Call> calls;
  for (const std::string& file : files) {
    const std::string text = read_file(file);
    Call call;
    for (size_t at = 0; at < text.size(); at = text.find('\0', at) + 1) call.push_back(text.c_str() + at);
    calls.push_back(call);
  }
  return calls;
}

std::vector<StandIns::Call> StandIns::calls_of(const std::string& name, size_t count) {
  for (int i = 0; i < 6000; ++i, usleep(10000)) {
    std::vector<Call> calls = read_calls();
    std::erase_if(calls, [&](const Call& call) { return !name.empty() && call[0] != name; });
    if (calls.size() >= count) return calls;
  }
  ADD_FAILURE() << name << " was never called";
  return {count, Call(8)};
}
