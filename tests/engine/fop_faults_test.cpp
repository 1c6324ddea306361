// Faults that really happen: a disk that fills up, sources that change while they are copied.
#include <fcntl.h>
#include <sys/mount.h>

#include "tests/engine/fop_run.h"

using FaultTest = FopTest;

TEST_F(FaultTest, AFullDiskIsRetriedSkippedOrAborted) {
  const std::string full = "'to/big'\nNo space left on device\n|",
                    question = "Write error|Unable to write " + full + "&Retry|&Skip|&Abort",
                    told = "Copy/Move|Error writing " + full + "&Continue|&Abort";
  const std::tuple<int, std::string, std::string> rows[] = {{1, question, "big other "},
                                                            {2, question + told, "filler other "},
                                                            {3, question + "aborted", "filler "}};
  dir.shell("head -c 6000000 /dev/urandom >from/big && echo small >from/other");
  for (const auto& [answer, questions, made] : rows)
    for (const std::string before : {"", "old\n"}) {
      if (mount("none", (dir / "to").c_str(), "tmpfs", 0, "size=8m") != 0) GTEST_SKIP() << "cannot mount";
      dir.shell("cd to && head -c 4000000 /dev/zero >filler");
      if (!before.empty()) write_file(dir / "to/big", before);
      on_alert = [this, answer = answer](TerminalAlert& alert) {
        alert.answer = alert.title == "Write error" ? answer : 1;
        if (answer == 1) unlink((dir / "to/filler").c_str());
      };
      go(FOP_COPY, {"big", "other"}, "to", {}, FOP_OVERWRITE_ALL);
      EXPECT_EQ(asked + dir.listing("to"), questions + (before.empty() || answer == 1 ? "" : "big ") + made);
      EXPECT_EQ(read_file(dir / "to/big"), answer == 1 ? read_file(dir / "from/big") : before) << answer;
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
    dir.shell("rm -f from/* to/* && head -c 5000000 /dev/urandom >from/src");
    const int held = open((dir / "from/src").c_str(), O_RDONLY);
    bool changed = false;
    go(FOP_COPY, {"src"}, "to", {1}, 0, [&, change = change](fop_control&, int percent) {
      if (percent < 50 || percent == 100 || changed) return;
      changed = run_shell("cd '" + (dir / "from") + "' && " + change) == 0;
    });
    EXPECT_TRUE(changed) << change;
    const char* error = "Copy/Move|Error reading 'from/src'\nIts size has changed\n|&Continue|&Abort";
    EXPECT_EQ(asked, reported ? error : "");
    const std::string source = "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(held);
    dir.shell(reported ? "[ ! -e to/src ]" : "cmp " + source + " to/src");
    close(held);
  }
}

TEST_F(FaultTest, ACopyIsNeverMoreReadableThanItsSource) {
  dir.shell("head -c 3000000 /dev/urandom >from/secret");
  // The group's bits too are only for who may read it as the copy's owner, group and others alike.
  const std::pair<unsigned, unsigned> rows[] = {
      {0600, 0600}, {0640, 0600}, {0604, 0600}, {0444, 0444}, {04755, 0755}};
  for (const auto& [mode, meanwhile] : rows) {
    chmod((dir / "from/secret").c_str(), mode);
    unsigned widest = 0;
    go(FOP_COPY, {"secret"}, "to", {}, 0, [&](fop_control&, int percent) {
      if (percent < 100 && path_exists(dir / "to/secret")) widest |= mode_of(dir / "to/secret");
    });
    EXPECT_EQ(widest, meanwhile) << std::oct << mode;
    unlink((dir / "to/secret").c_str());
  }
}
