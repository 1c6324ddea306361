// Faults that really happen: a disk that fills up, sources that change or read wrongly while they are copied.
#include <fcntl.h>
#include <sys/mount.h>

#include "tests/engine/fop_run.h"
#include "tests/support/slow_mount.h"

using FaultTest = FopTest;

TEST_F(FaultTest, AFullDiskIsRetriedSkippedOrAborted) {
  const std::string big = dir / "to/big", full = "'\nNo space left on device\n|";
  const std::string question = "Write error|Unable to write '" + big + full + "&Retry|&Skip|&Abort",
                    told = "Copy/Move|Error writing '" + big + full + "&Continue|&Abort";
  const struct {
    int answer;
    Names asked;
    bool whole, other_copied, aborted;
  } rows[] = {{1, {question}, true, true, false},
              {2, {question, told}, false, true, false},
              {3, {question}, false, false, true}};
  dir.shell("head -c 6000000 /dev/urandom >from/big && echo small >from/other");
  for (const auto& row : rows)
    for (const std::string before : {"", "old\n"}) {
      SCOPED_TRACE(row.answer);
      if (mount("none", (dir / "to").c_str(), "tmpfs", 0, "size=8m") != 0) GTEST_SKIP() << "cannot mount";
      dir.shell("cd to && head -c 4000000 /dev/zero >filler");
      if (!before.empty()) write_file(big, before);
      run = FopRun{FOP_COPY, dir / "from", {"big", "other"}, dir / "to", FOP_OVERWRITE_ALL};
      run.on_alert = [&](TerminalAlert& alert) {
        alert.answer = alert.title == "Write error" ? row.answer : 1;
        if (row.answer == 1) unlink((dir / "to/filler").c_str());
      };
      fop_run(&run);
      EXPECT_EQ(run.asked, row.asked);
      if (row.whole)
        dir.shell("cmp from/big to/big");
      else
        EXPECT_EQ(read_file(big), before) << "a part is left, or the old file is not whole";
      EXPECT_EQ(path_exists(dir / "to/other"), row.other_copied);
      EXPECT_EQ(run.aborted, row.aborted);
      umount2((dir / "to").c_str(), MNT_DETACH);
    }
}

TEST_F(FaultTest, ASourceThatChangesIsCopiedWholeOrReported) {
  const std::pair<const char*, bool> rows[] = {{"truncate -s 1000 src", true},
                                               {"head -c 700001 /dev/urandom >>src", false},
                                               {"rm src && echo other >src", false},
                                               {"mv src moved", false},
                                               {"truncate -s +60M src", false}};
  for (const auto& [change, reported] : rows) {
    SCOPED_TRACE(change);
    dir.shell("rm -f from/* to/* && head -c 5000000 /dev/urandom >from/src");
    const int held = open((dir / "from/src").c_str(), O_RDONLY);
    bool changed = false;
    go(FOP_COPY, {"src"}, dir / "to", {1}, 0, [&, change = change](fop_control&, int percent) {
      if (percent < 50 || percent == 100 || changed) return;
      changed = run_shell("cd '" + (dir / "from") + "' && " + change) == 0;
    });
    EXPECT_TRUE(changed);
    const Names asked{"Copy/Move|Error reading '" + (dir / "from/src") +
                      "'\nIts size has changed\n|&Continue|&Abort"};
    EXPECT_EQ(run.asked, reported ? asked : Names());
    if (reported)
      EXPECT_FALSE(path_exists(dir / "to/src"));
    else
      dir.shell("cmp /proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(held) + " to/src");
    close(held);
  }
}

TEST_F(FaultTest, WhatReadsWronglyIsReported) {
  SlowMount mount("faulty", 0);
  if (!mount.mounted()) GTEST_SKIP() << "no FUSE file system can be mounted here";
  run = FopRun{FOP_COPY, mount.path(), {"entry00", "entry02", "entry01", "entry03"}, dir / "to", 0, {1, 1}};
  fop_run(&run);
  const std::string reading = "Copy/Move|Error reading '" + mount.path() + "/entry0";
  EXPECT_EQ(run.asked, (Names{reading + "2'\nIts size has changed\n|&Continue|&Abort",
                              reading + "3'\nInput/output error\n|&Continue|&Abort"}));
  EXPECT_EQ(dir.listing("to"), "entry00 entry01 ");
  std::string expected;
  for (int i = 0; i < 100000; ++i) expected += static_cast<char>(i % 251);
  for (const char* name : {"to/entry00", "to/entry01"})
    EXPECT_TRUE(read_file(dir / name) == expected) << name;
}

TEST_F(FaultTest, ACopyIsNeverMoreReadableThanItsSource) {
  dir.shell("head -c 3000000 /dev/urandom >from/secret");
  // The group's bits too are only for who may read it as the copy's owner, group and others alike.
  const std::pair<unsigned, unsigned> rows[] = {
      {0600, 0600}, {0640, 0600}, {0604, 0600}, {0444, 0444}, {04755, 0755}};
  for (const auto& [mode, meanwhile] : rows) {
    chmod((dir / "from/secret").c_str(), mode);
    unsigned widest = 0;
    go(FOP_COPY, {"secret"}, dir / "to", {}, 0, [&](fop_control&, int percent) {
      if (percent < 100 && path_exists(dir / "to/secret")) widest |= mode_of(dir / "to/secret");
    });
    EXPECT_EQ(widest, meanwhile) << std::oct << mode;
    unlink((dir / "to/secret").c_str());
  }
}
