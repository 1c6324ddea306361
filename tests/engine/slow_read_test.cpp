// Reading directories of a file system that hangs.
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "core/state.h"
#include "dirmodel/dir_read.h"
#include "dirmodel/fs_probe.h"
#include "dirmodel/mount_table.h"
#include "platform/desktop.h"
#include "platform/terminal/terminal.h"
#include "tests/support/slow_mount.h"

namespace {
constexpr int kBound = 80;       // ms on one call
constexpr int kForever = 20000;  // ms that a call hangs; nothing here waits for it

struct SlowRead : testing::Test {
  DirRecord record;
  void SetUp() override {
    terminal_start() = Terminal();
    gConfig->flags &= ~SET_HIDE_DOT;
    dir_read_set_timeout_ms(kBound);
  }
  void TearDown() override {
    dir_read_set_timeout_ms(10000);
    dir_free(&record);
  }
  int read(const std::string& path) {
    record.path = path;
    return dir_read(&record, dir_cmp_name, 1);
  }
  void expect_timeout(const DirEntry& entry) {
    EXPECT_EQ(entry.flags, ENTRY_INFO | ENTRY_UNREAD) << entry.name;
    EXPECT_STREQ(entry.info, "(unable to read - timeout)") << entry.name;
    EXPECT_EQ(entry.st.st_uid, static_cast<uid_t>(-1)) << entry.name;
    EXPECT_EQ(entry.st.st_mode, 0u) << entry.name;
  }
};

int threads_now() {
  int count = 0;
  for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) count += task.exists();
  return count;
}
}  // namespace

#define MOUNT_OR_SKIP(mount) \
  if (!(mount).mounted()) GTEST_SKIP() << "no FUSE file system can be mounted here"

TEST_F(SlowRead, TwoCallsAreWaitedForAndNoMore) {
  for (const char* mode : {"status", "interruptible"}) {
    SlowMount mount(mode, kForever);
    MOUNT_OR_SKIP(mount);
    const int threads = threads_now();
    int ticks = 0;
    const int timer = desk_timer_start(10, [&] { ++ticks; });
    EXPECT_EQ(read(mount.path()), 0);
    desk_timer_stop(timer);
    EXPECT_GT(ticks, 3) << "events run while a call hangs";
    ASSERT_EQ(record.count, 20);
    for (int i = 0; i < record.count; ++i) expect_timeout(*record.entries[i]);
    EXPECT_EQ(mount.hung(), 2) << mode;
    if (std::string(mode) == "interruptible") {
      EXPECT_TRUE(terminal_run_until([&] { return threads_now() == threads; })) << "a thread was left behind";
    }
  }
}

TEST_F(SlowRead, ADirectoryThatIsLockedMeanwhileStillShowsItsNames) {
  SlowMount mount("lookup", kForever);
  MOUNT_OR_SKIP(mount);
  read(mount.path());  // whether its end can be read depends on the kernel
  ASSERT_EQ(record.count, 20);
  for (int i = 0; i < record.count; ++i) expect_timeout(*record.entries[i]);
}

TEST_F(SlowRead, OneEntryThatHangsCostsTheOthersNothing) {
  SlowMount mount("one", kForever);
  MOUNT_OR_SKIP(mount);
  EXPECT_EQ(read(mount.path()), 0);
  ASSERT_EQ(record.count, 20);
  for (int i = 0; i < 20; ++i) EXPECT_EQ(record.entries[i]->st.st_size, i == 3 ? 0 : 5) << i;
  expect_timeout(*record.entries[3]);
}

