#include <gtest/gtest.h>

#include "core/settings.h"
#include "fileops/fop.h"
#include "fileops/fop_progress.h"

TEST(FopParts, TimeLeftFollowsTheRateAndReadsAsText) {
  fop_request request;
  EXPECT_EQ(fop_calc_time_left(&request, 0, 100), -1);
  request.start_time.tv_sec -= 1000;
  EXPECT_NEAR(fop_calc_time_left(&request, 50, 100), 1001, 100);
  EXPECT_EQ(fop_calc_time_left(&request, 0, 100), INT32_MAX);
  const std::pair<int, const char*> rows[] = {{-1, " "}, {59, "59 seconds"},      {60, "1:00 minutes"},
                                              {0, " "},  {3599, "59:59 minutes"}, {7384, "2:03 hours"}};
  for (const auto& [seconds, text] : rows) EXPECT_EQ(fop_time_text(seconds), text);
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
