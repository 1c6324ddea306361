#include "platform/desktop.h"

#include <atomic>
#include <thread>

#include "platform/qt/desktop_qt.h"
#include "tests/face/window_test.h"

// Were one drain to go on as long as calls wait, nothing else would ever run.
TEST(Desktop, AFloodOfCallsLeavesRoomForOtherEvents) {
  bool stop = false, ended = false;
  const std::function<void()> again = [&] { stop ? void(ended = true) : desk_post(again); };
  again();
  QTimer::singleShot(1, [&stop] { stop = true; });
  EXPECT_TRUE(wait_for([&ended] { return ended; }));
}

TEST(Desktop, WorkersWaitForTheirOwnAnswersAndEndAnswersTheRestWithEscape) {
  std::vector<int> answers(6, 0);
  std::atomic<int> done{0};
  std::vector<std::thread> workers;
  for (int i = 0; i < 6; ++i)
    workers.emplace_back([&, i] {
      answers[i] = desk_alert("Worker", std::to_string(i), "@&Skip|&Retry|#&Abort");
      ++done;
    });
  ASSERT_TRUE(wait_for([&] { return windows("Worker").size() == 6; }));
  answer(windows("Worker", QStringLiteral("4")).value(0), "R");
  EXPECT_TRUE(wait_for([&] { return done == 1; }));
  EXPECT_EQ(answers[4], 2);
  desk_end();
  for (auto& worker : workers) worker.join();
  EXPECT_EQ(answers, (std::vector<int>{3, 3, 3, 3, 2, 3}));
  EXPECT_EQ(desk_alert("Worker", "late", "&Skip|&Abort"), 2);
  EXPECT_TRUE(wait_for([&] { return windows("Worker").isEmpty(); }));
  desktop_qt_reset();
}
