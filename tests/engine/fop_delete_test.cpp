#include "tests/engine/fop_run.h"
#include "tests/support/hostile_tree.h"

namespace {
struct DeleteTest : FopTest {
  // Deletes the names in "from"; what is left there.
  std::string left_without(Names names, uint32_t flags = 0, std::vector<int> answers = {}) {
    go(FOP_DELETE, std::move(names), "", std::move(answers), flags);
    return dir.listing("from");
  }
};
const std::string kAsk = "|@&Skip|&Delete|de&Lete all|#&Abort", kFailed = "|@&Continue|#&Abort";
}  // namespace

TEST_F(DeleteTest, TheDeepestGoesFirstAndIsTold) {
  dir.shell("cd from && mkdir -p d/e && echo 1 >d/e/f && ln -s gone d/l && mkfifo d/p && ln d/e/f g");
  EXPECT_EQ(left_without({"g", "d"}), "");
  EXPECT_TRUE(run.asked.empty());
  ASSERT_EQ(run.done.size(), 6u);
  EXPECT_EQ(run.done[0], dir / "from/d/e/f");
  EXPECT_EQ(run.done[4], dir / "from/d");
  EXPECT_EQ(run.done[5], dir / "from/g");
  EXPECT_EQ(run.items, 6);
}

TEST_F(DeleteTest, QuestionsFollowFlagsAndAnswers) {
  const std::string unwriteable = "Delete|Unwriteable file '" + (dir / "from/r") + "'\n" + kAsk,
                    plain = "Delete|File '" + (dir / "from/w") + "'\n" + kAsk;
  const struct {
    uint32_t flags;
    std::vector<int> answers;
    Names asked;
    const char* left;
    bool aborted;
  } rows[] = {
      {0, {1}, {unwriteable}, "r ", false},
      {0, {2}, {unwriteable}, "", false},
      {0, {}, {unwriteable}, "r w ", true},
      {FOP_DELETE_ALL, {}, {}, "", false},
      {FOP_CONFIRM_EACH, {2, 1}, {unwriteable, plain}, "w ", false},
      {FOP_CONFIRM_EACH, {3}, {unwriteable}, "", false},
  };
  for (const auto& row : rows) {
    dir.shell("cd from && rm -f r w && echo 1 >r && chmod 444 r && echo 2 >w");
    EXPECT_EQ(left_without({"w", "r"}, row.flags, row.answers), row.left);
    EXPECT_EQ(run.asked, row.asked);
    EXPECT_EQ(run.aborted, row.aborted);
  }
}

TEST_F(DeleteTest, WhatWasSkippedKeepsItsDirectory) {
  dir.shell("cd from && mkdir d && echo 1 >d/r && chmod 444 d/r && echo 2 >d/w");
  EXPECT_EQ(left_without({"d"}, 0, {1, 1}), "d d/r ");
  EXPECT_EQ(run.asked,
            (Names{"Delete|Unwriteable file '" + (dir / "from/d/r") + "'\n" + kAsk,
                   "Delete|Unable to delete '" + (dir / "from/d") + "'\nDirectory not empty\n" + kFailed}));
}

TEST_F(DeleteTest, NamesOfAnyBytesGoAndATreeDeeperThanAnyPath) {
  Names names = {"new\nline", "'quote\"", "-rf", " ", "\xff\xfe", std::string(255, 'n'), "*"};
  for (const std::string& name : names) write_file(dir / "from/" + name, "1");
  names.push_back("d");
  hostile_chain_make(dir / "from", 2500);
  EXPECT_EQ(left_without(names), "");
  EXPECT_TRUE(run.asked.empty());
  EXPECT_EQ(run.items, 2507);
}

TEST_F(DeleteTest, ADirectorySwappedForALinkLeadsNowhere) {
  dir.shell("mkdir -p from/d/e outside && echo 1 >from/d/e/f && echo precious >outside/f");
  dir.shell("cd from/d && seq 200 | xargs touch");
  bool swapped = false;
  go(FOP_DELETE, {"d"}, "", {1, 1, 1, 1}, 0, [&](fop_control&, int) {
    if (!swapped)
      swapped = rename((dir / "from/d/e").c_str(), (dir / "was").c_str()) == 0 &&
                symlink((dir / "outside").c_str(), (dir / "from/d/e").c_str()) == 0;
  });
  EXPECT_TRUE(swapped);
  EXPECT_EQ(read_file(dir / "outside/f"), "precious\n");
}
