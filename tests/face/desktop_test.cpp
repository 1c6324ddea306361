#include <gtest/gtest.h>

#include <QApplication>
#include <QDialog>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>
#include <atomic>
#include <thread>

#include "platform/desktop.h"
#include "platform/qt/desktop_qt.h"

namespace {
int shown_windows(const QString& title) {
  int count = 0;
  for (QWidget* widget : QApplication::topLevelWidgets())
    count += widget->isVisible() && widget->windowTitle() == title;
  return count;
}
}  // namespace

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
  EXPECT_TRUE(waited && on_thread);
  ASSERT_EQ(order.size(), 100u);
  EXPECT_TRUE(std::is_sorted(order.begin(), order.end()));
}

TEST(Desktop, AFloodOfCallsLeavesRoomForOtherEvents) {
  std::atomic<bool> stop{false};
  std::vector<std::thread> flood;
  for (int i = 0; i < 4; ++i)
    flood.emplace_back([&] {
      while (!stop) desk_call([] { std::this_thread::sleep_for(std::chrono::microseconds(200)); });
    });
  int ticks = 0;  // were one drain to go on as long as calls wait, no timer would ever fire
  QTimer tick;
  QObject::connect(&tick, &QTimer::timeout, [&] { ++ticks; });
  tick.start(1);
  EXPECT_TRUE(QTest::qWaitFor([&] { return ticks >= 20; }, 60000));
  stop = true;
  std::atomic<int> joined{0};
  std::thread joiner([&] {
    for (auto& thread : flood) thread.join();
    joined = 1;
  });
  EXPECT_TRUE(QTest::qWaitFor([&] { return joined == 1; }));
  joiner.join();
}

TEST(Desktop, PendingEventsSleepsUntilWokenOrCalled) {
  desk_pending_events();
  for (const auto& wake :
       {std::function<void()>(desk_wake), std::function<void()>([] { desk_post([] {}); })}) {
    std::thread waker([&] {
      std::this_thread::sleep_for(std::chrono::milliseconds(30));
      wake();
    });
    QElapsedTimer slept;
    slept.start();
    desk_pending_events(100000000);
    waker.join();
    EXPECT_GE(slept.elapsed(), 20);
  }
  desk_wake();  // before the sleep: not lost
  desk_pending_events(100000000);
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
  ASSERT_TRUE(QTest::qWaitFor([] { return shown_windows(QStringLiteral("Worker")) == 6; }));
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->accessibleDescription() == QStringLiteral("4")) QTest::keyClick(widget, Qt::Key_R);
  ASSERT_TRUE(QTest::qWaitFor([&] { return done == 1; }));
  EXPECT_EQ(answers[4], 2);
  desk_end();
  for (auto& worker : workers) worker.join();
  EXPECT_EQ(answers, (std::vector<int>{3, 3, 3, 3, 2, 3}));
  EXPECT_EQ(desk_alert("Worker", "late", "&Skip|&Abort"), 2);
  EXPECT_TRUE(QTest::qWaitFor([] { return shown_windows(QStringLiteral("Worker")) == 0; }));
  desktop_qt_reset();
}

TEST(Desktop, ATimerMayStopItselfAndOthers) {
  int calls = 0, other = 0, first = 0, second = 0;
  second = desk_timer_start(1000000, [&] { ++other; });
  first = desk_timer_start(1, [&] {
    if (++calls < 3) return;
    desk_timer_stop(first);
    desk_timer_stop(second);
    desk_timer_stop(second);
  });
  EXPECT_TRUE(QTest::qWaitFor([&] { return calls == 3; }));
  QTest::qWait(20);
  EXPECT_EQ(calls, 3);
}
