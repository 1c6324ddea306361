// Faults that really happen: a disk that fills up, sources that change or read wrongly while they are copied.
#include <fcntl.h>
#include <sys/mount.h>

#include <fstream>

#include "tests/engine/fop_run.h"

namespace {
// A file system of a few megabytes.
struct SmallSystem {
  TempDir dir;
  bool mounted = false;
  explicit SmallSystem(const char* options)
      : mounted(mount("none", dir.path().c_str(), "tmpfs", 0, options) == 0) {}
  ~SmallSystem() {
    if (mounted) umount2(dir.path().c_str(), MNT_DETACH);
  }
  std::string operator/(const std::string& name) const { return dir / name; }
};

struct FaultTest : testing::Test {
  TempDir dir;
  FopRun run;
  void random_file(const std::string& path, int bytes) {
    ASSERT_EQ(run_shell("head -c " + std::to_string(bytes) + " /dev/urandom >'" + path + "'"), 0);
  }
  bool same(const std::string& a, const std::string& b) {
    return run_shell("cmp -s '" + a + "' '" + b + "'") == 0;
  }
};
}  // namespace

TEST_F(FaultTest, AFullDiskIsRetriedSkippedOrAborted) {
  struct Row {
    int answer;
    bool free_space;
    std::vector<std::string> titles;
    bool whole, other_copied, aborted;
  };
  const Row rows[] = {{1, true, {"Write error"}, true, true, false},
                      {2, false, {"Write error", "Copy/Move"}, false, true, false},
                      {3, false, {"Write error"}, false, false, true}};
  random_file(dir / "big", 6000000);
  write_file(dir / "other", "small");
  for (const Row& row : rows)
    for (const char* before : {"", "old"}) {
      SCOPED_TRACE(row.answer);
      SmallSystem small("size=8m");
      if (!small.mounted) GTEST_SKIP() << "cannot mount a small file system";
      random_file(small / "filler", 4000000);
      if (*before) write_file(small / "big", before);
      run = FopRun{FOP_COPY, dir.path(), {"big", "other"}, small.dir.path(), FOP_OVERWRITE_ALL};
      std::vector<std::string> titles;
      run.on_alert = [&](TerminalAlert& alert) {
        titles.push_back(alert.title);
        alert.answer = alert.title == "Write error" ? row.answer : 1;
        if (row.free_space) unlink((small / "filler").c_str());
      };
      fop_run(&run);
      EXPECT_EQ(titles, row.titles);
      EXPECT_EQ(run.asked[0], "Write error|Unable to write '" + (small / "big") +
                                  "'\nNo space left on device\n|&Retry|&Skip|&Abort");
      if (row.titles.size() == 2) {
        EXPECT_EQ(run.asked[1], "Copy/Move|Error writing '" + (small / "big") +
                                    "'\nNo space left on device\n|&Continue|&Abort");
      }
      EXPECT_EQ(same(dir / "big", small / "big"), row.whole);
      if (!row.whole) {
        EXPECT_EQ(read_file(small / "big"), before);  // no part, and the old file is whole
      }
      EXPECT_EQ(path_exists(small / "other"), row.other_copied);
      EXPECT_EQ(run.aborted, row.aborted);
    }
}

TEST_F(FaultTest, ASourceThatChangesIsCopiedWholeOrReported) {
  struct Row {
    const char* change;
    bool reported;
  };
  const Row rows[] = {{"truncate -s 1000 src", true},
                      {"truncate -s 0 src", true},
                      {"head -c 700001 /dev/urandom >>src", false},
                      {"rm src && echo other >src", false},
                      {"mv src moved", false},
                      {"truncate -s +60M src", false}};
  for (const Row& row : rows) {
    SCOPED_TRACE(row.change);
    run_shell("rm -rf '" + dir.path() + "'/*");
    random_file(dir / "src", 5000000);
    mkdir((dir / "to").c_str(), 0755);
    const int held = open((dir / "src").c_str(), O_RDONLY);
    run = FopRun{FOP_COPY, dir.path(), {"src"}, dir / "to", 0, {1}};
    bool changed = false;
    run.watch = [&](fop_control&, int percent) {
      if (percent < 50 || percent == 100 || changed) return;
      changed = run_shell("cd '" + dir.path() + "' && " + row.change) == 0;
    };
    fop_run(&run);
    EXPECT_TRUE(changed);
    EXPECT_EQ(path_exists(dir / "to/src"), !row.reported);
    const std::string held_path = "/proc/" + std::to_string(getpid()) + "/fd/" + std::to_string(held);
    const std::vector<std::string> asked = {"Copy/Move|Error reading '" + (dir / "src") +
                                            "'\nIts size has changed\n|&Continue|&Abort"};
    EXPECT_EQ(run.asked, row.reported ? asked : std::vector<std::string>());
    EXPECT_TRUE(row.reported || same(held_path, dir / "to/src"));
    close(held);
  }
}

TEST_F(FaultTest, WhatReadsWronglyIsReported) {
  const std::string program = std::string(ZAN_BUILD_BIN) + "/zan_faulty_fs";
  mkdir((dir / "mount").c_str(), 0755);
  mkdir((dir / "to").c_str(), 0755);
  if (access(program.c_str(), X_OK) != 0 || access("/dev/fuse", R_OK | W_OK) != 0)
    GTEST_SKIP() << "no FUSE here";
  run_shell("'" + program + "' '" + (dir / "mount") + "' >/dev/null 2>&1 & for i in $(seq 500); do [ -e '" +
            (dir / "mount/whole") + "' ] && break; sleep 0.01; done");
  if (!path_exists(dir / "mount/whole")) GTEST_SKIP() << "cannot mount with FUSE";
  std::string expected;
  for (int i = 0; i < 100000; ++i) expected += static_cast<char>(i % 251);
  run = FopRun{FOP_COPY, dir / "mount", {"whole", "short", "bits", "eio"}, dir / "to", 0, {1, 1}};
  fop_run(&run);
  run_shell("umount '" + (dir / "mount") + "'");
  const std::string reading = "Copy/Move|Error reading '" + (dir / "mount/");
  EXPECT_EQ(run.asked, (std::vector<std::string>{reading + "short'\nIts size has changed\n|&Continue|&Abort",
                                                 reading + "eio'\nInput/output error\n|&Continue|&Abort"}));
  EXPECT_TRUE(read_file(dir / "to/whole") == expected);
  EXPECT_TRUE(read_file(dir / "to/bits") == expected);
  EXPECT_FALSE(path_exists(dir / "to/short") || path_exists(dir / "to/eio"));
}

TEST_F(FaultTest, ACopyIsNeverMoreReadableThanItsSource) {
  random_file(dir / "secret", 3000000);
  mkdir((dir / "to").c_str(), 0755);
  for (const unsigned mode : {0600u, 0640u, 0604u, 0444u, 04755u}) {
    chmod((dir / "secret").c_str(), mode);
    run = FopRun{FOP_COPY, dir.path(), {"secret"}, dir / "to"};
    unsigned widest = 0;
    run.watch = [&](fop_control&, int percent) {
      struct stat status;
      if (percent < 100 && stat((dir / "to/secret").c_str(), &status) == 0) widest |= status.st_mode & 07777;
    };
    fop_run(&run);
    EXPECT_NE(widest, 0u);
    EXPECT_EQ(widest & ~mode & 07777, 0u) << std::oct << mode << " was " << widest;
    EXPECT_EQ(widest & 06000, 0u);
    unlink((dir / "to/secret").c_str());
  }
}
