// A file system whose every answer is awaited in vain: nobody reads the kernel's requests.
#pragma once

#include <fcntl.h>
#include <sys/mount.h>
#include <unistd.h>

#include <string>

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
  void release() {
    if (fd_ >= 0) close(fd_);
    fd_ = -1;
  }

 private:
  std::string path_;
  int fd_;
  bool mounted_;
};
