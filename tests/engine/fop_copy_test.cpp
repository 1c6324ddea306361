#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>

#include "tests/engine/fop_run.h"

namespace {
constexpr char kConflict[] = "&Skip|&Overwrite|Overwrite &All|a&Bort";

std::string exists_question(const char* title, const std::string& path) {
  return std::string(title) + "|The '" + path + "' file exists.\nWhat do you want to do ?\n|" + kConflict;
}

unsigned mode_of(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0xffff;
}

struct CopyTest : testing::Test {
  TempDir dir;
  FopRun run;
  void SetUp() override {
    mkdir((dir / "from").c_str(), 0755);
    mkdir((dir / "to").c_str(), 0755);
    run.from = dir / "from";
    run.to = dir / "to";
  }
};
}  // namespace

TEST_F(CopyTest, TheDestinationDecidesWhereItemsGo) {
  struct Row {
    const char *names, *to;
    int answer;
    const char* asked;  // beginning of the only question or notice; null: none
    const char* made;   // what must be there; null: nothing was made
  };
  const std::string to = dir / "to";
  const Row rows[] = {
      {"f", "to", 0, nullptr, "to/f"},
      {"f", "new", 0, nullptr, "new"},
      {"d", "to", 0, nullptr, "to/d/g"},
      {"d", "new", 0, nullptr, "new/g"},
      {"d", "new/", 0, nullptr, "new/g"},
      {"d", "pipe", 0, "File Scan|Source and destination file types mismatch.|&Close", nullptr},
      {"f", "pipe", 0, "File Scan|Source and destination file types mismatch.|&Close", nullptr},
      {"missing", "to", 0, "File Scan|Unable to get stats for '", nullptr},
      {"f d", "new", 1, "Make Directory|The '", "new/d/g"},
      {"f d", "new", 2, "Make Directory|The '", nullptr},
      {"f d", "no/where", 1, "Make Directory|", nullptr},
      {"f d", "pipe", 0, "File Scan|Can't copy/move multiple files into \n'", nullptr},
      {"d", "no/where", 0, "Make Directory|Unable to create '", nullptr},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.names) + " -> " + row.to);
    run_shell("cd '" + dir.path() +
              "' && rm -rf from to new pipe && mkdir -p from/d to && mkfifo pipe && "
              "echo text >from/f && echo more >from/d/g");
    run = FopRun();
    run.from = dir / "from";
    run.to = dir / row.to;
    run.names = std::string(row.names) == "f d" ? std::vector<std::string>{"f", "d"}
                                                : std::vector<std::string>{row.names};
    if (row.answer) run.answers = {row.answer};
    fop_run(&run);
    EXPECT_EQ(run.aborted, row.made == nullptr);
    const std::string asked = run.asked.empty() ? "" : run.asked[0], expected = row.asked ? row.asked : "";
    EXPECT_EQ(asked.substr(0, expected.empty() ? asked.size() : expected.size()), expected);
    std::string listing;
    run_shell("cd '" + dir.path() + "' && find to new no 2>/dev/null | sort | tr '\\n' ' '", &listing);
    EXPECT_TRUE(row.made ? path_exists(dir / row.made) : listing == "to ") << listing;
  }
}

TEST_F(CopyTest, ConflictsAreAskedUntilOverwriteAll) {
  const std::string three[] = {"a", "b", "c"};
  struct Row {
    std::vector<int> answers;
    size_t questions;
    const char* contents;  // of a, b, c afterwards: n new, o old
    bool aborted;
  };
  const Row rows[] = {
      {{1, 2, 1}, 3, "ono", false}, {{3}, 1, "nnn", false}, {{2, 4}, 2, "noo", true}, {{}, 1, "ooo", true}};
  for (const Row& row : rows) {
    for (const std::string& name : three)
      write_file(dir / "from/" + name, "new"), write_file(dir / "to/" + name, "old");
    run = FopRun{FOP_COPY, dir / "from", {"a", "b", "c"}, dir / "to", 0, row.answers};
    fop_run(&run);
    EXPECT_EQ(run.asked.size(), row.questions);
    EXPECT_EQ(run.asked[0], exists_question("Copy/Move", dir / "to/a"));
    for (int i = 0; i < 3; ++i) EXPECT_EQ(read_file(dir / "to/" + three[i])[0], row.contents[i]) << i;
    EXPECT_EQ(run.aborted, row.aborted);
  }
  std::string strays;
  run_shell("ls -A '" + (dir / "to") + "' | grep -c zan", &strays);
  EXPECT_EQ(strays, "0\n");
}

