#include "dirmodel/dir_read.h"

#include <algorithm>

#include "core/state.h"
#include "platform/terminal/terminal.h"
#include "tests/support/hostile_tree.h"
#include "tests/support/temp_dir.h"

using Names = std::vector<std::string>;

// A directory with a record of its own, and the settings that the tests rely on.
struct DirRead : testing::Test {
  TempDir dir;
  DirRecord record;
  DirRead() {
    terminal_start() = Terminal();
    gConfig->flags &= ~SET_HIDE_DOT;
    gConfig->cdirs = 0;
    record.path = dir.path();
  }
  ~DirRead() override { dir_free(&record); }
  int read() { return dir_read(&record, dir_cmp_name, 1); }
  Names names() const {
    Names all;
    for (int i = 0; i < record.count; ++i) all.push_back(record.entries[i]->name);
    return all;
  }
};

TEST_F(DirRead, ListsAHostileDirectoryWithoutLoss) {
  Names hostile = hostile_tree_make(dir.path());
  std::sort(hostile.begin(), hostile.end());
  const std::tuple<const char*, int, std::string, mode_t> rows[] = {
      {"dangling", ENTRY_INFO | ENTRY_UNREAD, "nowhere", S_IFLNK},
      {"loop-a", ENTRY_INFO | ENTRY_UNREAD, "loop-b", S_IFLNK},
      {"to-tree", ENTRY_INFO, "tree", S_IFDIR},
      {"long-link", ENTRY_INFO | ENTRY_UNREAD, std::string(1023, 'x'), S_IFLNK},
      {"fifo", 0, "", S_IFIFO},
      {"mode-000", 0, "", S_IFREG}};
  for (int times = 0; times < 2; ++times) {  // the second time with recycled records
    ASSERT_EQ(read(), 0);
    ASSERT_EQ(names(), hostile);
    for (const auto& [name, flags, info, type] : rows) {
      const DirEntry* entry =
          record.entries[std::find(hostile.begin(), hostile.end(), name) - hostile.begin()];
      EXPECT_EQ(entry->flags, flags) << name;
      EXPECT_EQ(entry->flags & ENTRY_INFO ? entry->info : "", info);
      EXPECT_EQ(entry->st.st_mode & S_IFMT, type) << name;
    }
    EXPECT_EQ(record.dir_count, 2);  // the link to a directory counts
    EXPECT_EQ(record.sel_count, 0);
    EXPECT_EQ(record.current, -1);
    record.entries[3]->flags = ENTRY_SELECTED | ENTRY_CURRENT;
    record.sel_count = 1, record.current = 3;
  }
}

TEST_F(DirRead, AppliesFilterAndDotRule) {
  dir.shell("touch a.c b.h .c.c x && mkdir sub .dot && ln -s sub to-sub && ln -s x to-x.c");
  const std::tuple<const char*, uint32_t, Names> rows[] = {
      {"*", 0, {".c.c", ".dot", "a.c", "b.h", "sub", "to-sub", "to-x.c", "x"}},
      {"*.c", SET_HIDE_DOT, {"a.c", "sub", "to-sub", "to-x.c"}},
      {"^*.C|X", 0, {".c.c", ".dot", "a.c", "sub", "to-sub", "to-x.c", "x"}}};
  for (const auto& [filter, hide, shown] : rows) {
    gConfig->flags = (gConfig->flags & ~SET_HIDE_DOT) | hide;
    record.filespec = filter;
    ASSERT_EQ(read(), 0);
    EXPECT_EQ(names(), shown) << filter;
  }
}

TEST_F(DirRead, RefusesWhatCannotBeRead) {
  dir.shell(
      "touch file && mkdir gone no-search no-read && touch no-search/f && chown -R 65534 . && "
      "chmod 755 . && chmod 444 no-search && chmod 111 no-read");
  for (const std::string& path :
       {std::string(), dir / "file", dir / "missing", std::string(5000, '/') + "x"}) {
    record.path = dir.path();
    ASSERT_EQ(read(), 0);
    record.path = path;
    EXPECT_EQ(read(), -1) << path.substr(0, 50);
    EXPECT_EQ(record.count, 0);
  }
  record.path = dir / "gone";  // removed while it is shown
  ASSERT_EQ(read(), 0);
  ASSERT_EQ(rmdir((dir / "gone").c_str()), 0);
  EXPECT_EQ(read(), -1);
  if (geteuid() != 0) return;
  ASSERT_EQ(seteuid(65534), 0);
  for (const char* name : {"no-search", "no-read"}) {
    record.path = dir / name;
    EXPECT_EQ(read(), -1) << name;
  }
  ASSERT_EQ(seteuid(0), 0);
}
