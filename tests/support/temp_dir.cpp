#include "tests/support/temp_dir.h"

#include <sys/wait.h>

#include <csignal>
#include <filesystem>
#include <fstream>

TempDir::TempDir(const char* place) {
  const bool there = std::filesystem::is_directory(place);
  std::string name = (there ? place : std::filesystem::temp_directory_path().string()) + "/zan-test-XXXXXX";
  if (!mkdtemp(name.data())) std::abort();
  path_ = std::filesystem::canonical(name).string();
}

TempDir::~TempDir() {
  (void)!chdir("/");
  run_shell("chmod -R u+rwX '" + path_ + "' 2>/dev/null; rm -rf '" + path_ + "'");
}

std::string TempDir::shell(const std::string& script) const {
  std::string output;
  EXPECT_EQ(run_shell("cd '" + path_ + "' && " + script, &output), 0) << script;
  return output;
}

std::string TempDir::listing(const std::string& below) const {
  return shell("find '" + below + "' -mindepth 1 -printf '%P\\n' | LC_ALL=C sort | tr '\\n' ' '");
}

void write_file(const std::string& path, const std::string& text, unsigned mode) {
  std::ofstream(path, std::ios::binary) << text;
  ASSERT_EQ(chmod(path.c_str(), mode), 0) << path;
}

std::string read_file(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

bool comes_to_hold(const std::string& path, const std::string& text) {
  for (int i = 0; i < 6000; ++i, usleep(10000))
    if (path_exists(path) && read_file(path).find(text) != std::string::npos) return true;
  return false;
}

bool path_exists(const std::string& path) {
  return mode_of(path) != 0xffff;
}

unsigned mode_of(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0xffff;
}

std::string link_target(const std::string& path) {
  char text[4096];
  return std::string(text, std::max<ssize_t>(readlink(path.c_str(), text, sizeof text), 0));
}

int run_shell(const std::string& command, std::string* output) {
  // Code under test ignores SIGCHLD, and a child that is not kept cannot be waited for.
  const auto before = std::signal(SIGCHLD, SIG_DFL);
  FILE* pipe = popen(command.c_str(), "r");
  if (!pipe) return -1;
  std::string text;
  for (int byte; (byte = getc(pipe)) != EOF;) text.push_back(static_cast<char>(byte));
  const int status = pclose(pipe);
  std::signal(SIGCHLD, before);
  if (output) *output = text;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}
