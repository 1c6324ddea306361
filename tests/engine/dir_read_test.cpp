// Reading directories, also of a file system that hangs.
#include "dirmodel/dir_read.h"

#include <algorithm>

#include "core/state.h"
#include "platform/desktop.h"
#include "platform/terminal/terminal.h"
#include "tests/support/hostile_tree.h"
#include "tests/support/hung_mount.h"

using Names = std::vector<std::string>;
constexpr int kForever = 20000;  // ms that a call hangs; nothing here waits for it

// A directory and a record, with the settings that the tests rely on.
struct DirRead : testing::Test {
  TempDir dir;
  DirRecord record;
  std::unique_ptr<SlowMount> mount;
  DirRead() {
    terminal_start() = Terminal();
    gConfig->flags &= ~SET_HIDE_DOT;
    gConfig->cdirs = 0;
  }
  ~DirRead() override {
    dir_read_set_timeout_ms(10000);
    dir_free(&record);
  }
  int read(const std::string& path) {
    record.path = path;
    return dir_read(&record, dir_cmp_name, 1);
  }
  Names names() const {
    Names all;
    for (int i = 0; i < record.count; ++i) all.push_back(record.entries[i]->name);
    return all;
  }
};
using SlowRead = DirRead;

static int threads_now() {
  return static_cast<int>(std::distance(std::filesystem::directory_iterator("/proc/self/task"), {}));
}

// A busy machine, too, answers within the timeout.
#define MOUNT_OR_SKIP(mode, hang)                  \
  dir_read_set_timeout_ms(250);                    \
  mount.reset();                                   \
  mount = std::make_unique<SlowMount>(mode, hang); \
  if (!mount->mounted()) GTEST_SKIP() << "no FUSE file system can be mounted here"

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
    ASSERT_EQ(read(dir.path()), 0);
    ASSERT_EQ(names(), hostile);
    for (const auto& [name, flags, info, type] : rows) {
      const DirEntry* entry =
          record.entries[std::find(hostile.begin(), hostile.end(), name) - hostile.begin()];
      EXPECT_EQ(entry->flags, flags) << name;
      EXPECT_EQ(entry->flags & ENTRY_INFO ? entry->info : "", info);
      EXPECT_EQ(entry->st.st_mode & S_IFMT, type) << name;
    }
    EXPECT_EQ(record.dir_count, 2);  // the link to a directory counts
    EXPECT_TRUE(record.sel_count == 0 && record.current == -1);
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
    ASSERT_EQ(read(dir.path()), 0);
    EXPECT_EQ(names(), shown) << filter;
  }
}

TEST_F(DirRead, RefusesWhatCannotBeRead) {
  dir.shell("touch file && mkdir gone no-search no-read && touch no-search/f && chown -R 65534 .");
  dir.shell("chmod 755 . && chmod 444 no-search && chmod 111 no-read");
  for (const std::string& path :
       {std::string(), dir / "file", dir / "missing", std::string(5000, '/') + "x"}) {
    ASSERT_EQ(read(dir.path()), 0);
    EXPECT_TRUE(read(path) == -1 && record.count == 0) << path.substr(0, 50);
  }
  ASSERT_EQ(read(dir / "gone"), 0);  // removed while it is shown
  ASSERT_EQ(rmdir((dir / "gone").c_str()), 0);
  EXPECT_EQ(read(dir / "gone"), -1);
  if (geteuid() != 0) return;
  ASSERT_EQ(seteuid(65534), 0);
  for (const char* name : {"no-search", "no-read"}) EXPECT_EQ(read(dir / name), -1) << name;
  ASSERT_EQ(seteuid(0), 0);
}

TEST_F(SlowRead, EntriesThatHangAreShownAsTimedOut) {
  for (const std::string mode : {"status", "interruptible", "lookup"}) {
    MOUNT_OR_SKIP(mode, kForever);
    const int threads = threads_now();
    int ticks = 0;
    const int timer = desk_timer_start(10, [&] { ++ticks; });
    const int result = read(mount->path());
    desk_timer_stop(timer);
    EXPECT_GT(ticks, 0) << "events run while a call hangs";
    ASSERT_EQ(record.count, 20);
    for (int i = 0; i < record.count; ++i) {
      const DirEntry& entry = *record.entries[i];
      EXPECT_EQ(entry.flags, ENTRY_INFO | ENTRY_UNREAD) << entry.name;
      EXPECT_STREQ(entry.info, "(unable to read - timeout)") << entry.name;
      EXPECT_TRUE(entry.st.st_uid == static_cast<uid_t>(-1) && entry.st.st_mode == 0) << entry.name;
    }
    if (mode == "lookup") continue;  // whether its end can be read depends on the kernel
    EXPECT_TRUE(result == 0 && mount->hung() == 2) << mode;
    EXPECT_TRUE(mode == "status" || terminal_run_until([&] { return threads_now() == threads; }))
        << "a thread was left behind";
  }
}

TEST_F(SlowRead, TargetsOnASlowFileSystemAreGivenUpAndTheRestIsRead) {
  MOUNT_OR_SKIP("status", kForever);
  dir.shell("for i in 0 1 2; do ln -s '" + mount->path() + "/entry0'$i l$i; printf text >f$i; done");
  EXPECT_EQ(read(dir.path()), 0);
  ASSERT_EQ(record.count, 6);
  for (int i = 0; i < 3; ++i) {
    const DirEntry& link = *record.entries[i + 3];
    EXPECT_EQ(record.entries[i]->st.st_size, 4);
    EXPECT_EQ(link.info, mount->path() + "/entry0" + std::to_string(i));
    EXPECT_TRUE(S_ISLNK(link.st.st_mode));
  }
  EXPECT_EQ(mount->hung(), 2);
}

TEST_F(SlowRead, ADirectoryThatDoesNotOpenOrReadIsRefused) {
  for (const char* mode : {"open", "names"}) {
    MOUNT_OR_SKIP(mode, kForever);
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_EQ(read(mount->path()), -1) << mode;
    EXPECT_TRUE(record.count == 0 && mount->hung() == 1) << mode;
    EXPECT_EQ(read("/"), 0) << "the next reading is not held up";
  }
}

TEST_F(SlowRead, AReadingThatBeginsMeanwhileWins) {
  MOUNT_OR_SKIP("status", 30);
  write_file(dir / "only", "");
  int nested_result = 1;
  // Runs as an event of the first reading, with the record half built.
  const int timer = desk_timer_start(5, [&] {
    if (record.count != 0 && nested_result == 1) nested_result = read(dir.path());
  });
  EXPECT_EQ(read(mount->path()), -1);
  desk_timer_stop(timer);
  EXPECT_TRUE(nested_result == 0 && record.path == dir.path());
  EXPECT_EQ(names(), Names{"only"});
}

TEST_F(SlowRead, ANameReturnedTwiceAppearsOnce) {
  MOUNT_OR_SKIP("twice", 0);
  EXPECT_EQ(read(mount->path()), 0);
  EXPECT_TRUE(record.count == 20 && record.total_size == 100u);
}
