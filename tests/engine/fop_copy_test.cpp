#include "tests/engine/fop_run.h"

using CopyTest = FopTest;

TEST_F(CopyTest, TheDestinationDecidesWhereItemsGo) {
  const std::string missing =
      "Make Directory|The 'new' directory doesn't exist\nDo you want to create this directory ?|&Yes|&Abort";
  const std::tuple<Names, const char*, std::vector<int>, std::string, std::string> rows[] = {
      {{"f"}, "new", {}, "", "new to "},
      {{"d"}, "to", {}, "", "to to/d to/d/g "},
      {{"d"}, "new/", {}, "", "new new/g to "},
      {{"f"}, "pipe", {}, "File Scan|Source and destination file types mismatch.|&Close", "to "},
      {{"missing"}, "to", {}, "File Scan|Unable to get stats for 'from/missing'|&Close", "to "},
      {{"f", "d"}, "new", {1}, missing, "new new/d new/d/g new/f to "},
      {{"f", "d"}, "new", {2}, missing, "to "},
      {{"f", "d"}, "pipe", {}, "File Scan|Can't copy/move multiple files into \n'pipe'\n|&Close", "to "},
      {{"d"}, "no/where", {}, "Make Directory|Unable to create 'no/where' directory\n|&Close", "to "}};
  for (const auto& [names, to, answers, question, made] : rows) {
    dir.shell("rm -rf * && mkdir -p from/d to && mkfifo pipe && echo text >from/f && echo more >from/d/g");
    go(FOP_COPY, names, to, answers);
    dir.shell("rm -r from/f from/d/g pipe && rmdir from/d from");
    EXPECT_EQ(asked + dir.listing(), question + (made == "to " ? "aborted" : "") + made) << to;
  }
}

TEST_F(CopyTest, ConflictsAreAskedUntilOverwriteAll) {
  const std::string a = conflict("Copy/Move", "to/a"), b = conflict("Copy/Move", "to/b");
  const std::tuple<std::vector<int>, std::string, const char*> rows[] = {
      {{1, 2, 1}, a + b + conflict("Copy/Move", "to/c"), "old new old\n"},
      {{3}, a, "new new new\n"},
      {{2, 4}, a + b + "aborted", "new old old\n"},
      {{}, a + "aborted", "old old old\n"}};
  for (const auto& [answers, questions, contents] : rows) {
    dir.shell("for n in a b c; do echo new >from/$n; echo old >to/$n; done");
    go(FOP_COPY, {"a", "b", "c"}, "to", answers);
    EXPECT_EQ(asked + dir.shell("echo `cat to/*`"), questions + contents);
  }
  EXPECT_EQ(dir.listing("to"), "a b c ") << "a temporary file is left";
}

TEST_F(CopyTest, NothingIsCopiedOntoOrIntoItself) {
  dir.shell(
      "echo text >from/f && mkdir -p from/d/below mount && chmod 500 from/d && ln from/f to/f && "
      "ln -s from alias && ln -s from/d/below inside && mount --bind from/d/below mount || rmdir mount");
  const std::tuple<int, const char*, const char*, std::string> rows[] = {
      {FOP_COPY, "from", "f", "from"},   {FOP_COPY, "from", "f", "to"},
      {FOP_COPY, "alias", "f", "from"},  {FOP_COPY, "from", "d", "alias"},
      {FOP_COPY, "from", "d", "inside"}, {FOP_COPY, "from", "d", "alias/d/below/new"},
      {FOP_MOVE, "alias", "f", "from"},  {FOP_MOVE, "from", "d", "inside"},
      {FOP_COPY, "from", "d", "mount"},  {FOP_COPY, "from", "d", "mount/new"}};
  for (const auto& [kind, source_dir, name, to] : rows) {
    if (to.starts_with("mount") && !path_exists(dir / "mount")) continue;
    from = dir / source_dir;
    go(kind, {name}, to, {}, FOP_OVERWRITE_ALL);
    const std::string verb = kind == FOP_COPY ? "copy" : "move";
    EXPECT_EQ(asked, "File Scan|Can't " + verb + " file(s) into itself.|&Closeaborted") << to;
    EXPECT_EQ(dir.listing("from") + dir.listing("to") + dir.shell("cat from/f; stat -c %a from/d"),
              "d d/below f f text\n500\n");
  }
  dir.shell("[ ! -d mount ] || umount mount");
}

