#include <condition_variable>
#include <mutex>

#include "core/state.h"
#include "tests/engine/fop_run.h"
#include "views/fname.h"

using FopThreads = FopTest;

// Fifty operations wait for an answer each at the same time; none keeps another from asking, and the
// interface thread stays free.
TEST_F(FopThreads, FiftyQuestionsAreOpenAtOnce) {
  constexpr int kCount = 50;
  dir.shell("for i in $(seq 50); do mkdir to/$i; echo new >from/f$i; echo old >to/$i/f$i; done");
  terminal_reset();
  Terminal& terminal = terminal_start();
  std::mutex mutex;
  std::condition_variable all_open;
  int open = 0;
  terminal.on_alert = [&](TerminalAlert& alert) {
    std::unique_lock lock(mutex);
    if (++open == kCount) all_open.notify_all();
    all_open.wait(lock, [&] { return open >= kCount; });
    alert.answer = 2;
  };
  std::atomic<int> ended{0}, ticks{0};
  terminal.on_slot_ended = [&](void*) { ++ended, desk_wake(); };
  const int timer = desk_timer_start(1, [&] { ++ticks; });
  std::vector<std::shared_ptr<fop_control>> controls;
  for (int i = 1; i <= kCount; ++i) {
    fop_info info;
    info.linger_ms = 0;
    const std::string number = std::to_string(i);
    controls.push_back(fop(i % 2 ? FOP_MOVE : FOP_COPY, (dir / "from").c_str(), {"f" + number},
                           (dir / "to/" + number).c_str(), 0, info,
                           [](const std::string&, const std::vector<std::string>&) {}));
    ASSERT_TRUE(controls.back());
  }
  EXPECT_TRUE(terminal_run_until([&] { return ended == kCount; }, 200000));
  desk_timer_stop(timer);
  EXPECT_GT(ticks, 0);
  for (const auto& control : controls) EXPECT_EQ(control->aborted, 0);
  EXPECT_EQ(dir.shell("cat to/*/* | sort | uniq -c | tr -d ' '"), "50new\n");
}

// Pause and cancel come from another thread at any moment; told items come in order and on the interface
// thread.
TEST_F(FopThreads, ControlsMayChangeAtAnyMoment) {
  OtherSystem other;
  SKIP_WITHOUT(other);
  for (int round = 0; round < 8; ++round) {
    dir.shell("mkdir -p from/d && for i in $(seq 300); do echo $i >from/d/$i; done");
    std::atomic<fop_control*> control{nullptr};
    int ticks = 0;
    const int timer = desk_timer_start(1, [&] {
      if (!control) return;
      control.load()->pause = ++ticks % 2;
      if (ticks == 3 * round + 1) control.load()->pause = 0, control.load()->cancel = 1;
    });
    go(FOP_MOVE, {"d"}, other.path, {}, FOP_OVERWRITE_ALL, [&](fop_control& c, int) { control = &c; });
    desk_timer_stop(timer);
    EXPECT_EQ(dir.shell("find from '" + other.path + "' -type f -printf '%f\\n' | sort -u | wc -l"), "300\n");
    dir.shell("rm -rf from/d '" + (other / "d") + "'");
  }
}

// "Done" stays on display before the slot ends, unless nobody looks.
TEST_F(FopThreads, DoneLingers) {
  write_file(dir / "from/f", "text");
  terminal_reset();
  Terminal& terminal = terminal_start();
  std::atomic<bool> ended{false};
  timespec done_at{}, ended_at{};
  terminal.on_refresh = [&](const fop_info& info) {
    if (std::string(info.from_label) == "Done") clock_gettime(CLOCK_MONOTONIC, &done_at);
  };
  terminal.on_slot_ended = [&](void*) {
    clock_gettime(CLOCK_MONOTONIC, &ended_at), ended = true, desk_wake();
  };
  ASSERT_TRUE(fop(FOP_DELETE, (dir / "from").c_str(), {"f"}, "", 0, fop_info(), {}));
  EXPECT_TRUE(terminal_run_until([&] { return ended.load(); }));
  EXPECT_GT(done_at.tv_sec, 0);
  EXPECT_GE((ended_at.tv_sec - done_at.tv_sec) * 1000 + (ended_at.tv_nsec - done_at.tv_nsec) / 1000000, 1000);
}

// The end of the interface answers an open question, and leaves nothing half-written.
TEST_F(FopThreads, TheEndAnswersWithEscape) {
  dir.shell("echo new >from/f && echo old >to/f");
  bool ended = false;
  go(FOP_COPY, {"f"}, dir / "to", {2}, 0, [&ended](fop_control&, int) {
    if (!std::exchange(ended, true)) desk_end();
  });
  EXPECT_TRUE(run.aborted);
  EXPECT_EQ(read_file(dir / "to/f"), "old\n");
  terminal_reset();
}

// A converter of names is a library that the worker loads, on its own small stack.
TEST_F(FopThreads, AWorkerLoadsTheConverterOfNames) {
  const std::string name = "\xc6\xfc";  // one character of this set
  Settings record;
  settings_defaults(&record);
  record.flags = (record.flags & ~static_cast<uint32_t>(SET_ENC_MASK)) | SET_ENC_ALTERNATE;
  Settings* const before = std::exchange(gConfig, &record);
  fname_set_translation("EUC-JP");
  for (const char* place : {"from/", "to/"}) write_file(dir / (place + name), place);
  go(FOP_COPY, {name}, dir / "to", {1});
  fname_set_translation("");
  gConfig = before;
  EXPECT_EQ(run.asked, Names{"Copy/Move|The '" + (dir / "to/\xe6\x97\xa5") + kConflict});
}