TEST_F(SlowRead, TargetsOnASlowFileSystemAreGivenUpAndTheRestIsRead) {
  SlowMount mount("status", kForever);
  MOUNT_OR_SKIP(mount);
  TempDir dir;
  for (int i = 0; i < 10; ++i) {
    const std::string number = "0" + std::to_string(i);
    ASSERT_EQ(symlink((mount.path() + "/entry" + number).c_str(), (dir / ("link" + number)).c_str()), 0);
    write_file(dir / ("file" + number), "text");
  }
  EXPECT_EQ(read(dir.path()), 0);
  ASSERT_EQ(record.count, 20);
  for (int i = 0; i < 10; ++i) EXPECT_EQ(record.entries[i]->st.st_size, 4);
  for (int i = 10; i < 20; ++i) {
    EXPECT_EQ(record.entries[i]->flags, ENTRY_INFO | ENTRY_UNREAD);
    EXPECT_EQ(record.entries[i]->info, mount.path() + "/entry0" + std::to_string(i - 10));
    EXPECT_TRUE(S_ISLNK(record.entries[i]->st.st_mode));
  }
  EXPECT_EQ(mount.hung(), 2);
}

TEST_F(SlowRead, ADirectoryThatDoesNotOpenOrReadIsRefused) {
  for (const char* mode : {"open", "names"}) {
    SlowMount mount(mode, kForever);
    MOUNT_OR_SKIP(mount);
    ASSERT_EQ(chdir("/"), 0);
    EXPECT_EQ(read(mount.path()), -1) << mode;
    EXPECT_EQ(record.count, 0);
    EXPECT_EQ(mount.hung(), 1);
    EXPECT_EQ(read("/"), 0) << "the next reading is not held up";
  }
}

TEST_F(SlowRead, GivenUpAtOnce) {
  SlowMount mount("status", kForever);
  MOUNT_OR_SKIP(mount);
  dir_read_set_timeout_ms(kForever);
  const int timer = desk_timer_start(30, [] { dir_read_cancel(); });
  EXPECT_EQ(read(mount.path()), -1);
  desk_timer_stop(timer);
  EXPECT_EQ(mount.hung(), 1);
  EXPECT_EQ(record.count, 0);
}

TEST_F(SlowRead, AReadingThatBeginsMeanwhileWins) {
  SlowMount mount("status", 30);
  MOUNT_OR_SKIP(mount);
  TempDir dir;
  write_file(dir / "only", "");
  int nested_result = 1;
  // Runs as an event of the first reading, with the record half built.
  const int timer = desk_timer_start(5, [&] {
    if (record.count == 0 || nested_result != 1) return;
    nested_result = read(dir.path());
  });
  EXPECT_EQ(read(mount.path()), -1);
  desk_timer_stop(timer);
  EXPECT_EQ(nested_result, 0);
  ASSERT_EQ(record.count, 1);
  EXPECT_STREQ(record.entries[0]->name, "only");
  EXPECT_EQ(record.path, dir.path());
}

TEST_F(SlowRead, ANameReturnedTwiceAppearsOnce) {
  SlowMount mount("twice", 0);
  MOUNT_OR_SKIP(mount);
  EXPECT_EQ(read(mount.path()), 0);
  EXPECT_EQ(record.count, 20);
  EXPECT_EQ(record.total_size, 100u);
}

TEST_F(SlowRead, ProbesComeBack) {
  SlowMount mount("status", kForever);
  MOUNT_OR_SKIP(mount);
  auto mode = std::make_shared<int>(-2);
  const std::string path = mount.path() + "/entry01";
  EXPECT_FALSE(fs_bounded(
      [=] {
        struct stat status;
        *mode = stat(path.c_str(), &status);
      },
      kBound));
}

TEST(MountTable, FindsTheMountPointByTheText) {
  const std::vector<std::string> points = {"/", "/home", "/home/u/far away", "/mnt"};
  const std::pair<const char*, const char*> rows[] = {{"/home/u/far away/x", "/home/u/far away"},
                                                      {"/home/u/far awayx", "/home"},
                                                      {"/mnt", "/mnt"},
                                                      {"/mnt/../home/u", "/home"},
                                                      {"/homes", "/"},
                                                      {"relative", "/"}};
  for (auto& [path, point] : rows) EXPECT_EQ(mount_point_of(path, points), point) << path;
  const std::vector<std::string> real = mount_table_read();
  EXPECT_NE(std::find(real.begin(), real.end(), "/proc"), real.end());
}
