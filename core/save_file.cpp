#include "core/save_file.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "dirmodel/text.h"

namespace {
// Where a save has to put its file: behind a symbolic link, the file that the link leads to.
std::string real_place(const std::string& path) {
  struct stat status;
  if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
  char* real = realpath(path.c_str(), nullptr);
  if (!real) return path;  // a link that leads nowhere is replaced
  std::string place = real;
  free(real);
  return place;
}

// A file that the user made read-only stays as it is, and so does what is no file at all: a history linked to
// /dev/null must not put a file in the device's place.
bool may_replace(const std::string& place) {
  struct stat status;
  if (stat(place.c_str(), &status) != 0) return true;
  return S_ISREG(status.st_mode) && faccessat(AT_FDCWD, place.c_str(), W_OK, AT_EACCESS) == 0;
}

bool write_whole(int fd, std::string_view text) {
  while (!text.empty()) {
    const ssize_t done = write(fd, text.data(), text.size());
    if (done < 0 && errno == EINTR) continue;
    if (done <= 0) return false;
    text.remove_prefix(static_cast<size_t>(done));
  }
  return fsync(fd) == 0;
}
}  // namespace

bool load_file(const char* dir, const char* name, size_t max, std::string* text) {
  text->clear();
  if (!dir) return false;
  const int fd = open(es_construct_fullpath(dir, name).c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return false;
  struct stat status;
  bool good = fstat(fd, &status) == 0 && S_ISREG(status.st_mode);
  char block[8192];
  while (good && text->size() < max) {
    const ssize_t got = read(fd, block, std::min(sizeof block, max - text->size()));
    if (got < 0 && errno == EINTR) continue;
    if (got == 0) break;
    good = got > 0;
    if (good) text->append(block, static_cast<size_t>(got));
  }
  close(fd);
  if (!good) text->clear();
  return good;
}

int save_file(const char* dir, const char* name, std::string_view text) {
  if (!dir) return -1;
  const std::string place = real_place(es_construct_fullpath(dir, name));
  if (!may_replace(place)) return -1;
  std::string temporary = place + ".XXXXXX";
  const int fd = mkostemp(temporary.data(), O_CLOEXEC);
  if (fd < 0) return -1;
  struct stat old;
  bool good = stat(place.c_str(), &old) != 0 || fchmod(fd, old.st_mode & 07777) == 0;
  good = good && write_whole(fd, text);
  good = close(fd) == 0 && good;
  good = good && rename(temporary.c_str(), place.c_str()) == 0;
  if (!good) unlink(temporary.c_str());
  return good ? 0 : -1;
}
