#include "dirmodel/fs_probe.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <memory>

#include "platform/desktop.h"
#include "platform/terminal/terminal.h"

TEST(FsProbe, AnAlarmFreesACallThatCanBeInterrupted) {
  terminal_start();
  int ends[2];
  ASSERT_EQ(pipe(ends), 0);
  auto error = std::make_shared<int>(0);
  const auto wait_in_vain = [=] {
    char byte;
    *error = read(ends[0], &byte, 1) < 0 ? errno : 0;
  };
  EXPECT_TRUE(fs_bounded("/", wait_in_vain, 300));
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
  EXPECT_FALSE(fs_bounded("/", hang, 150));
  desk_timer_stop(timer);
  EXPECT_GT(ticks, 0);
  *release = true;
  EXPECT_TRUE(terminal_run_until([&] { return ended->load(); }));
}