TEST_F(CopyTest, NothingIsCopiedOntoOrIntoItself) {
  write_file(dir / "from/f", "text");
  mkdir((dir / "from/d").c_str(), 0500);
  mkdir((dir / "from/d/below").c_str(), 0755);
  link((dir / "from/f").c_str(), (dir / "to/f").c_str());
  symlink("from", (dir / "alias").c_str());
  symlink("from/d/below", (dir / "inside").c_str());
  const std::string copy = "File Scan|Can't copy file(s) into itself.|&Close",
                    move = "File Scan|Can't move file(s) into itself.|&Close";
  struct Row {
    int kind;
    const char *from, *name, *to;
    const std::string& notice;
  };
  const Row rows[] = {
      {FOP_COPY, "from", "f", "from", copy},   {FOP_COPY, "from", "f", "to", copy},
      {FOP_COPY, "alias", "f", "from", copy},  {FOP_COPY, "from", "d", "from", copy},
      {FOP_COPY, "from", "d", "from/d", copy}, {FOP_COPY, "from", "d", "from/d/below", copy},
      {FOP_COPY, "from", "d", "inside", copy}, {FOP_COPY, "from", "d", "alias/d/below/new", copy},
      {FOP_MOVE, "from", "f", "from", move},   {FOP_MOVE, "alias", "f", "from", move},
      {FOP_MOVE, "from", "d", "inside", move}, {FOP_MOVE, "from", "d", "from/d/below/new", move},
      {FOP_COPY, "from", "d", "alias", copy}};
  for (const Row& row : rows) {
    SCOPED_TRACE(std::string(row.from) + "/" + row.name + " -> " + row.to);
    run = FopRun{row.kind, dir / row.from, {row.name}, dir / row.to, FOP_OVERWRITE_ALL};
    fop_run(&run);
    EXPECT_EQ(run.asked, std::vector<std::string>{row.notice});
    EXPECT_TRUE(run.aborted);
    std::string listing;
    run_shell("cd '" + dir.path() + "' && find from to | sort | tr '\\n' ' '", &listing);
    EXPECT_EQ(listing, "from from/d from/d/below from/f to to/f ");
    EXPECT_EQ(read_file(dir / "from/f"), "text");
    EXPECT_EQ(mode_of(dir / "from/d"), 0500u);
  }
}

TEST_F(CopyTest, ABindMountIsNoWayIntoItself) {
  mkdir((dir / "from/d").c_str(), 0755);
  mkdir((dir / "from/d/below").c_str(), 0755);
  mkdir((dir / "mount").c_str(), 0755);
  if (run_shell("mount --bind '" + (dir / "from/d/below") + "' '" + (dir / "mount") + "' 2>/dev/null") != 0)
    GTEST_SKIP() << "cannot mount";
  for (const char* to : {"mount", "mount/new"}) {
    run = FopRun{FOP_COPY, dir / "from", {"d"}, dir / to, 0};
    fop_run(&run);
    EXPECT_EQ(run.asked, std::vector<std::string>{"File Scan|Can't copy file(s) into itself.|&Close"}) << to;
  }
  std::string listing;
  run_shell("ls -A '" + (dir / "mount") + "'; umount '" + (dir / "mount") + "'", &listing);
  EXPECT_EQ(listing, "");
}

