// A temporary directory that is the one shown: it is the working directory, and gDir has its entries.
#pragma once

#include <string>
#include <vector>

#include "dirmodel/dir_record.h"
#include "tests/support/temp_dir.h"

class ShownDir {
 public:
  ShownDir();
  ~ShownDir();
  // Adds an entry in listing order: a name that ends in '/' makes a directory, any other an empty file (mode
  // 0755 when executable).
  void add(const std::string& name, bool selected, bool executable = false);
  void select(const std::vector<std::string>& names);  // exactly these
  void make_current(const std::string& name);
  std::string operator/(const std::string& name) const { return dir_ / name; }

 private:
  void count();
  TempDir dir_;
  std::vector<DirEntry*> entries_;
};
