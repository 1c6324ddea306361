#include "tests/engine/fop_run.h"

using MoveTest = FopTest;
using MoveOverTest = OtherSystemTest;

TEST_F(MoveTest, OnOneFileSystemEveryItemIsRenamed) {
  dir.shell("cd from && mkdir d && echo 1 >d/f && echo 2 >f && ln -s gone l && mkfifo p && chmod 0 f");
  const std::string inode = dir.shell("stat -c %i from/d");
  go(FOP_MOVE, {"d", "f", "", "l", "p"}, "to");
  EXPECT_EQ(asked + dir.listing("from") + dir.listing("to") + dir.shell("stat -c %i to/d"),
            "d d/f f l p " + inode);
  EXPECT_EQ(done, (Names{"from/d", "from/f", "from/l", "from/p"}));
  EXPECT_EQ(items, 5);
}

TEST_F(MoveTest, TheFirstFinishedItemAnswersAllLaterQuestions) {
  const std::pair<int, const char*> rows[] = {{2, "to/a:n to/b:n to/c:n "},
                                              {1, "from/a:n to/a:o to/b:n to/c:n "},
                                              {4, "abortedfrom/a:n from/b:n from/c:n to/a:o to/b:o to/c:o "}};
  for (const auto& [answer, places] : rows) {
    dir.shell("rm -f from/* && for n in a b c; do echo n >from/$n; echo o >to/$n; done");
    go(FOP_MOVE, {"a", "b", "c"}, "to", {answer});
    const std::string found = dir.shell("grep -r '' from to | sort | tr '\\n' ' '");
    EXPECT_EQ(asked + found, conflict("Move", "to/a") + places);
  }
}

static const char kTaken[] = "'\nAnother item of this operation is already there\n|&Continue|&Abort";

TEST_F(MoveTest, WhatIsInTheWayIsAskedAboutAHardLinkGoesAndNoOtherItem) {
  check("echo 1 >from/f; ln -s gone to/f", FOP_MOVE, {"f"}, "to", 0, {4}, "cat from/f",
        conflict("Move", "to/f") + "aborted1\n");
  check("echo 2 >from/h; ln from/h to/h", FOP_MOVE, {"h"}, "to", 0, {2}, "ls from; cat to/h",
        conflict("Move", "to/h") + "2\n");
  check("echo 1 >from/f; ln from/f to/l; echo 2 >from/l", FOP_MOVE, {"f", "l"}, "to", FOP_OVERWRITE_ALL, {1},
        "cat from/l to/f to/l", std::string("Copy/Move|Error writing 'to/l") + kTaken + "2\n1\n1\n");
}

TEST_F(MoveOverTest, TheCopiedSourcesGo) {
  dir.shell("cd from && mkdir -p d/e && echo 1 >d/e/.f && ln -s f d/e/l && mkfifo d/p && echo 2 >g");
  dir.shell("cd from && chmod 555 d && cp -a . ../copy");
  go(FOP_MOVE, {"d", "g"}, "other", {2});
  EXPECT_TRUE(asked.starts_with("Move|Symbolic links detected")) << asked;
  const std::string size = "\\( -type d -o -printf %s \\)",
                    list = " && find d g -printf '%p %y %m %l %T@ ' " + size +
                           " -printf '\\n' | sort; cat d/e/.f g";
  EXPECT_EQ(dir.listing("from") + dir.shell("cd other" + list), dir.shell("cd copy" + list));
}

TEST_F(MoveOverTest, WhatWasNotCopiedStaysAndWhatALinkLedTo) {
  const std::string held = "Delete|Unable to delete 'from/",
                    why = "'\nDirectory not empty\n|@&Continue|#&Abort";
  // The move's own question about d and z, then the file's; the directories that hold it back come last.
  check(
      "mkdir -p from/d/s from/z other/d/s; cd from; for f in d/a d/b d/s/c z/k; do echo new >$f; done; "
      "echo old >../other/d/s/c",
      FOP_MOVE, {"d", "z"}, "other", 0, {2, 1, 1, 1}, "find from/* | sort; cat other/d/s/c other/d/b",
      conflict("Move", "other/d") + conflict("Copy/Move", "other/d/s/c") + held + "d/s" + why + held + "d" +
          why + "from/d\nfrom/d/s\nfrom/d/s/c\nold\nnew\n");
  check("echo 1 >from/f; echo 2 >from/l; ln -s f other/l", FOP_MOVE, {"f", "l"}, "other", FOP_OVERWRITE_ALL,
        {1}, "cat other/f from/l", std::string("Copy/Move|Error writing 'other/l") + kTaken + "1\n2\n");
  // A rename would move the links themselves; to another file system what they point to is copied.
  check(
      "mkdir -p real/sub; echo 1 | tee real/f >real/sub/g; echo 2 >single; ln -s ../real from/ld; ln -s "
      "../single from/lf",
      FOP_MOVE, {"ld", "lf"}, "other", FOP_FOLLOW_LINKS, {},
      "ls from; cat other/ld/f other/ld/sub/g other/lf real/f real/sub/g single", "1\n1\n2\n1\n1\n2\n");
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
    EXPECT_EQ(asked, "aborted");
    // Each file is whole at exactly one of the two places.
    const std::string whole = "[ ! -e $d/d/$f ] || { cmp -s all/$f $d/d/$f && echo $f || echo part; }";
    EXPECT_EQ(dir.shell("for f in $(cd all; find . -type f); do for d in from other; do " + whole +
                        "; done; done | sort"),
              dir.shell("cd all && find . -type f | sort"));
  }
}

// Its size, its time and its number tell.
TEST_F(MoveOverTest, ASourceThatChangedAfterItsCopyStays) {
  const std::string told =
      "Delete|Unable to delete 'from/a'\nIt has changed since it was copied\n|@&Continue|#&Abort";
  for (const std::string change :
       {"echo later >>a; touch -d @1 a", "echo 5sign >a", "echo other >n; touch -d @1 n; mv n a"}) {
    dir.shell("rm -f other/* && cd from && echo first >a && touch -d @1 a && head -c 5000000 /dev/zero >b");
    go(FOP_MOVE, {"a", "b"}, "other", {1}, 0, [&](fop_control&, int percent) {
      if (percent >= 50 && read_file(dir / "from/a") == "first\n") run_shell("cd '" + from + "'; " + change);
    });
    EXPECT_EQ(asked + dir.shell("ls from; cat other/a"), told + "a\nfirst\n") << change;
  }
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
    EXPECT_TRUE(swapped && !asked.empty());
    EXPECT_EQ(dir.listing("outside") +
                  dir.shell("cat outside/f from/" + std::string(tree == "from" ? "was/f" : "d/f")),
              "f precious\n1\n")
        << tree;
  }
}
