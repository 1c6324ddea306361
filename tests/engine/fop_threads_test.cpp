#include "core/state.h"
#include "fileops/fop_progress.h"
#include "tests/engine/fop_run.h"
#include "tests/support/encoding.h"

using FopThreads = FopTest;
using FopControls = OtherSystemTest;

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
  EXPECT_TRUE(asked.ends_with("aborted") && read_file(dir / "to/f") == "old\n") << asked;
  terminal_reset();
}

// A converter of names is a library that the worker loads, on its own small stack.
TEST_F(FopThreads, AWorkerLoadsTheConverterOfNames) {
  const std::string name = "\xc6\xfc";  // one character of this set
  const Encoding encoding(SET_ENC_ALTERNATE, "EUC-JP");
  for (const char* place : {"from/", "to/"}) write_file(dir / (place + name), place);
  go(FOP_COPY, {name}, "to", {1});
  EXPECT_EQ(asked, conflict("Copy/Move", "to/\xe6\x97\xa5"));
}

TEST(FopParts, TimeLeftFollowsTheRateAndReadsAsText) {
  fop_request request;
  EXPECT_EQ(fop_calc_time_left(&request, 0, 100), -1);
  request.start_time.tv_sec -= 1000;
  EXPECT_NEAR(fop_calc_time_left(&request, 50, 100), 1001, 100);
  EXPECT_EQ(fop_calc_time_left(&request, 0, 100), INT32_MAX);
  EXPECT_EQ(each<int>({-1, 0, 59, 60, 3599, 7384}, fop_time_text),
            " | |59 seconds|1:00 minutes|59:59 minutes|2:03 hours|");
}

TEST(FopParts, FlagsFollowTheSettings) {
  const std::tuple<int, uint32_t, bool, uint32_t> rows[] = {
      {FOP_COPY, SET_OVERWRITE | SET_SYM_SYMLINKS | SET_RM1_NO_PROMPT | SET_RM_I_PROMPT, true,
       FOP_OVERWRITE_ALL | FOP_COPY_LINKS},
      {FOP_MOVE, SET_SYM_FILES, false, FOP_FOLLOW_LINKS},
      {FOP_DELETE, SET_RM_I_PROMPT, true, FOP_CONFIRM_EACH},
      {FOP_DELETE, SET_RM_I_NO_PROMPT | SET_RM1_PROMPT, true, FOP_DELETE_ALL},
      {FOP_DELETE, SET_RM_I_PROMPT_NOWR | SET_RM1_NO_PROMPT, true, 0},
      {FOP_DELETE, SET_RM_I_PROMPT | SET_RM1_NO_PROMPT, false, FOP_DELETE_ALL}};
  for (const auto& [kind, settings, several, flags] : rows)
    EXPECT_EQ(fop_derive_flags(kind, settings, several), flags) << std::hex << settings;
}
