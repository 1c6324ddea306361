#include "tests/support/hostile_tree.h"

#include <fcntl.h>

#include <filesystem>

#include "tests/support/temp_dir.h"

std::vector<std::string> hostile_tree_make(const std::string& dir) {
  for (const std::string name : {"line\nbreak", "it's \"quoted\" `$HOME`", " blanks ", "-rf", "--", "caf\xe9",
                                 "\xff\xfe", "tab\there", "*", "a|b", ".hidden", "...", "%s%n"})
    write_file(dir + "/" + name, name);
  for (int byte = 1; byte < 256; ++byte)
    if (byte != '/') write_file(dir + "/byte" + static_cast<char>(byte) + "x", "");
  write_file(dir + "/" + std::string(255, 'n'), "");
  const std::string script =
      "ln -s nowhere dangling && ln -s loop-b loop-a && ln -s loop-a loop-b && ln -s tree to-tree && "
      "ln -s $(printf 'x%.0s' $(seq 4000)) long-link && mkfifo fifo && touch mode-000 && chmod 0 mode-000 && "
      "echo shared >hard-a && ln hard-a hard-b && mkdir tree";
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
