// A file system for tests whose calls hang: slow_fs MODE MILLISECONDS LOG MOUNTPOINT. Its one directory holds
// "entry00" to "entry19"; MODE tells what takes its time:
//   status        the status of every entry, whatever happens
//   one           the status of "entry03" only
//   interruptible the status of every entry, until the caller is interrupted
//   open          opening the directory
//   names         reading its names
//   twice         nothing; every name is returned twice
// Each call that hangs adds one byte to LOG.
#define FUSE_USE_VERSION 31
#include <fcntl.h>
#include <fuse.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

namespace {
std::string sMode;
int sMilliseconds, sLog;

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
    return 0;
  }
  if (std::strncmp(path, "/entry", 6) != 0) return -ENOENT;
  status->st_mode = S_IFREG | 0644;
  status->st_nlink = 1;
  status->st_size = 5;
  if (sMode == "interruptible") return hang(true);
  if (sMode == "status" || (sMode == "one" && std::strcmp(path, "/entry03") == 0)) return hang(false);
  return 0;
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

void* slow_init(struct fuse_conn_info* connection, struct fuse_config* config) {
  connection->want &= ~(FUSE_CAP_READDIRPLUS | FUSE_CAP_READDIRPLUS_AUTO);
  config->intr = 1;
  config->entry_timeout = config->attr_timeout = 0;
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
  operations.init = slow_init;
  char foreground[] = "-f";
  char* fuse_argv[] = {argv[0], foreground, argv[4], nullptr};
  return fuse_main(3, fuse_argv, &operations, nullptr);
}
