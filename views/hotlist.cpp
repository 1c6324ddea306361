#include "views/hotlist.h"

#include <algorithm>
#include <cstdint>
#include <unordered_set>

#include "core/save_file.h"

Hotlist gTree;

namespace {
constexpr size_t MAX_LINE = 1023;
HotlistWatch sWatch;
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
  if (sWatch.replaced) sWatch.replaced();
}

int tree_save(const char* dir, const char* file) {
  if (!dir) return -1;
  std::string text;
  for (const std::string& path : gTree.paths) text += path + "\n";
  return save_file(dir, file, text);
}

int tree_add(Hotlist* tree, const char* path) {
  if (std::find(tree->paths.begin(), tree->paths.end(), path) != tree->paths.end()) return -1;
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
  return std::find(gTree.paths.begin(), gTree.paths.end(), path) != gTree.paths.end() ? 1 : 0;
}
