#include <gtest/gtest.h>

#include <cstdlib>
#include <cstring>

#include "core/settings.h"
#include "fileops/alloc_list.h"
#include "fileops/fop.h"
#include "fileops/fop_path.h"
#include "fileops/fop_progress.h"

TEST(AllocList, GrowsByStepsAndResizesInPlace) {
  alloc_list* list = alloc_start();
  ASSERT_NE(list, nullptr);
  EXPECT_EQ(list->capacity, 1024);
  for (int i = 0; i < 1024; ++i) alloc_add(list, std::malloc(8));
  EXPECT_EQ(list->capacity, 1024);
  void* last = alloc_add(list, std::malloc(8));
  EXPECT_EQ(list->capacity, 2048);
  EXPECT_EQ(list->count, 1025);
  std::memcpy(last, "content", 8);
  void* resized = alloc_realloc(list, last, 1 << 20);
  EXPECT_EQ(list->items[1024], resized);
  EXPECT_STREQ(static_cast<char*>(resized), "content");
  void* strange = std::malloc(8);
  EXPECT_EQ(alloc_realloc(list, strange, 100), strange);  // only registered
  EXPECT_EQ(list->count, 1026);
  EXPECT_EQ(alloc_add(list, nullptr), nullptr);
  EXPECT_EQ(list->count, 1026);
  alloc_free(list);
  alloc_free(nullptr);
}

TEST(FopParts, PathsJoinWithOneSlash) {
  const char* rows[][3] = {{"/", "a", "/a"},      {"/d", "a", "/d/a"},  {"/d/", "a", "/d/a"},
                           {"/d/", "/a", "/d/a"}, {"/d", "/a", "/d/a"}, {"/d", "", "/d"},
                           {"/d/", "", "/d"},     {"/", "", "/"},       {"/d", "a/", "/d/a"}};
  for (const auto& [dir, name, path] : rows) EXPECT_EQ(_build_path(dir, name), path) << dir << " + " << name;
}

TEST(FopParts, LinesAreShortenedAtADirectory) {
  const auto shortened = [](std::string line) {
    line.resize(line.size() + 3);
    return std::string(fop_shorten_line(line.data()));
  };
  const std::string part = "/twenty_characters_00";  // 21
  const std::string path = part + part + part + part;
  EXPECT_EQ(shortened("From: " + path), "From: /*" + part + part);
  EXPECT_EQ(shortened("  To: /short"), "  To: /short");
  EXPECT_EQ(shortened("From: /" + std::string(53, 'x')), "From: /" + std::string(53, 'x'));  // 60 characters
  EXPECT_EQ(shortened(std::string(80, 'n')), std::string(80, 'n'));
  EXPECT_EQ(shortened("From: /" + std::string(90, 'x')), "From: /" + std::string(90, 'x'));  // no later '/'
  EXPECT_EQ(shortened("a/" + path), "a//*" + part + part);  // without ':' from the third character on
}

TEST(FopParts, TimeLeftReadsAsText) {
  const std::pair<int, const char*> rows[] = {{-1, " "},
                                              {0, " "},
                                              {59, "59 seconds"},
                                              {60, "1:00 minutes"},
                                              {3599, "59:59 minutes"},
                                              {3600, "1:00 hours"},
                                              {7384, "2:03 hours"}};
  for (const auto& [seconds, text] : rows) EXPECT_EQ(fop_time_text(seconds), text);
}

TEST(FopParts, TimeLeftFollowsTheRate) {
  fop_request request;
  EXPECT_EQ(fop_calc_time_left(&request, 0, 100), -1);
  request.start_time.tv_sec -= 10;
  EXPECT_NEAR(fop_calc_time_left(&request, 50, 100), 11, 1);
  EXPECT_EQ(fop_calc_time_left(&request, 0, 100), INT32_MAX);
  request.start_time.tv_sec += 20;  // a start that is still to come
  EXPECT_EQ(fop_calc_time_left(&request, 50, 100), -2);
}

TEST(FopParts, FlagsFollowTheSettings) {
  struct Row {
    int kind;
    uint32_t settings;
    bool several;
    uint32_t flags;
  };
  const Row rows[] = {
      {FOP_COPY, 0x925, true, 0},
      {FOP_COPY, SET_OVERWRITE | SET_SYM_SYMLINKS | SET_RM1_NO_PROMPT | SET_RM_I_PROMPT, true,
       FOP_OVERWRITE_ALL | FOP_COPY_LINKS},
      {FOP_MOVE, SET_SYM_FILES, false, FOP_FOLLOW_LINKS},
      {FOP_DELETE, SET_RM_I_PROMPT, true, FOP_CONFIRM_EACH},
      {FOP_DELETE, SET_RM_I_NO_PROMPT | SET_RM1_PROMPT, true, FOP_DELETE_ALL},
      {FOP_DELETE, SET_RM_I_PROMPT_NOWR | SET_RM1_NO_PROMPT, true, 0},
      {FOP_DELETE, SET_RM_I_PROMPT | SET_RM1_NO_PROMPT, false, FOP_DELETE_ALL},
      {FOP_DELETE, SET_RM_I_NO_PROMPT | SET_RM1_PROMPT, false, 0},
  };
  for (const Row& row : rows)
    EXPECT_EQ(fop_derive_flags(row.kind, row.settings, row.several), row.flags) << std::hex << row.settings;
}

TEST(FopParts, ARequestWithoutItsPartsIsRefused) {
  const fop_info info;
  for (int row = 0; row < 3; ++row) {
    errno = 0;
    const std::vector<std::string> names =
        row == 0 ? std::vector<std::string>() : std::vector<std::string>{"x"};
    EXPECT_EQ(fop(FOP_COPY, row == 1 ? nullptr : "/", names, row == 2 ? nullptr : "/", 0, info, {}), nullptr);
    EXPECT_EQ(errno, EINVAL) << row;
  }
}