TEST_F(CopyTest, LinksAreAskedAboutOnce) {
  write_file(dir / "from/f", "text");
  mkdir((dir / "from/d").c_str(), 0755);
  write_file(dir / "from/d/g", "more");
  symlink("f", (dir / "from/l").c_str());
  symlink("d", (dir / "from/ld").c_str());
  symlink("..", (dir / "from/d/up").c_str());
  const std::string question =
      "Copy|Symbolic links detected in the file list\nWhat do you want to copy ?|&Files|@&Links|#&Abort";
  run.names = {"l", "ld", "d"};
  run.answers = {2};
  fop_run(&run);
  EXPECT_EQ(run.asked, std::vector<std::string>{question});
  struct stat status;
  for (const char* name : {"to/l", "to/ld", "to/d/up"}) {
    ASSERT_EQ(lstat((dir / name).c_str(), &status), 0) << name;
    EXPECT_TRUE(S_ISLNK(status.st_mode)) << name;
  }
  // Followed, a link that leads above itself is no endless tree.
  run_shell("rm -rf '" + (dir / "to") + "'/*");
  run = FopRun{FOP_COPY, dir / "from", {"l", "ld", "d"}, dir / "to", 0, {1, 1, 1, 1}};
  fop_run(&run);
  ASSERT_EQ(run.asked.size(), 3u);
  EXPECT_EQ(run.asked[1], "File Scan|Unable to stat '" + (dir / "from/ld/up") +
                              "'\nToo many levels of symbolic links\n|&Continue|&Abort");
  EXPECT_EQ(read_file(dir / "to/l") + read_file(dir / "to/ld/g"), "textmore");
  EXPECT_EQ(lstat((dir / "to/ld").c_str(), &status), 0);
  EXPECT_TRUE(S_ISDIR(status.st_mode));
}

TEST_F(CopyTest, ModesTimesAndKindsAreKept) {
  umask(022);
  run_shell(
      "cd '" + (dir / "from") +
      "' && mkdir ro && echo a >ro/a && chmod 640 ro/a && mkfifo -m 600 ro/p && "
      "truncate -s 1G ro/hole && echo end >>ro/hole && echo s >ro/s && chmod 6755 ro/s && chmod 555 ro && "
      "ln ro/a ro2; touch -d @1000000000.123456789 ro/a ro");
  const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{AF_UNIX, "socket"};
  ASSERT_EQ(chdir((dir / "from").c_str()), 0);
  ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  close(fd);
  run.names = {"ro", "socket"};
  fop_run(&run);
  EXPECT_TRUE(run.asked.empty()) << run.asked[0];
  EXPECT_FALSE(path_exists(dir / "to/socket"));
  EXPECT_EQ(run.items, 6);
  EXPECT_EQ(mode_of(dir / "to/ro"), 0555u);
  EXPECT_EQ(mode_of(dir / "to/ro/a"), 0640u);
  EXPECT_EQ(mode_of(dir / "to/ro/p"), 0600u);
  EXPECT_EQ(mode_of(dir / "to/ro/s"), 06755u);
  struct stat status;
  for (const char* name : {"to/ro", "to/ro/a"}) {
    ASSERT_EQ(stat((dir / name).c_str(), &status), 0);
    EXPECT_EQ(status.st_mtim.tv_sec, 1000000000) << name;
    EXPECT_EQ(status.st_mtim.tv_nsec, 123456789) << name;
  }
  ASSERT_EQ(stat((dir / "to/ro/hole").c_str(), &status), 0);
  EXPECT_EQ(status.st_size, (1 << 30) + 4);
  EXPECT_LT(status.st_blocks, 100);
}

