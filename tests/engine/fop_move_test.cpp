#include "tests/engine/fop_run.h"

namespace {
struct MoveTest : FopTest {
  OtherSystem other;
  std::string swapped_away(const std::string& tree) {
    return rename(tree.c_str(), (tree + ".was").c_str()) == 0 &&
                   symlink((dir / "outside").c_str(), tree.c_str()) == 0
               ? tree + ".was"
               : "";
  }
};
}  // namespace

TEST_F(MoveTest, OnOneFileSystemEveryItemIsRenamed) {
  dir.shell("cd from && mkdir d && echo 1 >d/f && echo 2 >f && ln -s gone l && mkfifo p && chmod 0 f");
  const std::string inode = dir.shell("stat -c %i from/d");
  go(FOP_MOVE, {"d", "f", "", "l", "p"}, dir / "to");
  EXPECT_TRUE(run.asked.empty());
  EXPECT_EQ(dir.listing("from") + "/ " + dir.listing("to"), "/ d d/f f l p ");
  EXPECT_EQ(dir.shell("stat -c %i to/d"), inode);
  EXPECT_EQ(run.done, (Names{dir / "from/d", dir / "from/f", dir / "from/l", dir / "from/p"}));
  EXPECT_EQ(run.items, 5);
}

TEST_F(MoveTest, TheFirstFinishedItemAnswersAllLaterQuestions) {
  const struct {
    int answer;
    const char *left, *moved;  // of a, b, c; what stands at the destination: n new, o old
    bool aborted;
  } rows[] = {{2, "", "nnn", false}, {1, "a ", "onn", false}, {4, "a b c ", "ooo", true}};
  for (const auto& row : rows) {
    dir.shell("rm -f from/* && for n in a b c; do echo n >from/$n; echo o >to/$n; done");
    go(FOP_MOVE, {"a", "b", "c"}, dir / "to", {row.answer});
    EXPECT_EQ(run.asked, Names{"Move|The '" + (dir / "to/a") + kConflict});
    EXPECT_EQ(dir.listing("from"), row.left) << row.answer;
    EXPECT_EQ(dir.shell("cat to/* | tr -d '\\n'"), row.moved) << row.answer;
    EXPECT_EQ(run.aborted, row.aborted);
  }
}

TEST_F(MoveTest, ADanglingLinkInTheWayIsAskedAboutAndAHardLinkGoes) {
  dir.shell("echo 1 >from/f && ln -s gone to/f && echo 2 >from/h && ln from/h to/h");
  go(FOP_MOVE, {"f"}, dir / "to", {4});
  EXPECT_EQ(run.asked.size(), 1u);
  go(FOP_MOVE, {"h"}, dir / "to", {2});
  EXPECT_EQ(dir.listing("from") + read_file(dir / "from/f") + read_file(dir / "to/h"), "f 1\n2\n");
}

TEST_F(MoveTest, BetweenFileSystemsTheCopiedSourcesGo) {
  SKIP_WITHOUT(other);
  dir.shell(
      "cd from && mkdir -p d/e && echo 1 >d/e/f && ln -s f d/e/l && mkfifo d/p && echo 2 >g && "
      "chmod 555 d && cp -a . ../copy");
  go(FOP_MOVE, {"d", "g"}, other.path, {2});
  EXPECT_EQ(run.asked.size(), 1u);
  EXPECT_EQ(dir.listing("from"), "");
  const std::string list =
      " && find d g -printf '%p %y %m %l %T@ ' \\( -type d -o -printf %s \\) -printf '\\n' | sort";
  EXPECT_EQ(dir.shell("cd '" + other.path + "'" + list), dir.shell("cd copy" + list));
  EXPECT_EQ(read_file(other / "d/e/f") + read_file(other / "g"), "1\n2\n");
}

TEST_F(MoveTest, WhatWasSkippedKeepsItsSourceAndAllElseGoes) {
  SKIP_WITHOUT(other);
  dir.shell("cd from && mkdir -p d/s z && for f in d/a d/b d/s/c z/k; do echo new >$f; done");
  dir.shell("mkdir -p '" + (other / "d/s") + "' && echo old >'" + (other / "d/s/c") + "'");
  // The move's own question about d and z, then the file's; the directories that hold it back come last.
  go(FOP_MOVE, {"d", "z"}, other.path, {2, 1, 1, 1});
  const std::string held = "Delete|Unable to delete '" + dir.path() + "/from/",
                    why = "'\nDirectory not empty\n|@&Continue|#&Abort";
  EXPECT_EQ(run.asked,
            (Names{"Move|The '" + (other / "d") + kConflict,
                   "Copy/Move|The '" + (other / "d/s/c") + kConflict, held + "d/s" + why, held + "d" + why}));
  EXPECT_EQ(dir.listing("from"), "d d/s d/s/c ");
  EXPECT_EQ(read_file(other / "d/s/c") + read_file(other / "d/b"), "old\nnew\n");
}

