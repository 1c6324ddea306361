// File systems that do not answer, or not soon.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <utility>

#include "tests/support/temp_dir.h"

// One whose every answer is awaited in vain: nobody reads the kernel's requests.
class HungMount {
 public:
  // Mounts one on the existing directory at path, where this process may.
  explicit HungMount(const std::string& path) : path_(path), fd_(open("/dev/fuse", O_RDWR | O_CLOEXEC)) {
    const std::string options = "fd=" + std::to_string(fd_) + ",rootmode=40000,user_id=0,group_id=0";
    mounted_ = mount("hung", path_.c_str(), "fuse", MS_NOSUID | MS_NODEV, options.c_str()) == 0;
  }
  ~HungMount() {
    release();
    if (mounted_) umount2(path_.c_str(), MNT_DETACH);
  }
  HungMount(const HungMount&) = delete;

  bool mounted() const { return mounted_; }
  // Lets every waiting call go, with an error.
  void release() { close(std::exchange(fd_, -1)); }

 private:
  std::string path_;
  int fd_;
  bool mounted_;
};

// The file system of tests/slow_fs, mounted for one test.
class SlowMount {
 public:
  // mode and hang are those of slow_fs; hang in milliseconds.
  SlowMount(const std::string& mode, int hang) : path_(dir_ / "mount") {
    const std::string program = std::string(ZAN_BUILD_BIN) + "/zan_slow_fs";
    if (access(program.c_str(), X_OK) != 0 || access("/dev/fuse", R_OK | W_OK) != 0) return;
    mkdir(path_.c_str(), 0755);
    pid_ = fork();
    if (pid_ == 0) {
      prctl(PR_SET_PDEATHSIG, SIGKILL);  // it does not outlive a test that crashes
      execl(program.c_str(), program.c_str(), mode.c_str(), std::to_string(hang).c_str(),
            (dir_ / "log").c_str(), path_.c_str(), nullptr);
      _exit(127);
    }
    struct stat here, there;
    while (!mounted_ && waitpid(pid_, nullptr, WNOHANG) == 0) {
      usleep(2000);
      mounted_ = stat(dir_.path().c_str(), &here) == 0 && stat(path_.c_str(), &there) == 0 &&
                 here.st_dev != there.st_dev;
    }
  }
  ~SlowMount() {
    (void)!chdir("/");
    if (!mounted_) return;
    kill(pid_, SIGKILL);  // sets free whatever still waits for an answer
    waitpid(pid_, nullptr, 0);
    if (umount2(path_.c_str(), MNT_DETACH) != 0) run_shell("fusermount3 -uz '" + path_ + "'");
  }
  // False without libfuse or /dev/fuse: the test is to be skipped.
  bool mounted() const { return mounted_; }
  const std::string& path() const { return path_; }
  // Calls that have hung so far.
  int hung() const { return static_cast<int>(read_file(dir_ / "log").size()); }

 private:
  TempDir dir_;
  std::string path_;
  pid_t pid_ = -1;
  bool mounted_ = false;
};