TEST_F(CopyTest, WhatIsInTheWayIsNotWrittenThrough) {
  write_file(dir / "from/f", "new");
  write_file(dir / "outside", "untouched");
  symlink("../absent", (dir / "to/f").c_str());
  run.names = {"f"};
  run.to = dir / "to";
  fop_run(&run);  // a dangling link is a conflict like any other
  EXPECT_EQ(run.asked, std::vector<std::string>{exists_question("Copy/Move", dir / "to/f")});
  EXPECT_FALSE(path_exists(dir / "absent"));
  run.answers = {2};
  run.asked.clear();
  fop_run(&run);
  EXPECT_EQ(read_file(dir / "to/f"), "new");
  EXPECT_FALSE(path_exists(dir / "absent"));
  // A link never takes a file's place unasked, and its target's times and owner are not the copy's business.
  symlink("../outside", (dir / "from/l").c_str());
  write_file(dir / "to/l", "old");
  run_shell("touch -h -d @5 '" + (dir / "from/l") + "'; touch -d @9 '" + (dir / "outside") + "'");
  run = FopRun{FOP_COPY, dir / "from", {"l"}, dir / "to", FOP_COPY_LINKS, {1}};
  fop_run(&run);
  EXPECT_EQ(run.asked, std::vector<std::string>{exists_question("Copy/Move", dir / "to/l")});
  EXPECT_EQ(read_file(dir / "to/l"), "old");
  unlink((dir / "to/l").c_str());
  run.asked.clear();
  fop_run(&run);
  struct stat status;
  ASSERT_EQ(stat((dir / "outside").c_str(), &status), 0);
  EXPECT_EQ(status.st_mtim.tv_sec, 9);
  ASSERT_EQ(lstat((dir / "to/l").c_str(), &status), 0);
  EXPECT_EQ(status.st_mtim.tv_sec, 5);
}

TEST_F(CopyTest, ThingsOfAnotherKindInTheWayAreTold) {
  const std::string buttons = "|&Continue|&Abort";
  struct Row {
    const char *make, *name;
    std::string asked;
  };
  const std::string d = dir / "to/x";
  const Row rows[] = {
      {"mkfifo from/x; echo 1 >to/x", "x", "Copy/Move|The '" + d + "' is not a FIFO\n"},
      {"mkdir -p from/x/y; echo 1 >from/x/y/z; echo 1 >to/x", "x",
       "Copy/Move|The '" + d + "' is not a directory\n"},
      {"mkdir from/x; ln -s gone to/x", "x", "Copy/Move|Unable to make '" + d + "' directory\n"},
      {"ln -s t from/x; mkdir to/x; echo 1 >to/x/y", "x",
       "Copy/Move|Unable to create symbolic link '" + d + "' to\n't'\n"},
      {"echo 1 >from/x; mkdir to/x", "x", "Copy/Move|Error writing '" + d + "'\nIs a directory\n"},
      {"echo 1 >from/x; mkfifo to/x", "x",
       "Copy/Move|Error writing '" + d + "'\nNo such device or address\n"},
  };
  for (const Row& row : rows) {
    SCOPED_TRACE(row.make);
    run_shell("cd '" + dir.path() + "' && rm -rf from to && mkdir from to && echo other >from/other && " +
              row.make);
    std::string before, after;
    const std::string list =
        "cd '" + dir.path() + "' && ls -lR --time-style=+ to | grep -v other | tail -n +3";
    run_shell(list, &before);
    run = FopRun{FOP_COPY, dir / "from", {row.name, "other"}, dir / "to", FOP_OVERWRITE_ALL | FOP_COPY_LINKS,
                 {1}};
    fop_run(&run);
    EXPECT_EQ(run.asked, std::vector<std::string>{row.asked + buttons});
    EXPECT_FALSE(run.aborted);
    EXPECT_EQ(read_file(dir / "to/other"), "other\n");
    run_shell(list, &after);
    EXPECT_EQ(after, before);
  }
}

