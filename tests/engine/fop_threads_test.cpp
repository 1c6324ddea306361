#include <condition_variable>
#include <mutex>

#include "core/state.h"
#include "tests/engine/fop_run.h"
#include "views/fname.h"

// Fifty operations wait for an answer each at the same time; none keeps another from asking, and the
// interface thread stays free.
TEST(FopThreads, FiftyQuestionsAreOpenAtOnce) {
  constexpr int kCount = 50;
  TempDir dir;
  for (int i = 0; i < kCount; ++i) {
    const std::string name = "/f" + std::to_string(i);
    mkdir((dir.path() + "/to" + std::to_string(i)).c_str(), 0755);
    write_file(dir.path() + name, "new");
    write_file(dir.path() + "/to" + std::to_string(i) + name, "old");
  }
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
  for (int i = 0; i < kCount; ++i) {
    fop_info info;
    info.linger_ms = 0;
    const int kind = i % 2 ? FOP_MOVE : FOP_COPY;
    controls.push_back(fop(kind, dir.path().c_str(), {"f" + std::to_string(i)},
                           (dir.path() + "/to" + std::to_string(i)).c_str(), 0, info,
                           [](const std::string&, const std::vector<std::string>&) {}));
    ASSERT_TRUE(controls.back());
  }
  EXPECT_TRUE(terminal_run_until([&] { return ended == kCount; }, 200000));
  desk_timer_stop(timer);
  EXPECT_GT(ticks, 0);
  for (int i = 0; i < kCount; ++i) {
    EXPECT_EQ(controls[i]->aborted, 0);
    EXPECT_EQ(read_file(dir.path() + "/to" + std::to_string(i) + "/f" + std::to_string(i)), "new");
  }
}

// Pause and cancel come from another thread at any moment; told items come in order and on the interface
// thread.
TEST(FopThreads, ControlsMayChangeAtAnyMoment) {
  TempDir dir;
  OtherSystem other;
  SKIP_WITHOUT(other);
  for (int round = 0; round < 8; ++round) {
    run_shell("cd '" + dir.path() + "' && mkdir -p d && for i in $(seq 300); do echo $i >d/$i; done");
    FopRun run{FOP_MOVE, dir.path(), {"d"}, other.path(), FOP_OVERWRITE_ALL};
    std::atomic<fop_control*> control{nullptr};
    run.watch = [&](fop_control& c, int) { control = &c; };
    int ticks = 0;
    const int timer = desk_timer_start(1, [&] {
      if (!control) return;
      control.load()->pause = ++ticks % 2;
      if (ticks == 3 * round + 1) control.load()->pause = 0, control.load()->cancel = 1;
    });
    fop_run(&run);
    desk_timer_stop(timer);
    std::string count;  // each file is at one place
    run_shell("{ ls '" + (dir / "d") + "' 2>/dev/null; ls '" + (other / "d") + "'; } | sort | uniq | wc -l",
              &count);
    EXPECT_EQ(count, "300\n");
    run_shell("rm -rf '" + (dir / "d") + "' '" + (other / "d") + "'");
  }
}

// "Done" stays on display before the slot ends, unless nobody looks.
TEST(FopThreads, DoneLingers) {
  TempDir dir;
  write_file(dir / "f", "text");
  terminal_reset();
  Terminal& terminal = terminal_start();
  std::atomic<bool> ended{false};
  std::atomic<int> shown_done{0};
  timespec done_at{}, ended_at{};
  terminal.on_refresh = [&](const fop_info& info) {
    if (std::string(info.from_label) == "Done") clock_gettime(CLOCK_MONOTONIC, &done_at), ++shown_done;
  };
  terminal.on_slot_ended = [&](void*) {
    clock_gettime(CLOCK_MONOTONIC, &ended_at), ended = true, desk_wake();
  };
  ASSERT_TRUE(fop(FOP_DELETE, dir.path().c_str(), {"f"}, "", 0, fop_info(), {}));
  EXPECT_TRUE(terminal_run_until([&] { return ended.load(); }));
  EXPECT_EQ(shown_done, 1);
  EXPECT_GE((ended_at.tv_sec - done_at.tv_sec) * 1000 + (ended_at.tv_nsec - done_at.tv_nsec) / 1000000, 1000);
}

// The end of the interface answers an open question, and leaves nothing half-written.
TEST(FopThreads, TheEndAnswersWithEscape) {
  TempDir dir;
  mkdir((dir / "to").c_str(), 0755);
  write_file(dir / "f", "new");
  write_file(dir / "to/f", "old");
  FopRun run{FOP_COPY, dir.path(), {"f"}, dir / "to", 0, {2}};
  bool ended = false;
  run.watch = [&ended](fop_control&, int) {
    if (!ended) desk_end();
    ended = true;
  };
  fop_run(&run);
  EXPECT_TRUE(run.aborted);
  EXPECT_EQ(read_file(dir / "to/f"), "old");
  terminal_reset();
}

// A converter of names is a library that the worker loads, on its own small stack.
TEST(FopThreads, AWorkerLoadsTheConverterOfNames) {
  TempDir dir;
  mkdir((dir / "to").c_str(), 0755);
  const std::string name = "\xc6\xfc";  // one character of this set
  Settings record;
  settings_defaults(&record);
  record.flags = (record.flags & ~static_cast<uint32_t>(SET_ENC_MASK)) | SET_ENC_ALTERNATE;
  Settings* const before = std::exchange(gConfig, &record);
  fname_set_translation("EUC-JP");
  for (const char* place : {"", "to/"}) write_file(dir / (place + name), place);
  FopRun run{FOP_COPY, dir.path(), {name}, dir / "to", 0, {1}};
  fop_run(&run);
  fname_set_translation("");
  gConfig = before;
  ASSERT_EQ(run.asked.size(), 1U);
  EXPECT_NE(run.asked[0].find("/to/\xe6\x97\xa5' file exists"), std::string::npos) << run.asked[0];
}
