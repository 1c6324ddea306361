#include "tests/engine/fop_run.h"

using MoveTest = FopTest;
using MoveOverTest = OtherSystemTest;

TEST_F(MoveTest, OnOneFileSystemEveryItemIsRenamed) {
  dir.shell("cd from && mkdir d && echo 1 >d/f && echo 2 >f && ln -s gone l && mkfifo p && chmod 0 f");
  const std::string inode = dir.shell("stat -c %i from/d");
  go(FOP_MOVE, {"d", "f", "", "l", "p"}, "to");
  EXPECT_EQ(asked, Names());
  EXPECT_EQ(dir.listing("from") + "/ " + dir.listing("to") + dir.shell("stat -c %i to/d"),
            "/ d d/f f l p " + inode);
  EXPECT_EQ(done, (Names{"from/d", "from/f", "from/l", "from/p"}));
  EXPECT_EQ(items, 5);
}

TEST_F(MoveTest, TheFirstFinishedItemAnswersAllLaterQuestions) {
  const std::tuple<int, const char*, bool> rows[] = {
      {2, "to/a:n to/b:n to/c:n ", false},
      {1, "from/a:n to/a:o to/b:n to/c:n ", false},
      {4, "from/a:n from/b:n from/c:n to/a:o to/b:o to/c:o ", true}};
  for (const auto& [answer, places, aborted] : rows) {
    dir.shell("rm -f from/* && for n in a b c; do echo n >from/$n; echo o >to/$n; done");
    go(FOP_MOVE, {"a", "b", "c"}, "to", {answer});
    Names questions{conflict("Move", "to/a")};
    if (aborted) questions.push_back("aborted");
    EXPECT_EQ(asked, questions);
    EXPECT_EQ(dir.shell("grep -r '' from to | sort | tr '\\n' ' '"), places);
  }
}

TEST_F(MoveTest, ADanglingLinkInTheWayIsAskedAboutAndAHardLinkGoes) {
  dir.shell("echo 1 >from/f && ln -s gone to/f && echo 2 >from/h && ln from/h to/h");
  go(FOP_MOVE, {"f"}, "to", {4});
  EXPECT_EQ(asked.size(), 2u);
  go(FOP_MOVE, {"h"}, "to", {2});
  EXPECT_EQ(dir.listing("from") + read_file(dir / "from/f") + read_file(dir / "to/h"), "f 1\n2\n");
}

TEST_F(MoveOverTest, TheCopiedSourcesGo) {
  dir.shell(
      "cd from && mkdir -p d/e && echo 1 >d/e/f && ln -s f d/e/l && mkfifo d/p && echo 2 >g && "
      "chmod 555 d && cp -a . ../copy");
  go(FOP_MOVE, {"d", "g"}, "other", {2});
  EXPECT_EQ(asked.size(), 1u);
  EXPECT_EQ(dir.listing("from"), "");
  const std::string list =
      " && find d g -printf '%p %y %m %l %T@ ' \\( -type d -o -printf %s \\) -printf '\\n' | sort";
  EXPECT_EQ(dir.shell("cd other" + list), dir.shell("cd copy" + list));
  EXPECT_EQ(dir.shell("cat other/d/e/f other/g"), "1\n2\n");
}

TEST_F(MoveOverTest, WhatWasSkippedKeepsItsSourceAndAllElseGoes) {
  dir.shell(
      "mkdir -p from/d/s from/z other/d/s && cd from && for f in d/a d/b d/s/c z/k; do echo new >$f; done && "
      "echo old >../other/d/s/c");
  // The move's own question about d and z, then the file's; the directories that hold it back come last.
  go(FOP_MOVE, {"d", "z"}, "other", {2, 1, 1, 1});
  const std::string held = "Delete|Unable to delete 'from/",
                    why = "'\nDirectory not empty\n|@&Continue|#&Abort";
  EXPECT_EQ(asked, (Names{conflict("Move", "other/d"), conflict("Copy/Move", "other/d/s/c"),
                          held + "d/s" + why, held + "d" + why}));
  EXPECT_EQ(dir.listing("from") + dir.shell("cat other/d/s/c other/d/b"), "d d/s d/s/c old\nnew\n");
}

