#include "dirmodel/fs_probe.h"

#include <atomic>
#include <cerrno>
#include <memory>
#include <thread>

#include "platform/desktop.h"
#include "platform/terminal/terminal.h"
#include "tests/support/temp_dir.h"

TEST(FsProbe, TellsDirectoriesFromTheRest) {
  terminal_start();
  TempDir dir;
  dir.shell(
      "mkdir -p two/a two/b dots/.hidden empty && touch file empty/file && ln -s two link && "
      "ln -s nowhere broken && ln -s ../two empty/link");
  const auto links = [&](const char* name) { return fs_path_is_directory((dir / name).c_str()); };
  EXPECT_EQ(links("file"), 0);
  EXPECT_EQ(links("broken"), -1);
  EXPECT_GT(links("link"), 0);
  EXPECT_EQ(fs_path_is_directory(""), -1);
  const auto has = [&](const char* name, int flags) {
    return fs_path_has_subdirectories(dir.path().c_str(), name, flags);
  };
  EXPECT_GT(has("two", 0), 0);
  EXPECT_EQ(has("empty", 2), 0);  // a link to a directory is none
  EXPECT_GT(has("dots", 2), 0);
  EXPECT_EQ(has("file", 0), -1);
}

TEST(FsProbe, AnAlarmFreesACallThatCanBeInterrupted) {
  terminal_start();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  auto error = std::make_shared<int>(0);
  const auto wait_in_vain = [=] {
    char byte;
    *error = read(ends[0], &byte, 1) < 0 ? errno : 0;
  };
  EXPECT_TRUE(fs_bounded(wait_in_vain, 60));
  EXPECT_EQ(*error, EINTR);
  close(ends[0]), close(ends[1]);
}

TEST(FsProbe, AThreadThatHangsOnIsLeftBehindWhileEventsRun) {
  terminal_start();
  auto release = std::make_shared<std::atomic<bool>>(false);
  auto ended = std::make_shared<std::atomic<bool>>(false);
  int ticks = 0;
  const int timer = desk_timer_start(10, [&] { ++ticks; });
  const auto hang = [=] {
    while (!*release) usleep(1000);
    *ended = true;
  };
  EXPECT_FALSE(fs_bounded(hang, 150));
  desk_timer_stop(timer);
  EXPECT_GT(ticks, 2);
  *release = true;
  EXPECT_TRUE(terminal_run_until([&] { return ended->load(); }));
}

TEST(FsProbe, ManyThreadsMayProbeAtOnce) {
  terminal_start();
  std::vector<std::thread> threads;
  std::atomic<int> good{0};
  for (int i = 0; i < 4; ++i)
    threads.emplace_back([&] {
      for (int n = 0; n < 50; ++n) good += fs_path_is_directory("/") > 0;
    });
  for (auto& thread : threads) thread.join();
  EXPECT_EQ(good, 200);
}
