// A file system for tests whose calls hang or fail: slow_fs MODE MILLISECONDS LOG MOUNTPOINT. Its one
// directory holds "entry00" to "entry19"; MODE tells what takes its time:
//   status        the status of every entry, whatever happens; looking the name up does not
//   lookup        looking up any name, with the directory locked meanwhile
//   interruptible the same until the caller is interrupted
//   open          opening the directory
//   names         reading its names
//   root          the status of the directory itself
//   data          opening a file
//   change        making a directory, renaming
//   twice         nothing; every name is returned twice
//   faulty        nothing; but its files do not read as they should. All are said to be 100,000 bytes long;
//                 byte i is i % 251. "entry00" has no fault, a read of "entry01" gives at most 777 bytes,
//                 "entry02" ends after 50,000 bytes, "entry03" cannot be read from byte 40,000 on.
// Each call that hangs adds one byte to LOG.
#define FUSE_USE_VERSION 312
#include <fcntl.h>
#include <fuse.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {
std::string sMode;
int sMilliseconds, sLog;
std::atomic<int> sAsked[20];  // the first time a name is looked up, later its status is asked for

int hang(bool interruptible) {
  (void)!write(sLog, "x", 1);
  for (int waited = 0; waited < sMilliseconds; waited += 5) {
    if (interruptible && fuse_interrupted()) return -EINTR;
    usleep(5000);
  }
  return 0;
}

int slow_getattr(const char* path, struct stat* status, struct fuse_file_info*) {
  std::memset(status, 0, sizeof *status);
  if (std::strcmp(path, "/") == 0) {
    status->st_mode = S_IFDIR | 0755;
    status->st_nlink = 2;
    return sMode == "root" ? hang(false) : 0;
  }
  if (std::strncmp(path, "/entry", 6) != 0) return -ENOENT;
  status->st_mode = S_IFREG | 0644;
  status->st_nlink = 1;
  status->st_size = sMode == "faulty" ? 100000 : 5;
  status->st_blocks = status->st_size / 512 + 1;
  const int number = std::atoi(path + 6) % 20;
  const bool lookup = sAsked[number]++ == 0;
  if (sMode == "interruptible") return hang(true);
  return sMode == (lookup ? "lookup" : "status") ? hang(false) : 0;
}

int slow_open(const char*, struct fuse_file_info* file) {
  file->direct_io = 1;  // the reader gets what is given here, not pages of it
  return sMode == "data" ? hang(false) : 0;
}

int faulty_read(const char* path, char* buffer, size_t size, off_t offset, struct fuse_file_info*) {
  const int number = std::atoi(path + 6);
  const off_t ends[] = {100000, std::min<off_t>(offset + 777, 100000), 50000, 40000};
  if (number > 3 || (number == 3 && offset >= ends[3])) return -EIO;
  const off_t count = std::clamp<off_t>(ends[number] - offset, 0, static_cast<off_t>(size));
  for (off_t i = 0; i < count; ++i) buffer[i] = static_cast<char>((offset + i) % 251);
  return static_cast<int>(count);
}

int slow_opendir(const char*, struct fuse_file_info*) {
  return sMode == "open" ? hang(false) : 0;
}

int slow_readdir(const char*, void* buffer, fuse_fill_dir_t fill, off_t, struct fuse_file_info*,
                 enum fuse_readdir_flags) {
  if (sMode == "names") hang(false);
  for (int i = 0; i < 20; ++i) {
    char name[16];
    std::snprintf(name, sizeof name, "entry%02d", i);
    for (int times = sMode == "twice" ? 2 : 1; times > 0; --times)
      fill(buffer, name, nullptr, 0, static_cast<fuse_fill_dir_flags>(0));
  }
  return 0;
}

int slow_mkdir(const char*, mode_t) {
  return sMode == "change" ? hang(false) : -EROFS;
}

int slow_rename(const char*, const char*, unsigned) {
  return sMode == "change" ? hang(false) : -EROFS;
}

void* slow_init(struct fuse_conn_info* connection, struct fuse_config* config) {
  connection->want &= ~(FUSE_CAP_READDIRPLUS | FUSE_CAP_READDIRPLUS_AUTO);
  config->intr = sMode == "interruptible";
  signal(SIGUSR1, [](int) {});  // the library's signal to the thread whose caller was interrupted
  config->entry_timeout = 1000;
  config->attr_timeout = 0;
  return nullptr;
}
}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  sMode = argv[1];
  sMilliseconds = std::atoi(argv[2]);
  sLog = open(argv[3], O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0644);
  fuse_operations operations = {};
  operations.getattr = slow_getattr;
  operations.opendir = slow_opendir;
  operations.readdir = slow_readdir;
  operations.open = slow_open;
  operations.read = faulty_read;
  operations.mkdir = slow_mkdir;
  operations.rename = slow_rename;
  operations.init = slow_init;
  // The short way takes a thread count from nowhere in some versions of the library.
  fuse_args arguments = FUSE_ARGS_INIT(1, argv);
  struct fuse* fuse = fuse_new(&arguments, &operations, sizeof operations, nullptr);
  if (!fuse || fuse_mount(fuse, argv[4]) != 0) return 1;
  fuse_loop_config* config = fuse_loop_cfg_create();
  fuse_loop_cfg_set_max_threads(config, 16);
  return fuse_loop_mt(fuse, config);
}