TEST_F(MoveOverTest, AnInterruptedMoveRemovesExactlyWhatIsComplete) {
  for (int percent : {5, 30, 55, 80, 95}) {
    dir.shell(
        "rm -rf from all other/d && mkdir -p from/d/e from/d/empty && cd from/d && "
        "for f in $(seq 10) e/1 e/2 e/3 e/4 e/5; do head -c 300000 /dev/urandom >$f; done; cp -a . "
        "../../all");
    go(FOP_MOVE, {"d"}, "other", {}, 0, [percent](fop_control& control, int now) {
      if (now >= percent) control.cancel = 1;
    });
    EXPECT_EQ(asked, Names{"aborted"});
    // Each file is whole at exactly one of the two places.
    EXPECT_EQ(
        dir.shell(
            "for f in $(cd all && find . -type f); do for d in from other; do "
            "[ ! -e $d/d/$f ] || { cmp -s all/$f $d/d/$f && echo $f || echo part; }; done; done | sort"),
        dir.shell("cd all && find . -type f | sort"))
        << percent;
  }
}

TEST_F(MoveOverTest, ASourceThatChangedAfterItsCopyStays) {
  dir.shell("echo first >from/a && head -c 5000000 /dev/zero >from/b");
  go(FOP_MOVE, {"a", "b"}, "other", {1}, 0, [this](fop_control&, int percent) {
    if (percent >= 50) write_file(dir / "from/a", "later");
  });
  EXPECT_EQ(asked, Names{"Delete|Unable to delete 'from/a'\nIt has changed since it was copied\n"
                         "|@&Continue|#&Abort"});
  EXPECT_EQ(dir.listing("from") + dir.shell("cat from/a other/a"), "a laterfirst\n");
}

TEST_F(MoveOverTest, NoItemReplacesAnotherOfTheSameOperation) {
  dir.shell("echo 1 >from/f && echo 2 >from/l && ln -s f other/l");
  go(FOP_MOVE, {"f", "l"}, "other", {1}, FOP_OVERWRITE_ALL);
  EXPECT_EQ(asked,
            Names{"Copy/Move|Error writing 'other/l'\nAnother item of this operation is already there\n"
                  "|&Continue|&Abort"});
  EXPECT_EQ(dir.shell("cat other/f from/l"), "1\n2\n");
}

TEST_F(MoveOverTest, WhatALinkLedToIsNotRemoved) {
  dir.shell(
      "mkdir real && echo 1 >real/f && echo 2 >single && ln -s ../real from/ld && ln -s ../single from/lf");
  // A rename would move the links themselves; to another file system what they point to is copied.
  go(FOP_MOVE, {"ld", "lf"}, "other", {}, FOP_FOLLOW_LINKS);
  EXPECT_EQ(asked, Names());
  EXPECT_EQ(dir.listing("from") + dir.shell("cat other/ld/f other/lf real/f single"), "1\n2\n1\n2\n");
}

TEST_F(MoveOverTest, ADirectorySwappedForALinkLeadsNowhere) {
  for (const std::string tree : {"from", "other"}) {
    dir.shell(
        "rm -rf from outside was other/* && mkdir -p from/d outside && echo 1 | tee from/d/f >from/d/g && "
        "head -c 3000000 /dev/zero >from/a && echo precious >outside/f");
    bool swapped = false;
    go(FOP_MOVE, {"d", "a"}, "other", {1, 1, 1, 1, 1}, 0, [&](fop_control&, int percent) {
      if (percent < 30 || swapped) return;
      swapped = run_shell("cd '" + dir.path() + "'; cd " + tree + " && mv d was && ln -s '" +
                          (dir / "outside") + "' d") == 0;
    });
    EXPECT_TRUE(swapped);
    EXPECT_FALSE(asked.empty());
    EXPECT_EQ(dir.listing("outside") + read_file(dir / "outside/f"), "f precious\n") << tree;
    EXPECT_EQ(read_file(dir / (tree == "from" ? "from/was/f" : "from/d/f")), "1\n") << tree;
  }
}
