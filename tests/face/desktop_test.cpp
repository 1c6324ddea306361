#include "platform/desktop.h"

#include <atomic>
#include <thread>

#include "platform/qt/desktop_qt.h"
#include "tests/face/window_test.h"

TEST(Desktop, CallsAreRunInsideNestedLoopsAndInOrder) {
  std::vector<int> order;
  bool waited = false, on_thread = false;
  QDialog dialog;
  std::thread worker([&] {
    for (int i = 0; i < 100; ++i) desk_post([&order, i] { order.push_back(i); });
    waited = desk_call([&] { on_thread = desk_on_interface_thread(); });
    desk_post([&] { dialog.accept(); });
  });
  dialog.exec();
  worker.join();
  EXPECT_TRUE(waited && on_thread && order.size() == 100u && std::is_sorted(order.begin(), order.end()));
}

TEST(Desktop, AFloodOfCallsLeavesRoomForOtherEvents) {
  std::atomic<bool> stop{false};
  std::atomic<int> ended{0};
  std::vector<std::thread> flood;
  for (int i = 0; i < 4; ++i)
    flood.emplace_back([&] {
      while (!stop) desk_call([] { std::this_thread::sleep_for(std::chrono::microseconds(200)); });
      ++ended;
    });
  int ticks = 0;  // were one drain to go on as long as calls wait, no timer would ever fire
  QTimer tick;
  QObject::connect(&tick, &QTimer::timeout, [&] { ++ticks; });
  tick.start(1);
  EXPECT_TRUE(wait_for([&] { return ticks >= 20; }));
  stop = true;
  EXPECT_TRUE(wait_for([&] { return ended == 4; }));
  for (auto& thread : flood) thread.join();
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
  EXPECT_TRUE(wait_for([&] {
    for (QWidget* alert : windows("Worker", QStringLiteral("4"))) press("R", alert);
    return done == 1;
  }));
  EXPECT_EQ(answers[4], 2);
  desk_end();
  for (auto& worker : workers) worker.join();
  EXPECT_EQ(answers, (std::vector<int>{3, 3, 3, 3, 2, 3}));
  EXPECT_EQ(desk_alert("Worker", "late", "&Skip|&Abort"), 2);
  EXPECT_TRUE(wait_for([&] { return windows("Worker").isEmpty(); }));
  desktop_qt_reset();
}
