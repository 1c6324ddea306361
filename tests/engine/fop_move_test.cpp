#include "tests/engine/fop_run.h"

namespace {
struct MoveTest : testing::Test {
  TempDir dir;
  OtherSystem other;
  void SetUp() override {
    mkdir((dir / "from").c_str(), 0755);
    mkdir((dir / "to").c_str(), 0755);
  }
  FopRun move(std::vector<std::string> names, const std::string& to, std::vector<int> answers = {}) {
    return FopRun{FOP_MOVE, dir / "from", std::move(names), to, 0, std::move(answers)};
  }
  std::string listing(const std::string& path) {
    std::string text;
    run_shell("cd '" + path + "' && find . | sort | tr '\\n' ' '", &text);
    return text;
  }
  void make(const std::string& script) { ASSERT_EQ(run_shell("cd '" + dir.path() + "' && " + script), 0); }
};
const std::string kConflict = "&Skip|&Overwrite|Overwrite &All|a&Bort";
}  // namespace

TEST_F(MoveTest, OnOneFileSystemEveryItemIsRenamed) {
  make(
      "mkdir from/d && echo 1 >from/d/f && echo 2 >from/f && ln -s gone from/l && mkfifo from/p && chmod 0 "
      "from/f");
  struct stat before, after;
  stat((dir / "from/d").c_str(), &before);
  FopRun run = move({"d", "f", "", "l", "p"}, dir / "to");
  fop_run(&run);
  EXPECT_TRUE(run.asked.empty());
  EXPECT_FALSE(run.aborted);
  EXPECT_EQ(listing(dir / "to"), ". ./d ./d/f ./f ./l ./p ");
  EXPECT_EQ(listing(dir / "from"), ". ");
  stat((dir / "to/d").c_str(), &after);
  EXPECT_EQ(before.st_ino, after.st_ino);
  const std::string from = dir / "from";
  EXPECT_EQ(run.done, (std::vector<std::string>{from + "/d", from + "/f", from + "/l", from + "/p"}));
  EXPECT_EQ(run.items, 5);
}

TEST_F(MoveTest, TheFirstFinishedItemAnswersAllLaterQuestions) {
  struct Row {
    std::vector<int> answers;
    size_t questions;
    std::string from, to;  // contents of a, b, c: n new, o old, - none
    bool aborted;
  };
  const Row rows[] = {{{2}, 1, "---", "nnn", false},
                      {{1}, 1, "n--", "onn", false},
                      {{3}, 1, "---", "nnn", false},
                      {{4}, 1, "nnn", "ooo", true}};
  for (const Row& row : rows) {
    make("for n in a b c; do echo n >from/$n; echo o >to/$n; done");
    FopRun run = move({"a", "b", "c"}, dir / "to", row.answers);
    fop_run(&run);
    ASSERT_EQ(run.asked.size(), row.questions);
    EXPECT_EQ(run.asked[0],
              "Move|The '" + (dir / "to/a") + "' file exists.\nWhat do you want to do ?\n|" + kConflict);
    std::string from, to;
    for (const char* name : {"a", "b", "c"}) {
      from += (read_file(dir / "from/" + name) + "-")[0];
      to += (read_file(dir / "to/" + name) + "-")[0];
    }
    EXPECT_EQ(from, row.from) << row.answers[0];
    EXPECT_EQ(to, row.to) << row.answers[0];
    EXPECT_EQ(run.aborted, row.aborted);
  }
}

TEST_F(MoveTest, ADanglingLinkInTheWayIsAskedAboutAndAHardLinkGoes) {
  make("echo 1 >from/f && ln -s gone to/f && echo 2 >from/h && ln from/h to/h");
  FopRun run = move({"f"}, dir / "to", {4});
  fop_run(&run);
  EXPECT_EQ(run.asked.size(), 1u);
  EXPECT_EQ(read_file(dir / "from/f"), "1\n");
  run = move({"h"}, dir / "to", {2});
  fop_run(&run);
  EXPECT_FALSE(path_exists(dir / "from/h"));
  EXPECT_EQ(read_file(dir / "to/h"), "2\n");
}

