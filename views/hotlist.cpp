#include "views/hotlist.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <unordered_set>

Hotlist gTree;

namespace {
constexpr size_t MAX_LINE = 1023;
HotlistWatch sWatch;

// The whole of a regular file. False when there is none: a FIFO in its place must not hold up the start.
bool read_hotlist(const std::string& path, std::string* text) {
  const int fd = open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat st;
  bool ok = fstat(fd, &st) == 0 && S_ISREG(st.st_mode);
  char block[16384];
  for (ssize_t n = 1; ok && n != 0;) {
    n = read(fd, block, sizeof block);
    if (n > 0) text->append(block, static_cast<size_t>(n));
    if (n < 0 && errno != EINTR) ok = false;
  }
  close(fd);
  return ok;
}

bool write_all(int fd, const std::string& text) {
  for (size_t done = 0; done < text.size();) {
    const ssize_t n = write(fd, text.data() + done, text.size() - done);
    if (n < 0 && errno != EINTR) return false;
    if (n > 0) done += static_cast<size_t>(n);
  }
  return fsync(fd) == 0;
}

// Written beside and renamed, so that a full disk or a kill leaves the old list.
int replace_file(const std::string& path, const std::string& text) {
  std::string temporary = path + ".XXXXXX";
  const int fd = mkostemp(temporary.data(), O_CLOEXEC);
  if (fd < 0) return -1;
  const bool written = write_all(fd, text) && fchmod(fd, 0644) == 0;
  if (close(fd) != 0 || !written || rename(temporary.c_str(), path.c_str()) != 0) {
    unlink(temporary.c_str());
    return -1;
  }
  return 0;
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
  if (dir && read_hotlist(std::string(dir) + "/" + file, &text))
    gTree.paths = tree_parse(text);
  else
    gTree.paths = {"/"};
  if (sWatch.replaced) sWatch.replaced();
}

int tree_save(const char* dir, const char* file) {
  if (!dir) return -1;
  std::string text;
  for (const std::string& path : gTree.paths) text += path + "\n";
  return replace_file(std::string(dir) + "/" + file, text);
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
