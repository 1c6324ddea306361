// A temporary directory that is the one shown: it is the working directory, and gDir has its entries.
#pragma once

#include "dirmodel/dir_record.h"
#include "tests/support/temp_dir.h"

// An entry that only the record knows of.
DirEntry* record_add(DirRecord* record, const std::string& name, int64_t size = 0, mode_t mode = S_IFREG);

struct ShownDir : TempDir {
  ShownDir();
  ~ShownDir();
  // Adds an entry in listing order: a name that ends in '/' makes a directory, any other an empty file.
  void add(const std::string& name);
  void select(const std::vector<std::string>& names);  // exactly these
  void make_current(const std::string& name);
};
