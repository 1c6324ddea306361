#include "dirmodel/dir_read.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <map>
#include <set>

#include "core/state.h"
#include "platform/desktop.h"
#include "platform/terminal/terminal.h"
#include "tests/support/hostile_tree.h"
#include "tests/support/temp_dir.h"

namespace {
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
  std::vector<std::string> names() const {
    std::vector<std::string> all;
    for (int i = 0; i < count; ++i) all.push_back(entries[i]->name);
    return all;
  }
  const DirEntry* find(const std::string& name) const {
    for (int i = 0; i < count; ++i)
      if (entries[i]->name == name) return entries[i];
    return nullptr;
  }
};

std::vector<std::string> sorted(std::vector<std::string> names) {
  std::sort(names.begin(), names.end());
  return names;
}
}  // namespace

TEST(DirRead, ListsAHostileDirectoryWithoutLoss) {
  TempDir dir;
  const std::vector<std::string> names = hostile_tree_make(dir.path());
  TestRecord record(dir.path());
  for (int times = 0; times < 2; ++times) {  // the second time with recycled records
    ASSERT_EQ(record.read(), 0);
    EXPECT_EQ(record.names(), sorted(names));
    char cwd[4096];
    EXPECT_EQ(getcwd(cwd, sizeof cwd), dir.path());
    struct Row {
      const char* name;
      int flags;
      const char* info;
      mode_t type;
    };
    const std::string long_target(1023, 'x');
    const Row rows[] = {
        {"dangling", ENTRY_INFO | ENTRY_UNREAD, "nowhere", S_IFLNK},
        {"loop-a", ENTRY_INFO | ENTRY_UNREAD, "loop-b", S_IFLNK},
        {"to-tree", ENTRY_INFO, "tree", S_IFDIR},
        {"long-link", ENTRY_INFO | ENTRY_UNREAD, long_target.c_str(), S_IFLNK},
        {"fifo", 0, nullptr, S_IFIFO},
        {"socket", 0, nullptr, S_IFSOCK},
        {"closed-dir", 0, nullptr, S_IFDIR},
        {"mode-000", 0, nullptr, S_IFREG},
    };
    for (const Row& row : rows) {
      const DirEntry* entry = record.find(row.name);
      ASSERT_TRUE(entry) << row.name;
      EXPECT_EQ(entry->flags, row.flags) << row.name;
      if (row.info) {
        EXPECT_STREQ(entry->info, row.info);
      }
      EXPECT_EQ(entry->st.st_mode & S_IFMT, row.type) << row.name;
    }
    EXPECT_EQ(record.dir_count, 4);  // the link to a directory counts
    EXPECT_EQ(record.find("hard-a")->st.st_nlink, 2u);
    uint64_t total = 0;
    for (int i = 0; i < record.count; ++i) total += record.entries[i]->st.st_size;
    EXPECT_EQ(record.total_size, total);
  }
}

TEST(DirRead, KeepsEveryByteOfANameAndRefreshes) {
  TempDir dir;
  const std::vector<std::string> names = hostile_bytes_make(dir.path());
  TestRecord record(dir.path() + "/");
  ASSERT_EQ(record.read(), 0);
  EXPECT_EQ(record.names(), sorted(names));
  const int capacity = record.capacity;
  ASSERT_EQ(record.read(), 0);
  EXPECT_EQ(record.names(), sorted(names));
  EXPECT_EQ(record.capacity, capacity);
}

TEST(DirRead, AppliesFilterAndDotRule) {
  TempDir dir;
  run_shell("cd '" + dir.path() +
            "' && touch a.c b.h .c.c x && mkdir sub .dot && ln -s sub to-sub && ln -s x to-x.c");
  struct Row {
    const char* filter;
    bool hide;
    std::vector<std::string> names;
  };
  const Row rows[] = {
      {"*", false, {".c.c", ".dot", "a.c", "b.h", "sub", "to-sub", "to-x.c", "x"}},
      {"*", true, {"a.c", "b.h", "sub", "to-sub", "to-x.c", "x"}},
      {"*.c", true, {"a.c", "sub", "to-sub", "to-x.c"}},
      {"^*.C|X", false, {".c.c", ".dot", "a.c", "sub", "to-sub", "to-x.c", "x"}},
      {"[", true, {"sub", "to-sub"}},
  };
  TestRecord record(dir.path());
  for (const Row& row : rows) {
    gConfig->flags = (gConfig->flags & ~SET_HIDE_DOT) | (row.hide ? SET_HIDE_DOT : 0u);
    record.filespec = row.filter;
    ASSERT_EQ(record.read(), 0);
    EXPECT_EQ(record.names(), row.names) << row.filter;
  }
  gConfig->flags &= ~SET_HIDE_DOT;
}

