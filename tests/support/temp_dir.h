// A directory of its own for each test, gone at the end whatever modes the test left in it.
#pragma once

#include <string>

class TempDir {
 public:
  TempDir();
  ~TempDir();
  TempDir(const TempDir&) = delete;
  TempDir& operator=(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

// Writes text as the whole content of path; the test fails when that cannot be done.
void write_file(const std::string& path, const std::string& text, unsigned mode = 0644);
// The whole content of path; empty when it cannot be read.
std::string read_file(const std::string& path);
bool path_exists(const std::string& path);  // lstat
// Runs a shell command line and waits. Its exit status; output (if wanted) is its standard output.
int run_shell(const std::string& command, std::string* output = nullptr);
