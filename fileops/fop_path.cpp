#include "fileops/fop_path.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>

void fop_fd::reset(int fd) {
  if (fd_ >= 0) {
    const int error = errno;
    close(fd_);
    errno = error;
  }
  fd_ = fd;
}

std::string _build_path(const std::string& dir, const std::string& name) {
  std::string path;
  path.reserve(dir.size() + name.size() + 1);
  if (dir != "/") path = dir;
  const bool dir_slash = !path.empty() && path.back() == '/',
             name_slash = !name.empty() && name.front() == '/';
  if (dir_slash && name_slash) path.pop_back();
  if (!dir_slash && !name_slash) path += '/';
  path += name;
  if (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

std::string fop_dest_path(const fop_request& request, const std::string& source) {
  const size_t prefix = std::min<size_t>(request.src_prefix_len, source.size());
  return _build_path(request.dest, source.substr(prefix));
}

fop_identity fop_identity_of(const struct stat& status) {
  return {status.st_dev, status.st_ino};
}

fop_mark fop_mark_of(const struct stat& status) {
  return {status.st_ino, status.st_size, status.st_mtim.tv_sec * 1000000000 + status.st_mtim.tv_nsec};
}

int32_t fop_child_group(const fop_request& request, int32_t group, int32_t index, int32_t* next) {
  for (; *next < request.ngroups; ++*next) {
    const fop_group& candidate = *request.groups[*next];
    if (candidate.parent > group || (candidate.parent == group && candidate.index > index)) return -1;
    if (candidate.parent == group && candidate.index == index) return *next;
  }
  return -1;
}

fop_fd fop_open_dir(int at, const char* name, int extra_flags) {
  fop_fd dir(openat(at, name, O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK | extra_flags));
  if (!dir && errno == EACCES) dir.reset(openat(at, name, O_PATH | O_DIRECTORY | O_CLOEXEC | extra_flags));
  return dir;
}

fop_fd fop_open_long_path(const std::string& path) {
  if (path.size() < PATH_MAX) return fop_open_dir(AT_FDCWD, path.c_str(), 0);
  fop_fd dir(AT_FDCWD);
  size_t start = 0;
  while (start < path.size()) {
    size_t end = path.size();
    if (end - start >= PATH_MAX) {
      end = path.rfind('/', start + PATH_MAX - 2);
      if (end == std::string::npos || end <= start) return errno = ENAMETOOLONG, fop_fd();
    }
    fop_fd next = fop_open_dir(dir.get(), path.substr(start, end - start).c_str(), 0);
    if (!next) return next;
    dir = std::move(next);
    start = end;
    while (start < path.size() && path[start] == '/') ++start;
  }
  return dir;
}

fop_fd fop_open_source(const fop_request& request, int32_t group) {
  const fop_group& g = *request.groups[group];
  fop_fd dir = fop_open_long_path(g.dir);
  if (!dir || group == 0) return dir;
  struct stat status;
  if (fstat(dir.get(), &status) != 0) return fop_fd();
  if (fop_identity_of(status) != g.source) return errno = ESTALE, fop_fd();
  return dir;
}

// The way to a file that is open merely for paths, where the plain call refuses the descriptor.
static std::string fd_path(int fd) {
  return "/proc/self/fd/" + std::to_string(fd);
}

int fop_fd_mode(int fd, mode_t mode) {
  if (fchmod(fd, mode) == 0) return 0;
  return errno == EBADF ? chmod(fd_path(fd).c_str(), mode) : -1;
}

int fop_fd_times(int fd, const struct stat& source) {
  const timespec times[2] = {source.st_atim, source.st_mtim};
  if (futimens(fd, times) == 0) return 0;
  return errno == EBADF ? utimensat(AT_FDCWD, fd_path(fd).c_str(), times, 0) : -1;
}

int fop_fd_owner(int fd, uid_t uid, gid_t gid) {
  return fchownat(fd, "", uid, gid, AT_EMPTY_PATH);
}

std::vector<fop_identity> fop_ancestors_of(fop_fd dir) {
  std::vector<fop_identity> chain;
  struct stat status;
  while (dir && fstat(dir.get(), &status) == 0) {
    const fop_identity identity = fop_identity_of(status);
    if (!chain.empty() && chain.back() == identity) break;  // the root is its own parent
    chain.push_back(identity);
    dir = fop_fd(openat(dir.get(), "..", O_PATH | O_DIRECTORY | O_CLOEXEC));
  }
  return chain;
}

std::vector<fop_identity> fop_ancestors(std::string path) {
  for (;;) {
    fop_fd dir(openat(AT_FDCWD, path.empty() ? "." : path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (dir) return fop_ancestors_of(std::move(dir));
    if (path.empty() || path == "/") return {};
    while (path.size() > 1 && path.back() == '/') path.pop_back();
    const size_t slash = path.rfind('/');
    path = slash == std::string::npos ? "" : path.substr(0, std::max<size_t>(slash, 1));
  }
}
