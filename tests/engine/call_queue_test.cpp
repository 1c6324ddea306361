#include "platform/call_queue.h"

#include <gtest/gtest.h>

#include <atomic>
#include <thread>
#include <vector>

TEST(CallQueue, RunsCallsOfManyThreadsOnceEachAndCallersSeeThemDone) {
  CallQueue queue([] {});
  std::atomic<int> live{8};
  int sum = 0;  // only the draining thread writes; the callers read what their own call did
  std::vector<std::thread> callers;
  for (int i = 0; i < 8; ++i)
    callers.emplace_back([&] {
      for (int n = 0; n < 200; ++n) {
        int seen = 0;
        EXPECT_TRUE(queue.call([&] { seen = ++sum; }));
        EXPECT_GT(seen, 0);
      }
      --live;
    });
  while (live > 0) {
    queue.wait(5);
    queue.drain();
  }
  for (auto& caller : callers) caller.join();
  EXPECT_EQ(sum, 1600);
}

TEST(CallQueue, CloseLetsWaitersGoWithoutRunningTheirCalls) {
  CallQueue queue([] {});
  std::atomic<bool> ran{false};
  std::thread caller([&] { EXPECT_FALSE(queue.call([&] { ran = true; })); });
  queue.wait(5000);
  queue.close();
  caller.join();
  EXPECT_FALSE(ran);
  EXPECT_FALSE(queue.post([] {}));
}
