#include "tests/engine/fop_run.h"
#include "tests/support/hostile_tree.h"

struct DeleteTest : FopTest {
  const std::string kAsk = "'\n|@&Skip|&Delete|de&Lete all|#&Abort";
  // Deletes the names in "from"; what was asked, and what is left there.
  std::string left_without(const Names& names, uint32_t flags = 0, const std::vector<int>& answers = {}) {
    go(FOP_DELETE, names, "", answers, flags);
    return asked + dir.listing("from");
  }
};

TEST_F(DeleteTest, TheDeepestGoesFirstAndIsTold) {
  dir.shell("cd from && mkdir -p d/e && echo 1 >d/e/f && ln -s gone d/l && mkfifo d/p && ln d/e/f g");
  EXPECT_EQ(left_without({"g", "d"}), "");
  ASSERT_TRUE(done.size() == 6 && items == 6);
  EXPECT_EQ(done[0] + " " + done[4] + " " + done[5], "from/d/e/f from/d from/g");
}

TEST_F(DeleteTest, QuestionsFollowFlagsAndAnswers) {
  const std::string unwriteable = "Delete|Unwriteable file 'from/r" + kAsk,
                    plain = "Delete|File 'from/w" + kAsk;
  const std::tuple<uint32_t, std::vector<int>, std::string> rows[] = {
      {0, {1}, unwriteable + "r "},
      {0, {2}, unwriteable},
      {0, {}, unwriteable + "abortedr w "},
      {FOP_DELETE_ALL, {}, ""},
      {FOP_CONFIRM_EACH, {2, 1}, unwriteable + plain + "w "},
      {FOP_CONFIRM_EACH, {3}, unwriteable}};
  for (const auto& [flags, answers, asked_and_left] : rows) {
    dir.shell("cd from && rm -f r w && echo 1 >r && chmod 444 r && echo 2 >w");
    EXPECT_EQ(left_without({"w", "r"}, flags, answers), asked_and_left);
  }
}

TEST_F(DeleteTest, WhatWasSkippedKeepsItsDirectoryAndAnEndTheRest) {
  const std::string make = "cd from; mkdir d; echo 1 >d/r; chmod 444 d/r; echo 2 >a";
  const std::string questions = "Delete|Unwriteable file 'from/d/r" + kAsk +
                                "Delete|Unable to delete 'from/d'\nDirectory not empty\n|@&Continue|#&Abort";
  check(make, FOP_DELETE, {"a", "d"}, "", 0, {1, 1}, "ls from from/d",
        questions + "from:\nd\n\nfrom/d:\nr\n");
  check(make, FOP_DELETE, {"a", "d"}, "", 0, {1, 2}, "ls from", questions + "aborteda\nd\n");
  dir.shell("rm -rf from/* && cd from && seq 300 | xargs touch");
  go(FOP_DELETE, {"1", "2", "3"}, "", {}, 0, [](fop_control& control, int) { control.cancel = 1; });
  EXPECT_TRUE(asked == "aborted" && path_exists(dir / "from/1"));
}

TEST_F(DeleteTest, NamesOfAnyBytesGoAndATreeDeeperThanAnyPath) {
  Names names = {"new\nline", "'quote\"", "-rf", " ", "\xff\xfe", std::string(255, 'n'), "*"};
  for (const std::string& name : names) write_file(dir / "from/" + name, "1");
  names.push_back("d");
  hostile_chain_make(dir / "from", 2500);
  EXPECT_EQ(left_without(names), "");
  EXPECT_EQ(items, 2507);
}

TEST_F(DeleteTest, ADirectorySwappedForALinkLeadsNowhere) {
  dir.shell(
      "mkdir -p from/d/e outside && echo 1 >from/d/e/f && echo precious >outside/f && cd from/d && "
      "seq 200 | xargs touch");
  bool swapped = false;
  go(FOP_DELETE, {"d"}, "", {1, 1, 1, 1}, 0, [&](fop_control&, int) {
    if (!swapped)
      swapped = run_shell("cd '" + dir.path() + "' && mv from/d/e was && ln -s ../../outside from/d/e") == 0;
  });
  EXPECT_TRUE(swapped && read_file(dir / "outside/f") == "precious\n") << asked;
}
