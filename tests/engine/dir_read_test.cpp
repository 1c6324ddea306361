#include "dirmodel/dir_read.h"

#include <algorithm>

#include "core/state.h"
#include "platform/desktop.h"
#include "platform/terminal/terminal.h"
#include "tests/support/hostile_tree.h"
#include "tests/support/temp_dir.h"

namespace {
using Names = std::vector<std::string>;

// A record of its own, with the settings that the tests rely on.
struct TestRecord : DirRecord {
  explicit TestRecord(const std::string& where) {
    terminal_start() = Terminal();
    gConfig->flags &= ~SET_HIDE_DOT;
    gConfig->cdirs = 0;
    path = where;
  }
  ~TestRecord() { dir_free(this); }
  int read() { return dir_read(this, dir_cmp_name, 1); }
  Names names() const {
    Names all;
    for (int i = 0; i < count; ++i) all.push_back(entries[i]->name);
    return all;
  }
};

}  // namespace

TEST(DirRead, ListsAHostileDirectoryWithoutLoss) {
  TempDir dir;
  Names names = hostile_tree_make(dir.path());
  std::sort(names.begin(), names.end());
  const std::string long_target(1023, 'x');
  const struct {
    const char* name;
    int flags;
    std::string info;
    mode_t type;
  } rows[] = {
      {"dangling", ENTRY_INFO | ENTRY_UNREAD, "nowhere", S_IFLNK},
      {"loop-a", ENTRY_INFO | ENTRY_UNREAD, "loop-b", S_IFLNK},
      {"to-tree", ENTRY_INFO, "tree", S_IFDIR},
      {"long-link", ENTRY_INFO | ENTRY_UNREAD, long_target, S_IFLNK},
      {"fifo", 0, "", S_IFIFO},
      {"mode-000", 0, "", S_IFREG},
  };
  TestRecord record(dir.path());
  for (int times = 0; times < 2; ++times) {  // the second time with recycled records
    ASSERT_EQ(record.read(), 0);
    ASSERT_EQ(record.names(), names);
    for (const auto& row : rows) {
      const auto at = std::find(names.begin(), names.end(), row.name) - names.begin();
      const DirEntry* entry = record.entries[at];
      EXPECT_EQ(entry->flags, row.flags) << row.name;
      EXPECT_EQ(entry->flags & ENTRY_INFO ? entry->info : "", row.info);
      EXPECT_EQ(entry->st.st_mode & S_IFMT, row.type) << row.name;
    }
    EXPECT_EQ(record.dir_count, 2);  // the link to a directory counts
    EXPECT_EQ(record.sel_count, 0);
    EXPECT_EQ(record.current, -1);
    record.entries[3]->flags = ENTRY_SELECTED | ENTRY_CURRENT;
    record.sel_count = 1, record.current = 3;
  }
}

TEST(DirRead, AppliesFilterAndDotRule) {
  TempDir dir;
  dir.shell("touch a.c b.h .c.c x && mkdir sub .dot && ln -s sub to-sub && ln -s x to-x.c");
  const struct {
    const char* filter;
    bool hide;
    Names names;
  } rows[] = {
      {"*", false, {".c.c", ".dot", "a.c", "b.h", "sub", "to-sub", "to-x.c", "x"}},
      {"*.c", true, {"a.c", "sub", "to-sub", "to-x.c"}},
      {"^*.C|X", false, {".c.c", ".dot", "a.c", "sub", "to-sub", "to-x.c", "x"}},
  };
  TestRecord record(dir.path());
  for (const auto& row : rows) {
    gConfig->flags = (gConfig->flags & ~SET_HIDE_DOT) | (row.hide ? SET_HIDE_DOT : 0u);
    record.filespec = row.filter;
    ASSERT_EQ(record.read(), 0);
    EXPECT_EQ(record.names(), row.names) << row.filter;
  }
  gConfig->flags &= ~SET_HIDE_DOT;
}

TEST(DirRead, RefusesWhatCannotBeRead) {
  TempDir dir;
  dir.shell(
      "touch file && mkdir gone no-search no-read && touch no-search/f && chown -R 65534 . && "
      "chmod 755 . && chmod 444 no-search && chmod 111 no-read");
  TestRecord record(dir.path());
  for (const std::string& path :
       {std::string(), dir / "file", dir / "missing", std::string(5000, '/') + "x"}) {
    record.path = dir.path();
    ASSERT_EQ(record.read(), 0);
    record.path = path;
    EXPECT_EQ(record.read(), -1) << path.substr(0, 50);
    EXPECT_EQ(record.count, 0);
  }
  record.path = dir / "gone";  // removed while it is shown
  ASSERT_EQ(record.read(), 0);
  ASSERT_EQ(rmdir((dir / "gone").c_str()), 0);
  EXPECT_EQ(record.read(), -1);
  if (geteuid() != 0) return;
  ASSERT_EQ(seteuid(65534), 0);
  for (const char* name : {"no-search", "no-read"}) {
    record.path = dir / name;
    EXPECT_EQ(record.read(), -1) << name;
  }
  ASSERT_EQ(seteuid(0), 0);
}
