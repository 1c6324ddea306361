#include "commands/symlink.h"

#include <limits.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "commands/typed_name.h"
#include "platform/host.h"

namespace {

constexpr size_t LONGEST_TARGET = 1025;
constexpr int IS_LINK = -1, IS_OTHER = -2;

SymlinkResult notice(const char* title, std::string text) {
  return {SymlinkStep::NOTICE, title, std::move(text)};
}

int look_at(const std::string& path) {
  struct stat64 status;
  if (lstat64(path.c_str(), &status) != 0) return 0;
  return S_ISLNK(status.st_mode) ? IS_LINK : IS_OTHER;
}

int make_link(const std::string& target, const std::string& path, bool by_path_manager) {
  const int made =
      by_path_manager ? pathmgr_symlink(target.c_str(), path.c_str()) : symlink(target.c_str(), path.c_str());
  return made == 0 ? 0 : errno;
}

// The old link is put back when the new one cannot be made.
int replace_link(const std::string& target, const std::string& path, bool by_path_manager) {
  char old[PATH_MAX + 1] = "";
  if (readlink(path.c_str(), old, PATH_MAX) <= 0) return errno;
  if (unlink(path.c_str()) != 0) return errno;
  const int error = make_link(target, path, by_path_manager);
  if (error != 0) (void)!symlink(old, path.c_str());
  return error;
}

}  // namespace

SymlinkResult symlink_create(const std::string& dir, const std::string& source,
                             const std::string& destination, bool by_path_manager, bool overwrite) {
  if (source.empty()) return {};
  if (destination.empty()) return notice("Input Error", "Symlink destination name must be entered!");
  std::string name, message;
  if (!typed_name_encode(destination, &name, &message)) return notice("Symlink Error", message);
  const std::string path = typed_name_below(dir, name), target = dir + "/" + source;

  const int found = bounded_errno(path, [path] { return look_at(path); });
  if (found == IS_LINK && !overwrite) {
    return {SymlinkStep::ASK, "Symlink Exists",
            "The destination symlink exists.\nDo you want to overwrite it ?"};
  }
  if (found == IS_OTHER) {
    return notice("Symlink Error", text_format("'%s' exists and is not a symlink.\n", destination.c_str()));
  }
  int error = found > 0 ? found : ENAMETOOLONG;  // a target that is cut would point elsewhere
  if (found <= 0 && target.size() <= LONGEST_TARGET) {
    error = bounded_errno(path, [=] {
      return found == IS_LINK ? replace_link(target, path, by_path_manager)
                              : make_link(target, path, by_path_manager);
    });
  }
  if (error == 0) return {SymlinkStep::DONE, "", ""};
  return notice("Symlink Error", text_format("%s: unable to create symlink\nError: %s\n", destination.c_str(),
                                             strerror(error)));
}