TEST_F(CopyTest, LinksAreAskedAboutOnce) {
  const std::string make =
      "cd from; mkdir d; printf text >f; printf more >d/g; ln -s f l; ln -s d ld; ln -s .. d/up";
  const std::string links = "Copy|Symbolic links detected in the file list\nWhat do you want to copy ?",
                    buttons = "|&Files|@&Links|#&Abort", failed = "File Scan|Unable to stat 'from/",
                    loop = "/up'\nToo many levels of symbolic links\n|&Continue|&Abort";
  const Names names{"l", "ld", "d"};
  check(make, FOP_COPY, names, "to", 0, {2}, "readlink to/l to/ld to/d/up", links + buttons + "f\nd\n..\n");
  check(make, FOP_COPY, names, "to", 0, {3}, "ls to", links + buttons + "aborted");
  // Followed, a link that leads above itself is no endless tree.
  check(make, FOP_COPY, names, "to", 0, {1, 1, 1, 1}, "cat to/l to/ld/g",
        links + buttons + failed + "ld" + loop + failed + "d" + loop + "textmore");
}

TEST_F(CopyTest, ModesTimesAndKindsAreKept) {
  umask(022);
  dir.shell("cd from && mkdir ro && echo a >ro/a && chmod 640 ro/a && mkfifo -m 600 ro/p");
  dir.shell("cd from/ro && truncate -s 1M hole && echo end >>hole && truncate -s 2G hole && echo s >s");
  dir.shell("cd from && chmod 6755 ro/s && chmod 555 ro && touch -d @1000000000.123456789 ro/a ro");
  ASSERT_EQ(mknod((dir / "from/socket").c_str(), S_IFSOCK | 0644, 0), 0);
  go(FOP_COPY, {"ro", "socket"}, "to");
  EXPECT_EQ(asked + std::to_string(items), "6");
  EXPECT_EQ(dir.shell("find to -mindepth 1 -printf '%P %y%m %T@\\n' | sed '/ro.[hps]/s/ [^ ]*$//' | sort"),
            "ro d555 1000000000.1234567890\nro/a f640 1000000000.1234567890\nro/hole f644\nro/p p600\n"
            "ro/s f6755\n");
  EXPECT_EQ(dir.shell("cd to/ro && [ $(stat -c %b hole) -lt 100 ] && stat -c %s hole && head -c 1048580 hole "
                      "| tail -c 4"),
            "2147483648\nend\n");
}

TEST_F(CopyTest, WhatIsInTheWayIsNotWrittenThrough) {
  const std::string dangling = "echo new >from/f; ln -s ../absent to/f", link = "ln -s ../outside from/l; ",
                    look = "[ ! -e absent ] || echo made; readlink to/f; cat to/f 2>&1 | grep new || :";
  check(dangling, FOP_COPY, {"f"}, "to", 0, {1}, look, conflict("Copy/Move", "to/f") + "../absent\n");
  check(dangling, FOP_COPY, {"f"}, "to", 0, {2}, look, conflict("Copy/Move", "to/f") + "new\n");
  check("echo new >from/f; echo old >real; ln -s ../real to/f", FOP_COPY, {"f"}, "to", FOP_OVERWRITE_ALL, {},
        "readlink to/f; cat real", "../real\nnew\n");
  // A link never takes a file's place unasked, and its target's times are not the copy's business.
  check(link + "echo old >to/l", FOP_COPY, {"l"}, "to", FOP_COPY_LINKS, {1}, "cat to/l",
        conflict("Copy/Move", "to/l") + "old\n");
  check(link + "touch -h -d @5 from/l; touch -d @9 outside", FOP_COPY, {"l"}, "to", FOP_COPY_LINKS, {},
        "stat -c '%F %Y' outside to/l", "regular empty file 9\nsymbolic link 5\n");
}

