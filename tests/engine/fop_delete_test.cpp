#include "tests/engine/fop_run.h"

namespace {
struct DeleteTest : testing::Test {
  TempDir dir;
  FopRun run;
  void make(const std::string& script) { ASSERT_EQ(run_shell("cd '" + dir.path() + "' && " + script), 0); }
  FopRun remove(std::vector<std::string> names, uint32_t flags = 0, std::vector<int> answers = {}) {
    return FopRun{FOP_DELETE, dir.path(), std::move(names), "", flags, std::move(answers)};
  }
  std::string left() {
    std::string text;
    run_shell("cd '" + dir.path() + "' && find . -mindepth 1 | sort | tr '\\n' ' '", &text);
    return text;
  }
};
const std::string kAsk = "|@&Skip|&Delete|de&Lete all|#&Abort", kFailed = "|@&Continue|#&Abort";
}  // namespace

TEST_F(DeleteTest, TheDeepestGoesFirstAndIsTold) {
  make("mkdir -p d/e && echo 1 >d/e/f && ln -s gone d/l && mkfifo d/p && ln d/e/f g");
  run = remove({"g", "d"});
  fop_run(&run);
  EXPECT_TRUE(run.asked.empty());
  EXPECT_EQ(left(), "");
  ASSERT_EQ(run.done.size(), 6u);
  EXPECT_EQ(run.done[0], dir / "d/e/f");
  EXPECT_EQ(run.done[4], dir / "d");
  EXPECT_EQ(run.done[5], dir / "g");
  EXPECT_STREQ(run.shown.back().header, "Deleting");
  EXPECT_EQ(run.items, 6);
}

TEST_F(DeleteTest, QuestionsFollowFlagsAndAnswers) {
  struct Row {
    uint32_t flags;
    std::vector<int> answers;
    std::vector<std::string> asked;  // the path stands for '%'
    const char* left;
    bool aborted;
  };
  const std::string unwriteable = "Delete|Unwriteable file '%r'\n" + kAsk,
                    plain = "Delete|File '%w'\n" + kAsk;
  const Row rows[] = {
      {0, {1}, {unwriteable}, "./r ", false},
      {0, {2}, {unwriteable}, "", false},
      {0, {}, {unwriteable}, "./r ./w ", true},
      {FOP_DELETE_ALL, {}, {}, "", false},
      {FOP_CONFIRM_EACH, {2, 1}, {unwriteable, plain}, "./w ", false},
      {FOP_CONFIRM_EACH, {3}, {unwriteable}, "", false},
      {FOP_CONFIRM_EACH | FOP_DELETE_ALL, {}, {}, "", false},
  };
  for (const Row& row : rows) {
    make("rm -f r w; echo 1 >r && chmod 444 r && echo 2 >w");
    run = remove({"w", "r"}, row.flags, row.answers);
    fop_run(&run);
    std::vector<std::string> asked = row.asked;
    for (std::string& text : asked) text.replace(text.find('%'), 1, dir.path() + "/");
    EXPECT_EQ(run.asked, asked);
    EXPECT_EQ(left(), row.left);
    EXPECT_EQ(run.aborted, row.aborted);
  }
}

TEST_F(DeleteTest, WhatWasSkippedKeepsItsDirectory) {
  make("mkdir d && echo 1 >d/r && chmod 444 d/r && echo 2 >d/w");
  run = remove({"d"}, 0, {1, 1});
  fop_run(&run);
  EXPECT_EQ(run.asked, (std::vector<std::string>{"Delete|Unwriteable file '" + (dir / "d/r") + "'\n" + kAsk,
                                                 "Delete|Unable to delete '" + (dir / "d") +
                                                     "'\nDirectory not empty\n" + kFailed}));
  EXPECT_EQ(left(), "./d ./d/r ");
}

TEST_F(DeleteTest, ATreeOfAThousandLevelsGoes) {
  // Longer than any path the system takes at once.
  make(
      "python3 -c \"import os\nfor i in range(1000):\n os.mkdir('level-%04d' % i); os.chdir('level-%04d' % "
      "i)\n"
      "open('file','w')\"");
  run = remove({"level-0000"});
  fop_run(&run);
  EXPECT_TRUE(run.asked.empty()) << run.asked[0];
  EXPECT_EQ(left(), "");
}

TEST_F(DeleteTest, ADirectorySwappedForALinkLeadsNowhere) {
  make(
      "mkdir -p d/e outside && echo 1 >d/e/f && echo precious >outside/f && for i in $(seq 200); do echo "
      ">d/$i; done");
  run = remove({"d"}, 0, {1, 1, 1, 1});
  bool swapped = false;
  run.watch = [&](fop_control&, int) {
    if (!swapped)
      swapped = rename((dir / "d/e").c_str(), (dir / "was").c_str()) == 0 &&
                symlink((dir / "outside").c_str(), (dir / "d/e").c_str()) == 0;
  };
  fop_run(&run);
  EXPECT_TRUE(swapped);
  EXPECT_EQ(read_file(dir / "outside/f"), "precious\n");
}

TEST_F(DeleteTest, NamesOfAnyBytesGo) {
  const std::vector<std::string> names = {"new\nline",           "'quote\"", "-rf", " ", "\xff\xfe",
                                          std::string(255, 'n'), "*"};
  for (const std::string& name : names) write_file(dir / name, "1");
  run = remove(names);
  fop_run(&run);
  EXPECT_EQ(left(), "");
  EXPECT_EQ(run.items, static_cast<int>(names.size()));
}
