// The file system of tests/slow_fs, mounted for one test.
#pragma once

#include <sys/types.h>

#include <string>

#include "tests/support/temp_dir.h"

class SlowMount {
 public:
  // mode and hang are those of slow_fs; hang in milliseconds.
  SlowMount(const std::string& mode, int hang);
  ~SlowMount();
  SlowMount(const SlowMount&) = delete;

  // False without libfuse or /dev/fuse: the test is to be skipped.
  bool mounted() const { return mounted_; }
  const std::string& path() const { return path_; }
  // Calls that have hung so far.
  int hung() const { return static_cast<int>(read_file(dir_ / "log").size()); }

 private:
  TempDir dir_;
  std::string path_;
  pid_t pid_ = -1;
  bool mounted_ = false;
};
