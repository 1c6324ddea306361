#include "fileops/dir_scan.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include "fileops/subdir_probe.h"
#include "platform/desktop.h"
#include "platform/terminal/terminal.h"
#include "tests/support/hung_mount.h"
#include "tests/support/temp_dir.h"

namespace {
struct Outcome {
  int listed = 0, failed = 0;
  DirNames names;
  std::vector<char> has;
  bool ended = false, in_order = true;
};

DirScanCalls tell_outcome(Outcome* out) {
  DirScanCalls calls;
  calls.listed = [out](const DirNames& names) {
    ++out->listed;
    out->names = names;
  };
  calls.looked = [out](size_t first, const std::vector<char>& has) {
    out->in_order = out->in_order && out->listed == 1 && first == out->has.size();
    out->has.insert(out->has.end(), has.begin(), has.end());
  };
  calls.failed = [out] { ++out->failed; };
  calls.ended = [out] { out->ended = true; };
  return calls;
}

Outcome scan(const std::string& path, unsigned flags = 0) {
  terminal_start();
  Outcome out;
  const auto started = dir_scan_start(path, flags, tell_outcome(&out));
  EXPECT_TRUE(started);
  EXPECT_TRUE(terminal_run_until([&] { return out.ended; }));
  EXPECT_TRUE(started->finished && started->started);
  EXPECT_EQ(started->count, static_cast<int32_t>(out.names.size()));
  return out;
}
}  // namespace

TEST(DirScan, ListsSubdirectoriesInTheMenusOrder) {
  TempDir dir;
  run_shell(
      "cd " + dir.path() +
      " && mkdir 10 2 a B .hidden 'sp ace' && touch file 1 && mkfifo pipe && mkdir a/x .hidden/y 10/.z"
      " && ln -s a link && ln -s file filelink && ln -s none dangling && ln -s loop loop && touch 2/file"
      " && ln -s ../a B/onlylink");
  const std::string raw = "\xff\x80";
  ASSERT_EQ(mkdir((dir / raw).c_str(), 0700), 0);
  const DirNames numbers_first = {".hidden", "2", "10", "B", "a", "link", "sp ace", raw};
  const struct {
    unsigned flags;
    DirNames names;
    std::string has;
  } rows[] = {
      {0, numbers_first, "10111100"},
      {DIR_SCAN_HIDE_DOT, {"2", "10", "B", "a", "link", "sp ace", raw}, "0011100"},
      {DIR_SCAN_HIDE_DOT | DIR_SCAN_BYTE_ORDER | DIR_SCAN_NAMES,
       {"10", "2", "B", "a", "link", "sp ace", raw},
       ""},
  };
  for (const auto& row : rows) {
    const Outcome out = scan(dir.path() + "/", row.flags);
    EXPECT_EQ(out.names, row.names) << row.flags;
    std::string has;
    for (char one : out.has) has += one ? '1' : '0';
    EXPECT_EQ(has, row.has) << row.flags;
    EXPECT_TRUE(out.in_order);
  }
}

TEST(DirScan, WhatCannotBeReadHasNoEntries) {
  TempDir dir;
  write_file(dir / "file", "");
  for (const char* name : {"none", "file", "none/below"}) {
    const Outcome out = scan(dir / name);
    EXPECT_EQ(out.listed, 1) << name;
    EXPECT_TRUE(out.names.empty()) << name;
    EXPECT_EQ(dir_scan_look((dir / name).c_str(), 0), -1) << name;
  }
  EXPECT_EQ(dir_scan_look(dir.path().c_str(), 0), 0);
}

TEST(DirScan, ThousandsOfNamesArriveWholeAndInOrder) {
  TempDir dir;
  run_shell("cd " + dir.path() + " && seq 1 1200 | xargs mkdir && seq -f '%g/sub' 3 3 1200 | xargs mkdir");
  const Outcome out = scan(dir.path());
  ASSERT_EQ(out.names.size(), 1200U);
  ASSERT_EQ(out.has.size(), 1200U);
  EXPECT_TRUE(out.in_order);
  for (size_t i = 0; i < 1200; ++i) {
    ASSERT_EQ(out.names[i], std::to_string(i + 1));
    ASSERT_EQ(out.has[i] != 0, (i + 1) % 3 == 0) << i;
  }
}

