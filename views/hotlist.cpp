#include "views/hotlist.h"

#include <algorithm>
#include <cstdint>
#include <unordered_set>

#include "core/save_file.h"

Hotlist gTree;

namespace {
constexpr size_t MAX_LINE = 1023;
HotlistWatch sWatch;
std::vector<std::string> sLoaded;  // what tree_load took over

bool has_path(const std::vector<std::string>& paths, const std::string& path) {
  return std::find(paths.begin(), paths.end(), path) != paths.end();
}
}  // namespace

void tree_watch(HotlistWatch watch) {
  sWatch = std::move(watch);
}

std::vector<std::string> tree_parse(const std::string& text) {
  std::vector<std::string> paths;
  std::unordered_set<std::string> seen;
  for (size_t at = 0; at < text.size();) {
    const size_t end = std::min(text.find('\n', at), text.size());
    std::string line = text.substr(at, std::min(end - at, MAX_LINE + 1));
    at = end + 1;
    if (line.empty() || line[0] != '/' || line.size() > MAX_LINE) continue;
    if (line.find('\0') != std::string::npos || !seen.insert(line).second) continue;
    paths.push_back(std::move(line));
  }
  return paths;
}

void tree_load(const char* dir, const char* file) {
  std::string text;
  if (load_file(dir, file, SIZE_MAX, &text))
    gTree.paths = tree_parse(text);
  else
    gTree.paths = {"/"};
  sLoaded = gTree.paths;
  if (sWatch.replaced) sWatch.replaced();
}

void tree_take_over(const char* dir, const char* file) {
  std::string text;
  if (!load_file(dir, file, SIZE_MAX, &text)) return;
  const std::vector<std::string> theirs = tree_parse(text);
  if (gTree.paths == sLoaded) {
    gTree.paths = theirs;
    return;
  }
  std::erase_if(gTree.paths,
                [&](const std::string& path) { return has_path(sLoaded, path) && !has_path(theirs, path); });
  for (const std::string& path : theirs)
    if (!has_path(sLoaded, path) && !has_path(gTree.paths, path)) gTree.paths.push_back(path);
}

int tree_save(const char* dir, const char* file) {
  if (!dir) return -1;
  std::string text;
  for (const std::string& path : gTree.paths) text += path + "\n";
  return save_file(dir, file, text);
}

int tree_add(Hotlist* tree, const char* path) {
  if (has_path(tree->paths, path)) return -1;
  tree->paths.emplace_back(path);
  if (tree == &gTree && sWatch.added) sWatch.added(tree->paths.size() - 1);
  return 0;
}

void tree_remove(Hotlist* tree, const char* path) {
  const auto found = std::find(tree->paths.begin(), tree->paths.end(), path);
  if (found == tree->paths.end()) return;
  const auto index = static_cast<size_t>(found - tree->paths.begin());
  tree->paths.erase(found);
  if (tree == &gTree && sWatch.removed) sWatch.removed(index);
}

int tree_lookup(const char* path) {
  return has_path(gTree.paths, path) ? 1 : 0;
}
