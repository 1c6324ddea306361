#include "fileops/dir_scan.h"

#include "fileops/subdir_probe.h"
#include "platform/terminal/terminal.h"
#include "tests/support/hung_mount.h"
#include "tests/support/temp_dir.h"

struct Scanned {
  int listed = 0;
  DirNames names;
  std::string has;  // for each name: '1' with subdirectories
  bool ended = false;
  std::shared_ptr<DirScan> scan;

  Scanned(const std::string& path, unsigned flags, bool wait = true) {
    terminal_start();
    DirScanCalls calls;
    calls.listed = [this](const DirNames& all) { ++listed, names = all; };
    calls.looked = [this](size_t first, const std::vector<char>& looked) {
      EXPECT_TRUE(listed == 1 && first == has.size());
      for (char one : looked) has += one ? '1' : '0';
    };
    calls.ended = [this] { ended = true; };
    scan = dir_scan_start(path, flags, calls);
    EXPECT_TRUE(scan && (!wait || terminal_run_until([this] { return ended; })));
  }
};

// What a probe of the path answers: 1, 0, or -1.
static int probed(const std::string& path) {
  int sign = -9;
  subdir_probe(path, 0, [&sign](int result) { sign = (result > 0) - (result < 0); });
  EXPECT_TRUE(terminal_run_until([&] { return sign != -9; }));
  return sign;
}

TEST(DirScan, ListsSubdirectoriesInTheMenusOrder) {
  TempDir dir;
  const std::string raw = "\xff\x80";
  dir.shell(
      "mkdir 10 2 a B .hidden 'sp ace' " + raw +
      " && touch file 1 && mkfifo pipe && mkdir a/x .hidden/y 10/.z && "
      "ln -s a link && ln -s file filelink && ln -s none dangling && ln -s loop loop && touch 2/file && "
      "ln -s ../a B/onlylink");
  const std::tuple<unsigned, DirNames, const char*> rows[] = {
      {0, {".hidden", "2", "10", "B", "a", "link", "sp ace", raw}, "10111100"},
      {DIR_SCAN_HIDE_DOT, {"2", "10", "B", "a", "link", "sp ace", raw}, "0011100"},
      {DIR_SCAN_HIDE_DOT | DIR_SCAN_BYTE_ORDER | DIR_SCAN_NAMES,
       {"10", "2", "B", "a", "link", "sp ace", raw},
       ""}};
  for (const auto& [flags, names, has] : rows) {
    const Scanned out(dir / "", flags);
    EXPECT_EQ(out.names, names) << flags;
    EXPECT_EQ(out.has, has) << flags;
  }
  const auto probe = [&](const char* name) { return std::to_string(probed(dir / name)); };
  EXPECT_EQ(each<const char*>({"a", "2", "link", "file", "none"}, probe), "1|0|1|-1|-1|");
  for (const char* name : {"none", "file", "none/below"}) {
    EXPECT_TRUE(Scanned(dir / name, 0).names.empty()) << name;
    EXPECT_EQ(dir_scan_look((dir / name).c_str(), 0), -1) << name;
  }
}

TEST(DirScan, ADeadFileSystemHoldsUpNobody) {
  TempDir dir;
  dir.shell("mkdir -p dead live/sub");
  HungMount hung(dir / "dead");
  if (!hung.mounted()) GTEST_SKIP() << "needs to mount";
  Scanned dead(dir / "dead", 0, false);
  int dead_results = 0;
  // More dead ones than are looked at at a time; the live one is next to last, one is forgotten.
  for (int i = 0; i < 3; ++i)
    subdir_probe(dir / "dead", 0, [&](int result) { dead_results += result == -1; });
  int live_result = -9;
  subdir_probe(dir / "live", 0, [&](int result) { live_result = result; });
  subdir_probe_cancel(subdir_probe(dir / "dead", 0, [&](int) { dead_results += 100; }));
  EXPECT_TRUE(terminal_run_until([&] { return live_result != -9; }));
  EXPECT_GT(live_result, 0);
  EXPECT_EQ(dead_results, 0);
  dir_scan_cancel(dead.scan);
  EXPECT_EQ(dead.listed, 0);
  // Nothing answers in time: the probes are written off, and the path is then answered at once.
  EXPECT_TRUE(terminal_run_until([&] { return dead_results == 3; }));
  EXPECT_EQ(probed(dir / "dead"), -1);
  hung.release();
  EXPECT_TRUE(terminal_run_until([&] { return dead.scan->finished == 1; }));
  // The threads that were written off have come back, so the path is looked at again.
  EXPECT_EQ(probed(dir / "dead"), -1);
}
