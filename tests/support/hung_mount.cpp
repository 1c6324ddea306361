#include "tests/support/hung_mount.h"

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

// The kernel's requests go to a descriptor that nobody ever reads.
HungMount::HungMount(const std::string& path) : path_(path), fd_(open("/dev/fuse", O_RDWR | O_CLOEXEC)) {
  if (fd_ < 0) return;
  const std::string options = "fd=" + std::to_string(fd_) + ",rootmode=40000,user_id=0,group_id=0";
  mounted_ = mount("hung", path_.c_str(), "fuse", MS_NOSUID | MS_NODEV, options.c_str()) == 0;
}

HungMount::~HungMount() {
  release();
  if (mounted_) umount2(path_.c_str(), MNT_DETACH);
}

void HungMount::release() {
  if (fd_ >= 0) close(fd_);
  fd_ = -1;
}
