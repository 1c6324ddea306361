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
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <csignal>
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

static int number_of(const std::string& path) {
  return path.starts_with("/entry") ? std::stoi("0" + path.substr(6)) % 20 : -1;
}

static int slow_getattr(const char* path, struct stat* status, struct fuse_file_info*) {
  const int number = number_of(path);
  const bool root = path[1] == 0;
  *status = {};
  status->st_mode = root ? S_IFDIR | 0755 : S_IFREG | 0644;
  status->st_nlink = root ? 2 : 1;
  if (root) return hang_in("root", 0);
  if (number < 0) return -ENOENT;
  status->st_size = sMode == "faulty" ? 100000 : 5;
  status->st_blocks = status->st_size / 512 + 1;
  const bool lookup = sAsked[number]++ == 0;
  return hang_in(sMode == "interruptible" ? "interruptible" : lookup ? "lookup" : "status", 0);
}

static int faulty_read(const char* path, char* buffer, size_t size, off_t offset, struct fuse_file_info*) {
  const int number = number_of(path);
  const off_t ends[] = {100000, std::min<off_t>(offset + 777, 100000), 50000, 40000};
  if (number > 3 || (number == 3 && offset >= ends[3])) return -EIO;
  const off_t count = std::clamp<off_t>(ends[number] - offset, 0, static_cast<off_t>(size));
  for (off_t i = 0; i < count; ++i) buffer[i] = static_cast<char>((offset + i) % 251);
  return static_cast<int>(count);
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
  operations.read = faulty_read;
  operations.opendir = [](auto...) { return hang_in("open", 0); };
  operations.mkdir = [](auto...) { return hang_in("change", -EROFS); };
  operations.rename = [](auto...) { return hang_in("change", -EROFS); };
  operations.open = [](const char*, struct fuse_file_info* file) {
    file->direct_io = 1;  // the reader gets what is given here, not pages of it
    return hang_in("data", 0);
  };
  // The short way takes a thread count from nowhere in some versions of the library.
  fuse_args arguments = FUSE_ARGS_INIT(1, argv);
  struct fuse* fuse = fuse_new(&arguments, &operations, sizeof operations, nullptr);
  if (!fuse || fuse_mount(fuse, argv[4]) != 0) return 1;
  fuse_loop_config* config = fuse_loop_cfg_create();
  fuse_loop_cfg_set_max_threads(config, 16);
  return fuse_loop_mt(fuse, config);
}
