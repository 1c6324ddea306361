// A directory of everything that trips up a careless program.
#pragma once

#include <filesystem>

#include "tests/support/temp_dir.h"

// Fills the existing directory dir and returns the names made in it: FIFO, dangling, looping and long links,
// hard links, mode 000, 255 bytes, newline, quotes, blanks, a leading dash, no UTF-8, and each byte.
inline std::vector<std::string> hostile_tree_make(const std::string& dir) {
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

// Makes a chain of `levels` directories "d/d/d..." below dir, which may lead to a path longer than PATH_MAX,
// and leaves the process in its last.
inline void hostile_chain_make(const std::string& dir, int levels) {
  ASSERT_EQ(chdir(dir.c_str()), 0);
  for (int i = 0; i < levels; ++i) ASSERT_TRUE(mkdir("d", 0755) == 0 && chdir("d") == 0);
}