TEST_F(MoveTest, AnInterruptedMoveRemovesExactlyWhatIsComplete) {
  SKIP_WITHOUT(other);
  for (int percent : {5, 30, 55, 80, 95}) {
    dir.shell("rm -rf from all '" + (other / "d") +
              "' && mkdir -p from/d/e from/d/empty && cd from/d && "
              "for f in $(seq 10) e/1 e/2 e/3 e/4 e/5; do head -c 300000 /dev/urandom >$f; done; "
              "cp -a . ../../all");
    go(FOP_MOVE, {"d"}, other.path, {}, 0, [percent](fop_control& control, int now) {
      if (now >= percent) control.cancel = 1;
    });
    EXPECT_TRUE(run.aborted);
    EXPECT_TRUE(run.asked.empty()) << testing::PrintToString(run.asked);
    // Each file is whole at exactly one of the two places.
    const std::string places = dir.shell(
        "for f in $(cd all && find . -type f); do for d in from '" + other.path +
        "'; do [ ! -e $d/d/$f ] || { cmp -s all/$f $d/d/$f && echo $f || echo part; }; done; done | sort");
    EXPECT_EQ(places, dir.shell("cd all && find . -type f | sort")) << percent;
  }
}

TEST_F(MoveTest, ASourceThatChangedAfterItsCopyStays) {
  SKIP_WITHOUT(other);
  dir.shell("echo first >from/a && head -c 5000000 /dev/zero >from/b");
  go(FOP_MOVE, {"a", "b"}, other.path, {1}, 0, [this](fop_control&, int percent) {
    if (percent >= 50) write_file(dir / "from/a", "later");
  });
  EXPECT_EQ(run.asked, Names{"Delete|Unable to delete '" + (dir / "from/a") +
                             "'\nIt has changed since it was copied\n|@&Continue|#&Abort"});
  EXPECT_EQ(read_file(dir / "from/a"), "later");
  EXPECT_EQ(read_file(other / "a"), "first\n");
  EXPECT_FALSE(path_exists(dir / "from/b"));
}

TEST_F(MoveTest, NoItemReplacesAnotherOfTheSameOperation) {
  SKIP_WITHOUT(other);
  dir.shell("echo 1 >from/f && echo 2 >from/l && ln -s f '" + (other / "l") + "'");
  go(FOP_MOVE, {"f", "l"}, other.path, {1}, FOP_OVERWRITE_ALL);
  EXPECT_EQ(run.asked, Names{"Copy/Move|Error writing '" + (other / "l") +
                             "'\nAnother item of this operation is already there\n|&Continue|&Abort"});
  EXPECT_EQ(read_file(other / "f") + read_file(dir / "from/l"), "1\n2\n");
}

TEST_F(MoveTest, WhatALinkLedToIsNotRemoved) {
  SKIP_WITHOUT(other);
  dir.shell(
      "mkdir real && echo 1 >real/f && echo 2 >single && ln -s ../real from/ld && ln -s ../single from/lf");
  // A rename would move the links themselves; to another file system what they point to is copied.
  go(FOP_MOVE, {"ld", "lf"}, other.path, {}, FOP_FOLLOW_LINKS);
  EXPECT_TRUE(run.asked.empty());
  EXPECT_EQ(read_file(other / "ld/f") + read_file(other / "lf"), "1\n2\n");
  EXPECT_EQ(dir.listing("from"), "");
  EXPECT_EQ(read_file(dir / "real/f") + read_file(dir / "single"), "1\n2\n");
}

TEST_F(MoveTest, ADirectorySwappedForALinkLeadsNowhere) {
  SKIP_WITHOUT(other);
  for (const std::string& tree : {dir / "from/d", other / "d"}) {
    dir.shell("rm -rf from outside '" + other.path +
              "'/* && mkdir -p from/d outside && echo 1 | tee from/d/f >from/d/g && " +
              "head -c 3000000 /dev/zero >from/a && echo precious >outside/f");
    std::string away;
    go(FOP_MOVE, {"d", "a"}, other.path, {1, 1, 1, 1, 1}, 0, [&](fop_control&, int percent) {
      if (percent >= 30 && away.empty()) away = swapped_away(tree);
    });
    EXPECT_NE(away, "");
    EXPECT_FALSE(run.asked.empty());
    EXPECT_EQ(dir.listing("outside") + read_file(dir / "outside/f"), "f precious\n") << tree;
    EXPECT_EQ(read_file(tree == dir / "from/d" ? away + "/f" : dir / "from/d/f"), "1\n") << tree;
  }
}