TEST(DirScan, ACancelledScanSaysNothingMoreAndEnds) {
  terminal_start();
  TempDir dir;
  run_shell("cd " + dir.path() + " && seq 1 300 | xargs mkdir");
  std::vector<std::shared_ptr<DirScan>> scans;
  for (int round = 0; round < 40; ++round) {
    auto out = std::make_shared<Outcome>();
    DirScanCalls calls = tell_outcome(out.get());
    // What a callback captured is freed with it: the last rounds cancel from inside a call.
    auto own = std::make_shared<std::shared_ptr<DirScan>>();
    calls.listed = [out, own](const DirNames&) {
      ++out->listed;
      dir_scan_cancel(*own);
    };
    const auto one = *own = dir_scan_start(dir.path(), 0, std::move(calls));
    ASSERT_TRUE(one);
    scans.push_back(one);
    for (int i = 0; i < round % 10; ++i) desk_pending_events(1);
    if (round < 30) dir_scan_cancel(one);
    const int listed = out->listed;
    desk_pending_events(5);
    if (round < 30) {
      EXPECT_EQ(out->listed, listed);
    }
  }
  EXPECT_TRUE(terminal_run_until([&] {
    for (const auto& one : scans)
      if (!one->finished) return false;
    return true;
  }));
}

TEST(DirScan, ADeadFileSystemHoldsUpNobody) {
  terminal_start();
  TempDir dir;
  run_shell("mkdir " + dir / "dead" + " " + dir / "live" + " " + dir / "live/sub");
  HungMount hung(dir / "dead");
  if (!hung.mounted()) GTEST_SKIP() << "needs to mount";
  Outcome out;
  const auto dead = dir_scan_start(dir / "dead", 0, tell_outcome(&out));
  int live_result = -9, dead_results = 0;
  // More dead ones than are looked at at a time; the live one is next to last, one is forgotten.
  for (int i = 0; i < 3; ++i)
    subdir_probe(dir / "dead", 0, [&](int result) { dead_results += result == -1; });
  subdir_probe(dir / "live", 0, [&](int result) { live_result = result; });
  const int forgotten = subdir_probe(dir / "dead", 0, [&](int) { dead_results += 100; });
  subdir_probe_cancel(forgotten);
  EXPECT_TRUE(terminal_run_until([&] { return live_result != -9; }));
  EXPECT_GT(live_result, 0);
  EXPECT_EQ(dead_results, 0);
  dir_scan_cancel(dead);
  EXPECT_EQ(out.listed, 0);
  // Nothing answers in time: the probes are written off, and the path is then answered at once.
  EXPECT_TRUE(terminal_run_until([&] { return dead_results == 3; }));
  subdir_probe(dir / "dead", 0, [&](int result) { dead_results += result == -1; });
  EXPECT_TRUE(terminal_run_until([&] { return dead_results == 4; }));
  hung.release();
  EXPECT_TRUE(terminal_run_until([&] { return dead->finished == 1; }));
  // The threads that were written off have come back, so the path is looked at again.
  int after = -9;
  subdir_probe(dir / "dead", 0, [&](int result) { after = result; });
  EXPECT_TRUE(terminal_run_until([&] { return after != -9; }));
  EXPECT_EQ(after, -1);
}

TEST(SubdirProbe, AnswersEachPathOnce) {
  terminal_start();
  TempDir dir;
  run_shell("cd " + dir.path() +
            " && mkdir -p dots/.only some/sub none && touch none/f file && ln -s some link");
  const struct {
    const char* name;
    int flags;
    int sign;
  } rows[] = {{"dots", SUBDIR_DOT, 1}, {"some", 0, 1}, {"none", 0, 0},
              {"file", 0, -1},         {"link", 0, 1}, {"missing", 0, -1}};
  int answered = 0;
  for (const auto& row : rows)
    subdir_probe(dir / row.name, row.flags, [&answered, row](int result) {
      ++answered;
      EXPECT_EQ((result > 0) - (result < 0), row.sign) << row.name;
    });
  EXPECT_TRUE(terminal_run_until([&] { return answered == 6; }));
}
