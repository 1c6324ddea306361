#include "tests/support/slow_mount.h"

#include <signal.h>
#include <sys/mount.h>
#include <sys/prctl.h>
#include <sys/wait.h>

SlowMount::SlowMount(const std::string& mode, int hang) : path_(dir_ / "mount") {
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

SlowMount::~SlowMount() {
  (void)!chdir("/");
  if (!mounted_) return;
  kill(pid_, SIGKILL);  // sets free whatever still waits for an answer
  waitpid(pid_, nullptr, 0);
  if (umount2(path_.c_str(), MNT_DETACH) != 0) run_shell("fusermount3 -uz '" + path_ + "'");
}
