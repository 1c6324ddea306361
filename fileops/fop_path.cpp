#include "fileops/fop_path.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstring>
#include <cwchar>
#include <cwctype>

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

// The way to a file that is open merely for paths, where the plain call refuses the descriptor.
static std::string fd_path(int fd) {
  return "/proc/self/fd/" + std::to_string(fd);
}

std::string fop_kernel_path(int fd) {
  std::string path(PATH_MAX, '\0');
  const ssize_t length = readlink(fd_path(fd).c_str(), path.data(), path.size());
  path.resize(length > 0 && length < PATH_MAX ? length : 0);
  return path;
}

bool fop_numbers_change(int fd) {
  struct statfs system;
  if (fstatfs(fd, &system) != 0) return false;
  const auto type = static_cast<uint32_t>(system.f_type);
  constexpr uint32_t kFat = 0x4d44, kExfat = 0x2011bab0, kFuse = 0x65735546, kCifs = 0xff534d42,
                     kSmb2 = 0xfe534d42;
  return type == kFat || type == kExfat || type == kFuse || type == kCifs || type == kSmb2;
}

static std::string lower_case(const std::string& path) {
  std::string lower;
  mbstate_t in{}, out{};
  for (size_t at = 0; at < path.size();) {
    wchar_t c;
    char bytes[MB_LEN_MAX];
    size_t length = mbrtowc(&c, path.data() + at, path.size() - at, &in);
    if (length == 0 || length > path.size() - at) length = 1, c = 0, in = {};
    const size_t made = c ? wcrtomb(bytes, towlower(c), &out) : SIZE_MAX;
    made > sizeof bytes ? lower.append(path, at, length) : lower.append(bytes, made);
    at += length;
  }
  return lower;
}

void fop_note_made(fop_request* request, const struct stat& status, int dir, const std::string& path) {
  request->made.insert(fop_identity_of(status));
  if (request->made_device != status.st_dev) {
    request->made_device = status.st_dev;
    request->made_numbers_change = fop_numbers_change(dir);
  }
  if (request->made_numbers_change) request->made_paths.insert(lower_case(path));
}

bool fop_made(const fop_request& request, const struct stat& status, const std::string& path) {
  return request.made.contains(fop_identity_of(status)) ||
         (!request.made_paths.empty() && request.made_paths.contains(lower_case(path)));
}

// Whether an open directory is where the selection's own directory and the names below it lead, without a
// link on the way.
static bool leads_straight(const fop_request& request, const fop_group& g, int dir) {
  const fop_group& selection = *request.groups[0];
  const fop_fd top = fop_open_long_path(selection.dir);
  const std::string below = std::string(g.dir).substr(std::strlen(selection.dir));
  return top && fop_kernel_path(dir) == _build_path(fop_kernel_path(top.get()), below);
}

fop_fd fop_open_source(const fop_request& request, int32_t group) {
  const fop_group& g = *request.groups[group];
  fop_fd dir = fop_open_long_path(g.dir);
  if (!dir || group == 0) return dir;
  struct stat status;
  if (fstat(dir.get(), &status) != 0) return fop_fd();
  if (fop_identity_of(status) == g.source) return dir;
  if (status.st_dev == g.source.dev && fop_numbers_change(dir.get()) &&
      (g.through_link || leads_straight(request, g, dir.get())))
    return dir;
  return errno = ESTALE, fop_fd();
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
