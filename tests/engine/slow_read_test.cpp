// Reading directories of a file system that hangs.
#include <filesystem>

#include "core/state.h"
#include "dirmodel/dir_read.h"
#include "platform/desktop.h"
#include "platform/terminal/terminal.h"
#include "tests/support/slow_mount.h"

constexpr int kForever = 20000;  // ms that a call hangs; nothing here waits for it

struct SlowRead : testing::Test {
  DirRecord record;
  std::unique_ptr<SlowMount> mount;
  void SetUp() override {
    terminal_start() = Terminal();
    gConfig->flags &= ~SET_HIDE_DOT;
    dir_read_set_timeout_ms(250);  // a busy machine, too, answers that fast
  }
  void TearDown() override {
    dir_read_set_timeout_ms(10000);
    dir_free(&record);
  }
  int read(const std::string& path) {
    record.path = path;
    return dir_read(&record, dir_cmp_name, 1);
  }
};

static int threads_now() {
  int count = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) count += task.exists();
  return count;
}

#define MOUNT_OR_SKIP(mode, hang)                  \
  mount.reset();                                   \
  mount = std::make_unique<SlowMount>(mode, hang); \
  if (!mount->mounted()) GTEST_SKIP() << "no FUSE file system can be mounted here"

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
    EXPECT_EQ(result, 0);
    EXPECT_EQ(mount->hung(), 2) << mode;
    if (mode == "interruptible") {
      EXPECT_TRUE(terminal_run_until([&] { return threads_now() == threads; })) << "a thread was left behind";
    }
  }
}

TEST_F(SlowRead, TargetsOnASlowFileSystemAreGivenUpAndTheRestIsRead) {
  MOUNT_OR_SKIP("status", kForever);
  TempDir dir;
  dir.shell("for i in 0 1 2; do ln -s '" + mount->path() + "/entry0'$i l$i; printf text >f$i; done");
  EXPECT_EQ(read(dir.path()), 0);
  ASSERT_EQ(record.count, 6);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(record.entries[i]->st.st_size, 4);
  for (int i = 3; i < 6; ++i) {
    EXPECT_EQ(record.entries[i]->info, mount->path() + "/entry0" + std::to_string(i - 3));
    EXPECT_TRUE(S_ISLNK(record.entries[i]->st.st_mode));
  }
  EXPECT_EQ(mount->hung(), 2);
}

TEST_F(SlowRead, ADirectoryThatDoesNotOpenOrReadIsRefused) {
  for (const char* mode : {"open", "names"}) {
    MOUNT_OR_SKIP(mode, kForever);
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_EQ(read(mount->path()), -1) << mode;
    EXPECT_EQ(record.count, 0);
    EXPECT_EQ(mount->hung(), 1);
    EXPECT_EQ(read("/"), 0) << "the next reading is not held up";
  }
}

TEST_F(SlowRead, AReadingThatBeginsMeanwhileWins) {
  MOUNT_OR_SKIP("status", 30);
  TempDir dir;
  write_file(dir / "only", "");
  int nested_result = 1;
  // Runs as an event of the first reading, with the record half built.
  const int timer = desk_timer_start(5, [&] {
    if (record.count == 0 || nested_result != 1) return;
    nested_result = read(dir.path());
  });
  EXPECT_EQ(read(mount->path()), -1);
  desk_timer_stop(timer);
  EXPECT_EQ(nested_result, 0);
  EXPECT_EQ(record.count, 1);
  EXPECT_EQ(record.path, dir.path());
}

TEST_F(SlowRead, ANameReturnedTwiceAppearsOnce) {
  MOUNT_OR_SKIP("twice", 0);
  EXPECT_EQ(read(mount->path()), 0);
  EXPECT_EQ(record.count, 20);
  EXPECT_EQ(record.total_size, 100u);
}
