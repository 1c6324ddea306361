#include "tests/support/hostile_tree.h"

#include <fcntl.h>

#include <filesystem>

#include "tests/support/temp_dir.h"

std::vector<std::string> hostile_tree_make(const std::string& dir) {
  for (const std::string name :
       {"line\nbreak", "it's \"quoted\" `$HOME`", " blanks ", "-rf", "--", "caf\xe9", "\xff\xfe", "tab\there",
        "*", "a|b", "back\\slash", ".hidden", "...", "%s%n", "@"})
    write_file(dir + "/" + name, name);
  for (int byte = 1; byte < 256; ++byte)
    if (byte != '/') write_file(dir + "/byte" + static_cast<char>(byte) + "x", "");
  write_file(dir + "/" + std::string(255, 'n'), "");
  const std::string script =
      "ln -s nowhere dangling && ln -s loop-b loop-a && ln -s loop-a loop-b && ln -s tree to-tree && "
      "ln -s $(printf 'x%.0s' $(seq 4000)) long-link && mkfifo fifo && echo secret >mode-000 && "
      "chmod 0 mode-000 && touch set-ids && chmod 6755 set-ids && echo shared >hard-a && ln hard-a hard-b && "
      "truncate -s 64M holes && mkdir -p tree/sub read-only-dir closed-dir && echo leaf >tree/sub/leaf && "
      "ln -s ../.. tree/sub/up && echo inside >read-only-dir/inside && chmod 555 read-only-dir && "
      "chmod 0 closed-dir && python3 -c 'import socket; socket.socket(socket.AF_UNIX).bind(\"socket\")'";
  EXPECT_EQ(run_shell("cd '" + dir + "' && " + script), 0);
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(dir)) names.push_back(entry.path().filename());
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
