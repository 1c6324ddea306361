// Paths of an operation, and directories opened so that a path swapped under them leads nowhere else.
#pragma once

#include <string>

#include "fileops/fop.h"

struct stat;

// The longest joined path that a copy or move takes.
constexpr size_t FOP_PATH_MAX = 1279;

// Closes its descriptor at the end.
class fop_fd {
 public:
  fop_fd() = default;
  explicit fop_fd(int fd) : fd_(fd) {}
  fop_fd(fop_fd&& other) noexcept : fd_(other.release()) {}
  fop_fd& operator=(fop_fd&& other) noexcept {
    if (this != &other) reset(other.release());
    return *this;
  }
  ~fop_fd() { reset(); }
  int get() const { return fd_; }
  explicit operator bool() const { return fd_ >= 0; }
  int release() {
    const int fd = fd_;
    fd_ = -1;
    return fd;
  }
  void reset(int fd = -1);  // keeps errno

 private:
  int fd_ = -1;
};

// Joins with exactly one '/' between; "/" and a name give "/name"; an empty name gives the directory itself
// without a trailing '/'.
std::string _build_path(const std::string& dir, const std::string& name);

// The destination path of a source path.
std::string fop_dest_path(const fop_request& request, const std::string& source);

fop_identity fop_identity_of(const struct stat& status);
fop_mark fop_mark_of(const struct stat& status);

// Notes what the operation put in place: its status, its directory, opened, and its full path.
void fop_note_made(fop_request* request, const struct stat& status, int dir, const std::string& path);
// Whether the operation itself put in place what has this status and is found by this path.
bool fop_made(const fop_request& request, const struct stat& status, const std::string& path);

// The group of the directory that is name index of a group, or -1. Called for rising (group, index): *next
// (from 1) keeps the place.
int32_t fop_child_group(const fop_request& request, int32_t group, int32_t index, int32_t* next);

// Opens a directory relative to at for reading, or merely for paths through it where it may not be read.
// extra_flags: O_NOFOLLOW or 0. Invalid, with errno, when that fails.
fop_fd fop_open_dir(int at, const char* name, int extra_flags);
// Opens a path of any length.
fop_fd fop_open_long_path(const std::string& path);
// The path that the kernel knows an open file by; empty when that cannot be told.
std::string fop_kernel_path(int fd);
// Whether the file system of fd gives a file another number once it was out of memory for a while: there
// a number tells nothing about what was seen earlier.
bool fop_numbers_change(int fd);
// Opens a group's source directory and makes sure that it is the one that was scanned; ESTALE when not.
fop_fd fop_open_source(const fop_request& request, int32_t group);

// Mode, times and owner of an open directory or file, also of one opened merely for paths.
int fop_fd_mode(int fd, mode_t mode);
int fop_fd_times(int fd, const struct stat& source);
int fop_fd_owner(int fd, uid_t uid, gid_t gid);

// The directory that path is or would be made in, and every directory above it.
std::vector<fop_identity> fop_ancestors(std::string path);
// The same from an open directory upwards.
std::vector<fop_identity> fop_ancestors_of(fop_fd dir);
