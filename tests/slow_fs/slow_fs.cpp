// A file system for tests whose calls hang: slow_fs MODE MILLISECONDS LOG MOUNTPOINT. Its one directory holds
// "entry00" to "entry19"; MODE tells what takes its time: the "status" of every entry (looking the name up
// does not), the "lookup" of any name (with the directory locked meanwhile), both until the caller is
// interrupted
// ("interruptible"), to "open" the directory or read its "names", the status of the directory itself
// ("root"), to open a file ("data"), to make a directory or rename ("change"); or nothing, with every name
// returned "twice". Each call that hangs adds one byte to LOG.
#define FUSE_USE_VERSION 312
#include <fcntl.h>
#include <fuse.h>
#include <unistd.h>

#include <atomic>
#include <csignal>
#include <cstring>
#include <string>

static std::string sMode;
static int sMilliseconds, sLog;
static std::atomic<int> sAsked[20];  // the first time a name is looked up, later its status is asked for

// Takes its time in the one mode, and has the result.
static int hang_in(const char* mode, int result) {
  if (sMode != mode) return result;
  (void)!write(sLog, "x", 1);
  for (int waited = 0; waited < sMilliseconds; waited += 5) {
    if (sMode == "interruptible" && fuse_interrupted()) return -EINTR;
    usleep(5000);
  }
  return sMode == "change" ? 0 : result;
}

static int slow_getattr(const char* path, struct stat* status, struct fuse_file_info*) {
  const int number = strncmp(path, "/entry", 6) == 0 ? atoi(path + 6) % 20 : -1;
  const bool root = path[1] == 0;
  *status = {};
  status->st_mode = root ? S_IFDIR | 0755 : S_IFREG | 0644;
  status->st_nlink = root ? 2 : 1;
  if (root) return hang_in("root", 0);
  if (number < 0) return -ENOENT;
  status->st_size = 5;
  const bool lookup = sAsked[number]++ == 0;
  return hang_in(sMode == "interruptible" ? "interruptible" : lookup ? "lookup" : "status", 0);
}

static int slow_readdir(const char*, void* buffer, fuse_fill_dir_t fill, off_t, struct fuse_file_info*,
                        enum fuse_readdir_flags) {
  for (int i = 0; i < 20; ++i)
    for (int times = sMode == "twice" ? 2 : 1; times > 0; --times)
      fill(buffer, ("entry" + std::to_string(100 + i).substr(1)).c_str(), nullptr, 0, {});
  return hang_in("names", 0);
}

static void* slow_init(struct fuse_conn_info* connection, struct fuse_config* config) {
  connection->want &= ~(FUSE_CAP_READDIRPLUS | FUSE_CAP_READDIRPLUS_AUTO);
  config->intr = sMode == "interruptible";
  signal(SIGUSR1, [](int) {});  // the library's signal to the thread whose caller was interrupted
  config->entry_timeout = 1000;
  config->attr_timeout = 0;
  return nullptr;
}

int main(int argc, char** argv) {
  if (argc != 5) return 2;
  sMode = argv[1];
  sMilliseconds = std::atoi(argv[2]);
  sLog = open(argv[3], O_CREAT | O_WRONLY | O_APPEND | O_CLOEXEC, 0644);
  fuse_operations operations = {};
  operations.init = slow_init;
  operations.getattr = slow_getattr;
  operations.readdir = slow_readdir;
  operations.opendir = [](auto...) { return hang_in("open", 0); };
  operations.mkdir = [](auto...) { return hang_in("change", -EROFS); };
  operations.rename = [](auto...) { return hang_in("change", -EROFS); };
  operations.open = [](auto...) { return hang_in("data", 0); };
  // The short way takes a thread count from nowhere in some versions of the library.
  fuse_args arguments = FUSE_ARGS_INIT(1, argv);
  struct fuse* fuse = fuse_new(&arguments, &operations, sizeof operations, nullptr);
  if (!fuse || fuse_mount(fuse, argv[4]) != 0) return 1;
  fuse_loop_config* config = fuse_loop_cfg_create();
  fuse_loop_cfg_set_max_threads(config, 16);
  return fuse_loop_mt(fuse, config);
}
