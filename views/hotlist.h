// The hotlist: the user's favourite directories, in order. Interface thread only.
#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

struct Hotlist {
  std::vector<std::string> paths;
};

extern Hotlist gTree;

// Who shows gTree is told of each change that the functions below make to it.
struct HotlistWatch {
  std::function<void(size_t index)> added;
  std::function<void(size_t index)> removed;  // the path that stood there is gone already
  std::function<void()> replaced;             // everything
};
void tree_watch(HotlistWatch watch);

// Replaces gTree by the lines of dir/file, one absolute path of at most 1023 bytes a line. Duplicates and
// lines that cannot be such a path are passed over. Without the file (or with dir null): "/" alone.
void tree_load(const char* dir, const char* file);
// Before the last tree_save: adds to gTree what another window has added to dir/file since tree_load, and
// removes what it has removed; takes over its order too where this window has changed nothing. Nobody who
// shows gTree is told.
void tree_take_over(const char* dir, const char* file);
// Writes every path of gTree, a line each. 0, or -1 when the file cannot be written; then the old one stays.
int tree_save(const char* dir, const char* file);
// Appends path. 0; -1 when it is already there.
int tree_add(Hotlist* tree, const char* path);
// Removes path where it is in the hotlist.
void tree_remove(Hotlist* tree, const char* path);
// 1 when the path is in the hotlist (exact text), else 0.
int tree_lookup(const char* path);

// The paths in the text of a hotlist file: what tree_load takes over, in order.
std::vector<std::string> tree_parse(const std::string& text);
