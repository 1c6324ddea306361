#include "core/walktree.h"

#include <dirent.h>

#include <cstring>
#include <string>
#include <vector>

namespace {
constexpr size_t kPathMax = 1024;  // the terminating byte included

// The names are taken before the walk goes down: a deep tree must not hold a descriptor for every level.
bool walk_names(const char* directory, std::vector<std::string>* names) {
  DIR* stream = opendir(directory);
  if (!stream) return false;
  while (const dirent* entry = readdir(stream))
    if (std::strcmp(entry->d_name, ".") != 0 && std::strcmp(entry->d_name, "..") != 0)
      names->push_back(entry->d_name);
  closedir(stream);
  return true;
}

int walk_entry(const std::string& path, const walk_visit& visit, int dirs_first) {
  struct stat64 status;
  if (path.size() >= kPathMax || lstat64(path.c_str(), &status) != 0) return 0;
  if (S_ISDIR(status.st_mode)) return misc_walktree(path.c_str(), visit, dirs_first);
  return visit(path.c_str(), status);
}
}  // namespace

int misc_walktree(const char* directory, const walk_visit& visit, int dirs_first) {
  struct stat64 status;
  if (stat64(directory, &status) != 0 || !S_ISDIR(status.st_mode)) return -1;
  // What a visit on the way down reports does not end the walk; only files can.
  if (dirs_first) visit(directory, status);
  std::vector<std::string> names;
  if (!walk_names(directory, &names)) return -1;
  std::string prefix = directory;
  if (!prefix.ends_with('/')) prefix += '/';
  for (const std::string& name : names)
    if (walk_entry(prefix + name, visit, dirs_first) == -1) return -1;
  if (!dirs_first) visit(directory, status);
  return 0;
}