TEST_F(MoveTest, BetweenFileSystemsTheCopiedSourcesGo) {
  SKIP_WITHOUT(other);
  make(
      "mkdir -p from/d/e && echo 1 >from/d/e/f && ln -s f from/d/e/l && mkfifo from/d/p && echo 2 >from/g && "
      "chmod 555 from/d && cp -a from copy");
  FopRun run = move({"d", "g"}, other.path(), {2});
  fop_run(&run);
  EXPECT_EQ(run.asked.size(), 1u);
  EXPECT_EQ(listing(dir / "from"), ". ");
  std::string moved, original;
  const std::string list =
      " && find d g -type d -printf '%p %m %T@\\n' -o -printf '%p %y %m %s %l %T@\\n' | sort";
  run_shell("cd '" + other.path() + "'" + list, &moved);
  run_shell("cd '" + (dir / "copy") + "'" + list, &original);
  EXPECT_EQ(moved, original);
  EXPECT_EQ(read_file(other / "d/e/f") + read_file(other / "g"), "1\n2\n");
}

TEST_F(MoveTest, WhatWasSkippedKeepsItsSourceAndAllElseGoes) {
  SKIP_WITHOUT(other);
  make("mkdir -p from/d/s from/z && for f in a b s/c; do echo new >from/d/$f; done; echo 1 >from/z/k");
  mkdir((other / "d").c_str(), 0755);
  write_file(other / "d/b", "old");
  // The move's own question about d and z, then the file's; the directory that holds it back comes last.
  FopRun run = move({"d", "z"}, other.path(), {2, 1});
  fop_run(&run);
  ASSERT_EQ(run.asked.size(), 3u);
  EXPECT_EQ(run.asked[0].substr(0, 5), "Move|");
  EXPECT_EQ(run.asked[1].substr(0, 10), "Copy/Move|");
  EXPECT_EQ(run.asked[2],
            "Delete|Unable to delete '" + (dir / "from/d") + "'\nDirectory not empty\n|@&Continue|#&Abort");
  EXPECT_EQ(listing(dir / "from"), ". ./d ./d/b ");
  EXPECT_EQ(read_file(other / "d/b") + read_file(other / "d/s/c"), "oldnew\n");
}

TEST_F(MoveTest, AnInterruptedMoveRemovesExactlyWhatIsComplete) {
  SKIP_WITHOUT(other);
  for (int percent : {5, 30, 55, 80, 95}) {
    make(
        "rm -rf from && mkdir -p from/d/e from/d/empty && for i in 0 1 2 3 4 5 6 7 8 9; do "
        "head -c 300000 /dev/urandom >from/d/$i; head -c 300000 /dev/urandom >from/d/e/$i; done; cp -a "
        "from/d all");
    run_shell("rm -rf '" + (other / "d") + "'");
    FopRun run = move({"d"}, other.path());
    run.watch = [percent](fop_control& control, int now) {
      if (now >= percent) control.cancel = 1;
    };
    fop_run(&run);
    EXPECT_TRUE(run.aborted);
    EXPECT_TRUE(run.asked.empty()) << testing::PrintToString(run.asked);
    // Each file is whole at exactly one of the two places.
    std::string found;
    run_shell("cd '" + dir.path() +
                  "' && for f in $(cd all && find . -type f); do a=0; b=0; "
                  "[ -e from/d/$f ] && cmp -s all/$f from/d/$f && a=1; "
                  "[ -e '" +
                  other.path() + "'/d/$f ] && b=2 && { cmp -s all/$f '" + other.path() +
                  "'/d/$f || b=9; }; "
                  "echo $((a+b)); done | sort | uniq | tr '\\n' ' '; rm -rf all",
              &found);
    EXPECT_EQ(found, "1 2 ") << percent;
  }
}

