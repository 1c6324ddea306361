#include "views/hotlist.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "tests/support/temp_dir.h"

using Paths = std::vector<std::string>;

TEST(Hotlist, LoadTakesOverWhatIsAPathAndPassesOverTheRest) {
  const std::string longest = "/" + std::string(1022, 'x');
  const struct {
    const char* what;
    std::string text;
    Paths paths;
  } rows[] = {
      {"order kept, duplicates dropped", "/b\n/a\n/b\n", {"/b", "/a"}},
      {"no final line feed", "/a\n/b", {"/a", "/b"}},
      {"empty file", "", {}},
      {"blank and relative lines", "\n/a\nb\n\n../c\n", {"/a"}},
      {"1023 bytes are the most", longest + "\n" + longest + "y\n/z\n", {longest, "/z"}},
      {"NUL", std::string("/a\0b\n/c\n", 8), {"/c"}},
      {"any other bytes", "/\xff\xfe '\"\\\r\n/\t\n", {"/\xff\xfe '\"\\\r", "/\t"}},
      {"a huge line", "/" + std::string(3 << 20, 'y') + "\n/a\n", {"/a"}},
  };
  TempDir dir;
  for (const auto& row : rows) {
    write_file(dir / "hotlist.001", row.text);
    gTree.paths = {"/old"};
    tree_load(dir.path().c_str(), "hotlist.001");
    EXPECT_EQ(gTree.paths, row.paths) << row.what;
  }
}

TEST(Hotlist, WithoutAReadableFileItIsTheRootAlone) {
  TempDir dir;
  ASSERT_EQ(mkfifo((dir / "fifo").c_str(), 0600), 0);
  ASSERT_EQ(mkdir((dir / "directory").c_str(), 0700), 0);
  for (const char* name : {"none", "fifo", "directory"}) {
    gTree.paths = {"/a", "/b"};
    tree_load(dir.path().c_str(), name);
    EXPECT_EQ(gTree.paths, Paths{"/"}) << name;
  }
  tree_load(nullptr, "hotlist.001");
  EXPECT_EQ(gTree.paths, Paths{"/"});
}

TEST(Hotlist, SavesOnePathALineAndLeavesTheOldFileWhenItCannotWrite) {
  TempDir dir;
  gTree.paths = {"/usr", "/", "/a b/\xff"};
  ASSERT_EQ(tree_save(dir.path().c_str(), "hotlist.001"), 0);
  EXPECT_EQ(read_file(dir / "hotlist.001"), "/usr\n/\n/a b/\xff\n");
  const Paths before = gTree.paths;
  tree_load(dir.path().c_str(), "hotlist.001");
  EXPECT_EQ(gTree.paths, before);

  EXPECT_EQ(tree_save((dir / "missing").c_str(), "hotlist.001"), -1);
  EXPECT_EQ(tree_save(nullptr, "hotlist.001"), -1);
  // One that is kept elsewhere, behind a link, stays there.
  ASSERT_EQ(symlink("hotlist.001", (dir / "link").c_str()), 0);
  gTree.paths = {"/"};
  EXPECT_EQ(tree_save(dir.path().c_str(), "link"), 0);
  EXPECT_EQ(read_file(dir / "hotlist.001"), "/\n");
  ASSERT_EQ(unlink((dir / "link").c_str()), 0) << "still a link";
  EXPECT_TRUE(path_exists(dir / "hotlist.001"));
  // A directory in its place cannot be renamed over; nothing half-written stays.
  ASSERT_EQ(mkdir((dir / "taken").c_str(), 0700), 0);
  write_file(dir / "taken/x", "");
  EXPECT_EQ(tree_save(dir.path().c_str(), "taken"), -1);
  std::string names;
  run_shell("ls " + dir.path(), &names);
  EXPECT_EQ(names, "hotlist.001\ntaken\n");
}

TEST(Hotlist, AFullDiskLeavesTheOldFile) {
  TempDir dir;
  if (geteuid() != 0 || run_shell("mount -t tmpfs -o size=64k none " + dir.path() + " 2>/dev/null") != 0)
    GTEST_SKIP() << "needs to mount a small file system";
  write_file(dir / "hotlist.001", "/old\n");
  gTree.paths.assign(200, "/" + std::string(1000, 'x'));
  EXPECT_EQ(tree_save(dir.path().c_str(), "hotlist.001"), -1);
  EXPECT_EQ(read_file(dir / "hotlist.001"), "/old\n");
  std::string names;
  run_shell("ls " + dir.path(), &names);
  EXPECT_EQ(names, "hotlist.001\n");
  run_shell("umount " + dir.path());
}

TEST(Hotlist, AddRemoveAndLookUpTellTheWatcher) {
  std::string told;
  gTree.paths.clear();
  tree_watch({[&](size_t i) { told += "+" + std::to_string(i) + gTree.paths[i]; },
              [&](size_t i) { told += "-" + std::to_string(i); }, [&] { told += "*"; }});
  EXPECT_EQ(tree_add(&gTree, "/a"), 0);
  EXPECT_EQ(tree_add(&gTree, "/b"), 0);
  EXPECT_EQ(tree_add(&gTree, "/a"), -1);
  EXPECT_EQ(tree_lookup("/a"), 1);
  EXPECT_EQ(tree_lookup("/a/"), 0);
  tree_remove(&gTree, "/none");
  tree_remove(&gTree, "/a");
  EXPECT_EQ(gTree.paths, Paths{"/b"});
  tree_load(nullptr, "");
  EXPECT_EQ(told, "+0/a+1/b-0*");
  tree_watch({});
}