TEST(DirRead, GrowsByAHundredAndTwentyEightAndRecyclesEntries) {
  TempDir dir;
  for (int i = 0; i < 129; ++i) write_file(dir / ("f" + std::to_string(1000 + i)), "");
  TestRecord record(dir.path());
  ASSERT_EQ(record.read(), 0);
  EXPECT_EQ(record.capacity, 256);
  EXPECT_EQ(record.spare, 0);
  const std::set<DirEntry*> before(record.entries, record.entries + record.count);
  run_shell("cd '" + dir.path() + "' && rm f10[0-4]*");
  ASSERT_EQ(record.read(), 0);
  EXPECT_EQ(record.count, 79);
  EXPECT_EQ(record.spare, 50);
  const std::set<DirEntry*> after(record.entries, record.entries + record.count + record.spare);
  EXPECT_EQ(after, before);
  record.entries[3]->flags = ENTRY_SELECTED | ENTRY_CURRENT;
  record.sel_count = 1, record.current = 3;
  ASSERT_EQ(record.read(), 0);
  EXPECT_EQ(record.current, -1);
  EXPECT_EQ(record.sel_count, 0);
  for (int i = 0; i < record.count; ++i) EXPECT_EQ(record.entries[i]->flags, 0);
}

TEST(DirRead, RefusesWhatCannotBeRead) {
  TempDir dir;
  write_file(dir / "file", "");
  mkdir((dir / "gone").c_str(), 0755);
  TestRecord record(dir.path());
  ASSERT_EQ(record.read(), 0);
  for (const std::string& path :
       {std::string(), dir / "file", dir / "missing", std::string(5000, '/') + "x"}) {
    record.path = path;
    EXPECT_EQ(record.read(), -1) << path.substr(0, 50);
    EXPECT_EQ(record.count, 0);
    EXPECT_EQ(record.spare, 2);
  }
  record.path = dir / "gone";  // removed while it is shown
  ASSERT_EQ(record.read(), 0);
  ASSERT_EQ(rmdir((dir / "gone").c_str()), 0);
  EXPECT_EQ(record.read(), -1);
  EXPECT_EQ(record.count, 0);
}

TEST(DirRead, AnOrdinaryUserIsRefusedAtClosedDirectories) {
  if (geteuid() != 0) GTEST_SKIP() << "changes to an ordinary user";
  TempDir dir;
  run_shell(
      "chmod 755 '" + dir.path() + "'; cd '" + dir.path() +
      "'; mkdir -m 0744 no-search; mkdir -m 0711 no-read; touch no-search/f no-read/f; chown -R 65534 .");
  run_shell("chmod 0444 '" + dir / "no-search" + "'; chmod 0111 '" + dir / "no-read" + "'");
  TestRecord record(dir.path());
  ASSERT_EQ(seteuid(65534), 0);
  for (const char* name : {"no-search", "no-read"}) {
    record.path = dir / name;
    EXPECT_EQ(record.read(), -1) << name;
  }
  ASSERT_EQ(seteuid(0), 0);
}

TEST(DirRead, ReadsAThousandLevelsDown) {
  TempDir dir;
  hostile_chain_make(dir.path(), 1000);
  std::string path = dir.path();
  for (int i = 0; i < 1000; ++i) path += "/d";
  TestRecord record(path);
  ASSERT_EQ(record.read(), 0);
  EXPECT_EQ(record.count, 0);
}

TEST(DirRead, ShowsItsProgress) {
  TempDir dir;
  TestRecord record(dir.path());
  std::vector<std::pair<int, std::string>> status;
  terminal_start().on_status = [&](int pane, const std::string& text) { status.emplace_back(pane, text); };
  ASSERT_EQ(record.read(), 0);
  EXPECT_EQ(record.total_size, 0u);
  const std::vector<std::pair<int, std::string>> expected = {{1, "Reading Directory"}, {2, "0 read"}};
  EXPECT_EQ(status, expected);
  terminal_start().on_status = nullptr;
}

TEST(DirRead, PermissionTexts) {
  const std::pair<mode_t, const char*> rows[] = {
      {0755, "rwxr-xr-x"},  {0, "---------"},     {07777, "rwsrwsrwt"}, {04644, "rwSr--r--"},
      {02655, "rw-r-sr-x"}, {02644, "rw-r-Sr--"}, {01754, "rwxr-xr-t"}};
  for (auto& [mode, text] : rows) {
    char out[10] = "";
    for (int part = 1; part <= 3; ++part) dir_get_permissions(mode, out + 3 * (part - 1), part);
    EXPECT_STREQ(out, text);
  }
  char one[2] = "?";
  dir_get_permissions(01000, one, 4);
  EXPECT_STREQ(one, "s");
  dir_get_permissions(0777, one, 4);
  EXPECT_STREQ(one, "-");
  dir_get_permissions(0777, one, 5);
  EXPECT_STREQ(one, "-");
}

TEST(IdNames, CachesInARing) {
  IdNameCache cache = x_new_cache(4);
  char name[16];
  EXPECT_EQ(x_get_record(1, name, cache), 0u);
  EXPECT_STREQ(x_add_record(1, "a-name-of-twenty-chars", &cache), "a-name-of-twent");
  for (uint32_t id = 2; id <= 5; ++id) x_add_record(id, std::to_string(id).c_str(), &cache);
  EXPECT_EQ(x_get_record(1, name, cache), 0u) << "the oldest one's place is taken";
  EXPECT_EQ(x_get_record(2, name, cache), 1u);
  EXPECT_STREQ(name, "2");
  EXPECT_EQ(cache.count, 4);
  dir_get_username(0, name);
  EXPECT_STREQ(name, "root");
  dir_get_username(4123456789u, name);
  EXPECT_STREQ(name, "4123456789");
  dir_get_groupname(4123456789u, name);
  EXPECT_STREQ(name, "4123456789");
}
