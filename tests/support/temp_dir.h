// A directory of its own for each test, gone at the end whatever modes the test left in it.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

class TempDir {
 public:
  explicit TempDir(const char* place = "");  // in that directory, where it is one
  ~TempDir();
  TempDir(const TempDir&) = delete;

  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }
  // Runs a shell script in it. Its output; the test fails where the script does.
  std::string shell(const std::string& script) const;
  // What is in it or in its directory `below`, sorted, a blank behind each name.
  std::string listing(const std::string& below = ".") const;

 private:
  std::string path_;
};

// Writes text as the whole content of path; the test fails when that cannot be done.
void write_file(const std::string& path, const std::string& text, unsigned mode = 0644);
// The whole content of path; empty when it cannot be read.
std::string read_file(const std::string& path);
// Waits until the file is there and holds the text, as something started that nobody waits for leaves it.
bool comes_to_hold(const std::string& path, const std::string& text);
bool path_exists(const std::string& path);  // lstat
unsigned mode_of(const std::string& path);  // the permission bits, of a link itself; 0xffff: nothing is there
std::string link_target(const std::string& path);  // empty: no link
// What fn makes of each input, a "|" behind each.
template <class In>
std::string each(const std::vector<In>& inputs, const auto& fn) {
  std::string all;
  for (const In& input : inputs) all += std::string(fn(input)) + "|";
  return all;
}
// Runs a shell command line and waits. Its exit status; output (if wanted) is its standard output.
int run_shell(const std::string& command, std::string* output = nullptr);