TEST_F(CopyTest, ThingsOfAnotherKindInTheWayAreTold) {
  const std::pair<std::string, std::string> rows[] = {
      {"mkfifo from/x; echo 1 >to/x", "The 'to/x' is not a FIFO\n"},
      {"mkdir -p from/x/y; echo 1 >from/x/y/z; echo 1 >to/x", "The 'to/x' is not a directory\n"},
      {"mkdir from/x; ln -s gone to/x", "Unable to make 'to/x' directory\n"},
      {"ln -s t from/x; mkdir to/x; echo 1 >to/x/y", "Unable to create symbolic link 'to/x' to\n't'\n"},
      {"echo 1 >from/x; mkdir to/x", "Error writing 'to/x'\nIs a directory\n"},
      {"echo 1 >from/x; mkfifo to/x", "Error writing 'to/x'\nNo such device or address\n"}};
  const std::string list = "ls -lR --time-style=+ to | grep -v other | tail -n +3";
  for (const auto& [make, told] : rows) {
    dir.shell("rm -rf from to && mkdir from to && echo other >from/other && " + make);
    const std::string before = dir.shell(list);
    go(FOP_COPY, {"x", "other"}, "to", {1}, FOP_OVERWRITE_ALL | FOP_COPY_LINKS);
    EXPECT_EQ(asked + read_file(dir / "to/other") + dir.shell(list),
              "Copy/Move|" + told + "|&Continue|&Abort" + "other\n" + before);
  }
}

TEST_F(CopyTest, CancelLeavesNoPartAndPauseHoldsStill) {
  dir.shell("head -c 9000000 /dev/urandom >from/big && cp from/big from/old && echo old >to/old");
  for (const char* name : {"big", "old"}) {
    go(FOP_COPY, {name}, "to", {}, FOP_OVERWRITE_ALL, [](fop_control& control, int percent) {
      if (percent >= 40) control.cancel = 1;
    });
    EXPECT_EQ(asked + dir.listing("to") + read_file(dir / "to/old"), "abortedold old\n");
  }
  std::atomic<fop_control*> held{nullptr};
  std::vector<off_t> sizes;
  const int timer = desk_timer_start(50, [&] {
    struct stat now;
    if (!held || !held.load()->pause || stat((dir / "to/big").c_str(), &now) != 0) return;
    sizes.push_back(now.st_size);
    if (sizes.size() == 4) held.load()->pause = 0;
  });
  go(FOP_COPY, {"big"}, "to", {}, 0, [&held](fop_control& control, int percent) {
    if (percent >= 30 && !held) control.pause = 1, held = &control;
  });
  desk_timer_stop(timer);
  EXPECT_EQ(sizes, std::vector<off_t>(4, sizes.back()));
  EXPECT_LT(sizes.back(), 9000000);
  dir.shell("cmp from/big to/big");
}

TEST_F(CopyTest, ATooLongPathIsRefusedAndATooLongNameAsked) {
  const std::string part(200, 'd'), to = "to/" + std::string(150, 't');
  std::string deep = dir / "from";
  while (deep.size() < 1000) mkdir((deep += "/" + part).c_str(), 0755);
  write_file(deep + "/" + std::string(200, 'f'), "text");
  dir.shell("mkdir " + to + " && printf text >from/f");
  go(FOP_COPY, {part}, to, {1});
  EXPECT_TRUE(asked.ends_with("'\nFile name too long\n|&Continue|&Abort")) << asked;
  ASSERT_EQ(chdir(dir.path().c_str()), 0);
  for (const char* chosen : {"", "short"}) {
    const auto choose = [chosen](fop_control&, int) { terminal_start().long_name = chosen; };
    go(FOP_MOVE, {"f"}, "to/" + std::string(256, 'n'), {}, 0, choose);
    EXPECT_EQ(asked + read_file(dir / "from/f") + "|" + read_file(dir / "short"),
              *chosen ? "|text" : "text|");
  }
}
