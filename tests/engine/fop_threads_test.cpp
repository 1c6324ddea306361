#include "core/state.h"
#include "tests/engine/fop_run.h"
#include "views/fname.h"

using FopThreads = FopTest;
using FopControls = OtherSystemTest;

// Pause and cancel come from another thread.
TEST_F(FopControls, ControlsMayChangeAtAnyMoment) {
  for (int round = 0; round < 8; ++round) {
    dir.shell("mkdir -p from/d && for i in $(seq 300); do echo $i >from/d/$i; done");
    std::atomic<fop_control*> control{nullptr};
    int ticks = 0;
    const int timer = desk_timer_start(1, [&] {
      if (!control) return;
      control.load()->pause = ++ticks % 2;
      if (ticks == 3 * round + 1) control.load()->pause = 0, control.load()->cancel = 1;
    });
    go(FOP_MOVE, {"d"}, "other", {}, FOP_OVERWRITE_ALL, [&](fop_control& c, int) { control = &c; });
    desk_timer_stop(timer);
    EXPECT_EQ(dir.shell("find from other/ -type f -printf '%f\\n' | sort -u | wc -l"), "300\n");
    dir.shell("rm -rf from/d other/d");
  }
}

TEST_F(FopThreads, TheEndAnswersWithEscape) {
  dir.shell("echo new >from/f && echo old >to/f");
  bool ended = false;
  go(FOP_COPY, {"f"}, "to", {2}, 0, [&ended](fop_control&, int) {
    if (!std::exchange(ended, true)) desk_end();
  });
  EXPECT_EQ(asked.back() + read_file(dir / "to/f"), "abortedold\n");
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
  go(FOP_COPY, {name}, "to", {1});
  fname_set_translation("");
  gConfig = before;
  EXPECT_EQ(asked, Names{conflict("Copy/Move", "to/\xe6\x97\xa5")});
}