TEST_F(MoveTest, ASourceThatChangedAfterItsCopyStays) {
  SKIP_WITHOUT(other);
  make("echo first >from/a && head -c 5000000 /dev/zero >from/b");
  FopRun run = move({"a", "b"}, other.path(), {1});
  run.watch = [this](fop_control&, int percent) {
    if (percent >= 50) write_file(dir / "from/a", "later");
  };
  fop_run(&run);
  EXPECT_EQ(run.asked,
            std::vector<std::string>{"Delete|Unable to delete '" + (dir / "from/a") +
                                     "'\nIt has changed since it was copied\n|@&Continue|#&Abort"});
  EXPECT_EQ(read_file(dir / "from/a"), "later");
  EXPECT_EQ(read_file(other / "a"), "first\n");
  EXPECT_FALSE(path_exists(dir / "from/b"));
}

TEST_F(MoveTest, NoItemReplacesAnotherOfTheSameOperation) {
  SKIP_WITHOUT(other);
  make("echo 1 >from/f && echo 2 >from/l");
  symlink("f", (other / "l").c_str());
  FopRun run = move({"f", "l"}, other.path(), {1});
  run.flags = FOP_OVERWRITE_ALL;
  fop_run(&run);
  EXPECT_EQ(run.asked, std::vector<std::string>{"Copy/Move|Error writing '" + (other / "l") +
                                                "'\nAnother item of this operation is already "
                                                "there\n|&Continue|&Abort"});
  EXPECT_EQ(read_file(other / "f") + read_file(dir / "from/l"), "1\n2\n");
}

TEST_F(MoveTest, WhatALinkLedToIsNotRemoved) {
  SKIP_WITHOUT(other);
  make("mkdir real && echo 1 >real/f && echo 2 >single && ln -s ../real from/ld && ln -s ../single from/lf");
  FopRun run = move({"ld", "lf"}, other.path());
  run.flags = FOP_FOLLOW_LINKS;
  // A rename would move the links themselves; to another file system what they point to is copied.
  fop_run(&run);
  EXPECT_TRUE(run.asked.empty());
  EXPECT_EQ(read_file(other / "ld/f") + read_file(other / "lf"), "1\n2\n");
  EXPECT_EQ(listing(dir / "from"), ". ");
  EXPECT_EQ(read_file(dir / "real/f") + read_file(dir / "single"), "1\n2\n");
}

TEST_F(MoveTest, ADirectorySwappedForALinkLeadsNowhere) {
  SKIP_WITHOUT(other);
  for (const char* side : {"source", "destination"}) {
    make(
        "rm -rf from outside && mkdir -p from/d outside && head -c 3000000 /dev/zero >from/a && echo 1 "
        ">from/d/f && "
        "echo precious >outside/f");
    run_shell("rm -rf '" + other.path() + "'/*");
    FopRun run = move({"d", "a"}, other.path(), {1, 1, 1, 1, 1});
    const std::string tree = side[0] == 's' ? dir / "from/d" : other / "d";
    bool swapped = false;
    run.watch = [&](fop_control&, int percent) {
      if (percent < 30 || swapped) return;
      swapped = rename(tree.c_str(), (tree + ".was").c_str()) == 0 &&
                symlink((dir / "outside").c_str(), tree.c_str()) == 0;
    };
    fop_run(&run);
    EXPECT_TRUE(swapped);
    EXPECT_FALSE(run.asked.empty());
    EXPECT_EQ(listing(dir / "outside"), ". ./f ") << side;
    EXPECT_EQ(read_file(dir / "outside/f"), "precious\n") << side;
    EXPECT_EQ(read_file(side[0] == 's' ? dir / "from/d.was/f" : dir / "from/d/f"), "1\n") << side;
  }
}
