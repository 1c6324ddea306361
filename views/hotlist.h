// The hotlist: the user's favourite directories, in order.
#pragma once

#include <string>
#include <vector>

struct Hotlist {
  std::vector<std::string> paths;
};

extern Hotlist gTree;

// Reads dir/file, one path a line (at most 1023 bytes); duplicates dropped. Without the file: "/" alone.
void tree_load(const char* dir, const char* file);
// 0, or -1 when the file cannot be created.
int tree_save(const char* dir, const char* file);
// 0; -1 when the path is already there.
int tree_add(Hotlist* tree, const char* path);
void tree_remove(Hotlist* tree, const char* path);
// 1 when the path is in the hotlist (exact text), else 0.
int tree_lookup(const char* path);
