#include "tests/support/hostile_tree.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cstring>

#include "tests/support/temp_dir.h"

namespace {
void make_socket(const std::string& dir, const std::string& name) {
  const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  const std::string path = dir + "/" + name;
  ASSERT_LT(path.size(), sizeof address.sun_path);
  std::strcpy(address.sun_path, path.c_str());
  EXPECT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0) << path;
  close(fd);
}

void make_file_with_holes(const std::string& path) {
  const int fd = open(path.c_str(), O_CREAT | O_WRONLY | O_CLOEXEC, 0644);
  EXPECT_EQ(pwrite(fd, "begin", 5, 0), 5);
  EXPECT_EQ(pwrite(fd, "end", 3, 64 << 20), 3);
  close(fd);
}
}  // namespace

std::vector<std::string> hostile_tree_make(const std::string& dir) {
  std::vector<std::string> names;
  const auto named = [&](const std::string& name) {
    names.push_back(name);
    return dir + "/" + name;
  };
  for (const std::string& name :
       {std::string(255, 'n'), std::string("line\nbreak"), std::string("it's \"quoted\" `$HOME`"),
        std::string(" blanks "), std::string("-rf"), std::string("--"), std::string("caf\xe9"),
        std::string("\xff\xfe"), std::string("tab\there"), std::string("*"), std::string("a|b"),
        std::string("back\\slash"), std::string(".hidden"), std::string("..."), std::string("%s%n"),
        std::string("@")})
    write_file(named(name), name);
  mkfifo(named("fifo").c_str(), 0644);
  make_socket(dir, "socket");
  names.push_back("socket");
  EXPECT_EQ(symlink("nowhere", named("dangling").c_str()), 0);
  EXPECT_EQ(symlink("loop-b", named("loop-a").c_str()), 0);
  EXPECT_EQ(symlink("loop-a", named("loop-b").c_str()), 0);
  EXPECT_EQ(symlink("tree", named("to-tree").c_str()), 0);
  EXPECT_EQ(symlink(std::string(4000, 'x').c_str(), named("long-link").c_str()), 0);
  write_file(named("mode-000"), "secret", 0);
  write_file(named("set-ids"), "", 06755);
  write_file(named("hard-a"), "shared");
  EXPECT_EQ(link((dir + "/hard-a").c_str(), named("hard-b").c_str()), 0);
  make_file_with_holes(named("holes"));
  mkdir(named("tree").c_str(), 0755);
  mkdir((dir + "/tree/sub").c_str(), 0755);
  write_file(dir + "/tree/sub/leaf", "leaf");
  EXPECT_EQ(symlink("../..", (dir + "/tree/sub/up").c_str()), 0);
  mkdir(named("read-only-dir").c_str(), 0755);
  write_file(dir + "/read-only-dir/inside", "inside");
  chmod((dir + "/read-only-dir").c_str(), 0555);
  mkdir(named("closed-dir").c_str(), 0000);
  return names;
}

std::vector<std::string> hostile_bytes_make(const std::string& dir) {
  std::vector<std::string> names;
  for (int byte = 1; byte < 256; ++byte) {
    if (byte == '/') continue;
    names.push_back(std::string("byte") + static_cast<char>(byte) + "x");
    write_file(dir + "/" + names.back(), "");
  }
  return names;
}

void hostile_chain_make(const std::string& dir, int levels) {
  int at = open(dir.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  for (int i = 0; i < levels && at >= 0; ++i) {
    mkdirat(at, "d", 0755);
    const int below = openat(at, "d", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    close(at);
    at = below;
  }
  EXPECT_GE(at, 0);
  close(at);
}
