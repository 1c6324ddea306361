// A file system for tests whose files do not read as they should: faulty_fs MOUNTPOINT. Its files are all
// said to be 100,000 bytes long; byte i is i % 251. The name tells the fault:
//   whole  none
//   bits   a read gives at most 777 bytes
//   short  ends after 50,000 bytes
//   eio    cannot be read from byte 40,000 on
#define FUSE_USE_VERSION 312
#include <fuse.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <string>

namespace {
constexpr off_t kSize = 100000;
constexpr const char* kNames[] = {"whole", "bits", "short", "eio"};

int faulty_getattr(const char* path, struct stat* status, struct fuse_file_info*) {
  std::memset(status, 0, sizeof *status);
  status->st_mode = std::strcmp(path, "/") == 0 ? S_IFDIR | 0755 : S_IFREG | 0644;
  status->st_nlink = S_ISDIR(status->st_mode) ? 2 : 1;
  status->st_size = S_ISDIR(status->st_mode) ? 0 : kSize;
  status->st_blocks = status->st_size / 512 + 1;
  for (const char* name : kNames)
    if (std::string("/") + name == path) return 0;
  return S_ISDIR(status->st_mode) ? 0 : -ENOENT;
}

int faulty_readdir(const char*, void* buffer, fuse_fill_dir_t fill, off_t, struct fuse_file_info*,
                   enum fuse_readdir_flags) {
  for (const char* name : kNames) fill(buffer, name, nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
  return 0;
}

int faulty_open(const char*, struct fuse_file_info* file) {
  file->direct_io = 1;  // the reader gets what is given here, not pages of it
  return 0;
}

int faulty_read(const char* path, char* buffer, size_t size, off_t offset, struct fuse_file_info*) {
  const std::string name = path + 1;
  if (name == "eio" && offset >= 40000) return -EIO;
  off_t end = name == "short" ? 50000 : name == "eio" ? 40000 : kSize;
  if (name == "bits") end = std::min<off_t>(end, offset + 777);
  off_t count = std::min<off_t>(static_cast<off_t>(size), end - offset);
  for (off_t i = 0; i < count; ++i) buffer[i] = static_cast<char>((offset + i) % 251);
  return static_cast<int>(std::max<off_t>(count, 0));
}
}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) return 2;
  fuse_operations operations{};
  operations.getattr = faulty_getattr;
  operations.readdir = faulty_readdir;
  operations.open = faulty_open;
  operations.read = faulty_read;
  char program[] = "faulty_fs", foreground[] = "-f", single[] = "-s";
  char* arguments[] = {program, foreground, single, argv[1], nullptr};
  return fuse_main(4, arguments, &operations, nullptr);
}
