#include "views/path_complete.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

#include <cstring>
#include <memory>
#include <string>

#include "dirmodel/fs_probe.h"

namespace {

struct Matches {
  std::string dir, prefix, common;
  int count = 0;

  void add(const std::string& name) {
    if (count++ == 0) {
      common = name;
      return;
    }
    size_t same = 0;
    while (same < common.size() && same < name.size() && common[same] == name[same]) ++same;
    common.resize(same);
  }
};

void collect_matches(Matches* matches) {
  DIR* stream = opendir(matches->dir.c_str());
  if (!stream) return;
  while (const dirent* entry = readdir(stream)) {
    const char* name = entry->d_name;
    if (std::strcmp(name, ".") == 0 || std::strcmp(name, "..") == 0) continue;
    if (std::strncmp(name, matches->prefix.c_str(), matches->prefix.size()) != 0) continue;
    struct stat status;
    if (fstatat(dirfd(stream), name, &status, 0) == 0 && S_ISDIR(status.st_mode)) matches->add(name);
  }
  closedir(stream);
}

}  // namespace

const char* find_matching_dir(const char* text) {
  static std::string result;
  if (!text || text[0] != '/') return nullptr;
  auto matches = std::make_shared<Matches>();
  const std::string typed = text;
  const size_t slash = typed.rfind('/');
  matches->dir = slash == 0 ? "/" : typed.substr(0, slash);
  matches->prefix = typed.substr(slash + 1);
  if (!fs_bounded_look(typed, [matches] { collect_matches(matches.get()); }) || matches->count == 0)
    return nullptr;
  result = (slash == 0 ? "" : matches->dir) + "/" + matches->common + (matches->count == 1 ? "/" : "");
  return result.c_str();
}
