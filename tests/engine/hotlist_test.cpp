#include "views/hotlist.h"

#include "tests/support/temp_dir.h"

using Paths = std::vector<std::string>;

TEST(Hotlist, LoadTakesOverWhatIsAPathAndPassesOverTheRest) {
  const std::string longest = "/" + std::string(1022, 'x');
  const std::pair<std::string, Paths> rows[] = {{"/b\n/a\n/b\n", {"/b", "/a"}},
                                                {"\n/a\nb\n\n../c\n", {"/a"}},
                                                {longest + "\n" + longest + "y\n/z\n", {longest, "/z"}},
                                                {std::string("/a\0b\n/c\n", 8), {"/c"}},
                                                {"/\xff\xfe '\"\\\r\n/\t\n", {"/\xff\xfe '\"\\\r", "/\t"}},
                                                {"/" + std::string(3 << 20, 'y') + "\n/a\n", {"/a"}}};
  TempDir dir;
  for (const auto& [text, paths] : rows) {
    write_file(dir / "hotlist.001", text);
    gTree.paths = {"/old"};
    tree_load(dir.path().c_str(), "hotlist.001");
    EXPECT_EQ(gTree.paths, paths) << text.substr(0, 20);
  }
  dir.shell("mkfifo fifo && mkdir directory");
  for (const char* name : {"none", "fifo", "directory"}) {
    gTree.paths = {"/a", "/b"};
    tree_load(dir.path().c_str(), name);
    EXPECT_EQ(gTree.paths, Paths{"/"}) << name;
  }
}

TEST(Hotlist, SavesOnePathALine) {
  const TempDir dir;
  gTree.paths = {"/usr", "/", "/a b/\xff"};
  EXPECT_TRUE(tree_save(dir.path().c_str(), "hotlist.001") == 0 && tree_save(nullptr, "hotlist.001") == -1);
  EXPECT_EQ(read_file(dir / "hotlist.001"), "/usr\n/\n/a b/\xff\n");
}

TEST(Hotlist, WhatAnotherWindowHasChangedIsKept) {
  const std::tuple<Paths, Paths, Paths, Paths> rows[] = {
      {{"/", "/a"}, {"/", "/a"}, {"/b", "/"}, {"/b", "/"}},
      {{"/", "/a"}, {"/a", "/", "/c"}, {"/", "/b"}, {"/", "/c", "/b"}}};
  TempDir dir;
  const auto save = [&](const Paths& paths) {
    gTree.paths = paths;
    tree_save(dir.path().c_str(), "hotlist.001");
  };
  for (const auto& [loaded, mine, theirs, kept] : rows) {
    save(loaded);
    tree_load(dir.path().c_str(), "hotlist.001");
    save(theirs);
    gTree.paths = mine;
    tree_take_over(dir.path().c_str(), "hotlist.001");
    EXPECT_EQ(gTree.paths, kept);
  }
}
