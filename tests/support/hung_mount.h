// A file system whose every answer is awaited in vain.
#pragma once

#include <string>

class HungMount {
 public:
  // Mounts one on the existing directory at path, where this process may.
  explicit HungMount(const std::string& path);
  ~HungMount();
  HungMount(const HungMount&) = delete;
  HungMount& operator=(const HungMount&) = delete;

  bool mounted() const { return mounted_; }
  // Lets every waiting call go, with an error.
  void release();

 private:
  std::string path_;
  int fd_ = -1;
  bool mounted_ = false;
};