TEST_F(CopyTest, CancelLeavesNoPartAndPauseHoldsStill) {
  run_shell("head -c 9000000 /dev/urandom >'" + (dir / "from/big") + "'; echo old >'" + (dir / "to/old") +
            "'; cp '" + (dir / "from/big") + "' '" + (dir / "from/old") + "'");
  for (const char* name : {"big", "old"}) {
    run = FopRun{FOP_COPY, dir / "from", {name}, dir / "to", FOP_OVERWRITE_ALL};
    run.watch = [](fop_control& control, int percent) {
      if (percent >= 40) control.cancel = 1;
    };
    fop_run(&run);
    EXPECT_TRUE(run.aborted);
  }
  EXPECT_FALSE(path_exists(dir / "to/big"));
  EXPECT_EQ(read_file(dir / "to/old"), "old\n");  // what was there is still whole
  std::atomic<fop_control*> held{nullptr};
  int samples = 0;
  run = FopRun{FOP_COPY, dir / "from", {"big"}, dir / "to"};
  run.watch = [&held](fop_control& control, int percent) {
    if (percent >= 30 && !held) control.pause = 1, held = &control;
  };
  const int timer = desk_timer_start(100, [&] {
    if (!held || !held.load()->pause) return;
    struct stat first, second;
    stat((dir / "to/big").c_str(), &first);
    usleep(100000);
    stat((dir / "to/big").c_str(), &second);
    EXPECT_EQ(first.st_size, second.st_size);
    EXPECT_LT(second.st_size, 9000000);
    if (++samples == 3) held.load()->pause = 0;
  });
  fop_run(&run);
  desk_timer_stop(timer);
  EXPECT_EQ(samples, 3);
  EXPECT_FALSE(run.aborted);
  EXPECT_EQ(run_shell("cmp '" + (dir / "from/big") + "' '" + (dir / "to/big") + "'"), 0);
}

TEST_F(CopyTest, TheDisplayCountsAndLabels) {
  for (int i = 0; i < 5; ++i) write_file(dir / ("from/f" + std::to_string(i)), "text");
  run.names = {"f0", "f1", "f2", "f3", "f4"};
  fop_run(&run);
  ASSERT_FALSE(run.shown.empty());
  const fop_info &first = run.shown.front(), &last = run.shown.back();
  EXPECT_STREQ(first.header, "Scanning");
  EXPECT_STREQ(last.header, "Copying");
  EXPECT_STREQ(last.from_label, "Done");
  EXPECT_EQ(last.percent, 100);
  EXPECT_EQ(std::to_string(last.item) + " of " + std::to_string(last.total_items), "5 of 5");
}

TEST_F(CopyTest, ATooLongPathIsRefusedAndATooLongNameAsked) {
  std::string deep = run.from;
  while (deep.size() < 1000) mkdir((deep += "/" + std::string(200, 'd')).c_str(), 0755);
  write_file(deep + "/" + std::string(200, 'f'), "text");
  mkdir((dir / "to/" + std::string(150, 't')).c_str(), 0755);
  run.names = {std::string(200, 'd')};
  run.to = dir / "to/" + std::string(150, 't');
  run.answers = {1};
  fop_run(&run);
  ASSERT_EQ(run.asked.size(), 1u);
  EXPECT_EQ(run.asked[0].substr(0, 26), "Copy/Move|Unable to stat '");
  EXPECT_NE(run.asked[0].find("File name too long"), std::string::npos);

  write_file(dir / "from/f", "text");
  ASSERT_EQ(chdir(dir.path().c_str()), 0);
  for (const char* chosen : {"", "short"}) {
    run = FopRun{FOP_COPY, dir / "from", {"f"}, dir / "to/" + std::string(256, 'n'), 0};
    run.watch = [chosen](fop_control&, int) { terminal_start().long_name = chosen; };
    fop_run(&run);
    EXPECT_TRUE(run.asked.empty());
    EXPECT_EQ(read_file(dir / "short"), *chosen ? "text" : "");
  }
}
