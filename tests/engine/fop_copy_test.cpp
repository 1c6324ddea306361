#include "tests/engine/fop_run.h"

using CopyTest = FopTest;

TEST_F(CopyTest, TheDestinationDecidesWhereItemsGo) {
  const std::string missing =
      "Make Directory|The 'new' directory doesn't exist\nDo you want to create this directory ?|&Yes|&Abort";
  const std::tuple<Names, const char*, std::vector<int>, Names, const char*> rows[] = {
      {{"f"}, "new", {}, {}, "new to "},
      {{"d"}, "to", {}, {}, "to to/d to/d/g "},
      {{"d"}, "new/", {}, {}, "new new/g to "},
      {{"f"}, "pipe", {}, {"File Scan|Source and destination file types mismatch.|&Close"}, "to "},
      {{"missing"}, "to", {}, {"File Scan|Unable to get stats for 'from/missing'|&Close"}, "to "},
      {{"f", "d"}, "new", {1}, {missing}, "new new/d new/d/g new/f to "},
      {{"f", "d"}, "new", {2}, {missing}, "to "},
      {{"f", "d"}, "pipe", {}, {"File Scan|Can't copy/move multiple files into \n'pipe'\n|&Close"}, "to "},
      {{"d"}, "no/where", {}, {"Make Directory|Unable to create 'no/where' directory\n|&Close"}, "to "}};
  for (const auto& [names, to, answers, questions, made] : rows) {
    dir.shell("rm -rf * && mkdir -p from/d to && mkfifo pipe && echo text >from/f && echo more >from/d/g");
    go(FOP_COPY, names, to, answers);
    Names expected = questions;
    if (std::string(made) == "to ") expected.push_back("aborted");
    EXPECT_EQ(asked, expected) << names[0] << to;
    dir.shell("rm -r from/f from/d/g pipe && rmdir from/d from");
    EXPECT_EQ(dir.listing(), made) << names[0] << to;
  }
}

TEST_F(CopyTest, ConflictsAreAskedUntilOverwriteAll) {
  // Answers, how many questions, what a, b and c hold afterwards.
  const std::tuple<std::vector<int>, size_t, const char*, bool> rows[] = {
      {{1, 2, 1}, 3, "old new old", false},
      {{3}, 1, "new new new", false},
      {{2, 4}, 2, "new old old", true},
      {{}, 1, "old old old", true}};
  for (const auto& [answers, questions, contents, aborted] : rows) {
    dir.shell("for n in a b c; do echo new >from/$n; echo old >to/$n; done");
    go(FOP_COPY, {"a", "b", "c"}, "to", answers);
    EXPECT_EQ(asked.size(), questions + aborted);
    EXPECT_EQ(asked[0] + asked.back().substr(0, 7 * aborted),
              conflict("Copy/Move", "to/a") + (aborted ? "aborted" : ""));
    EXPECT_EQ(dir.shell("echo `cat to/*`"), contents + std::string("\n"));
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
    EXPECT_EQ(asked, (Names{"File Scan|Can't " + verb + " file(s) into itself.|&Close", "aborted"})) << to;
    EXPECT_EQ(dir.listing("from") + dir.listing("to") + read_file(dir / "from/f"), "d d/below f f text\n");
    EXPECT_EQ(mode_of(dir / "from/d"), 0500u);
  }
  dir.shell("[ ! -d mount ] || umount mount");
}

TEST_F(CopyTest, LinksAreAskedAboutOnce) {
  dir.shell(
      "cd from && mkdir d && printf text >f && printf more >d/g && ln -s f l && ln -s d ld && ln -s .. d/up");
  go(FOP_COPY, {"l", "ld", "d"}, "to", {2});
  EXPECT_EQ(asked, Names{"Copy|Symbolic links detected in the file list\nWhat do you want to copy ?"
                         "|&Files|@&Links|#&Abort"});
  EXPECT_EQ(link_target(dir / "to/l") + link_target(dir / "to/ld") + link_target(dir / "to/d/up"), "fd..");
  // Followed, a link that leads above itself is no endless tree.
  dir.shell("rm -rf to/*");
  go(FOP_COPY, {"l", "ld", "d"}, "to", {1, 1, 1, 1});
  ASSERT_EQ(asked.size(), 3u);
  EXPECT_EQ(asked[1],
            "File Scan|Unable to stat 'from/ld/up'\nToo many levels of symbolic links\n|&Continue|&Abort");
  EXPECT_EQ(read_file(dir / "to/l") + read_file(dir / "to/ld/g"), "textmore");
}

TEST_F(CopyTest, ModesTimesAndKindsAreKept) {
  umask(022);
  dir.shell(
      "cd from && mkdir ro && echo a >ro/a && chmod 640 ro/a && mkfifo -m 600 ro/p && "
      "truncate -s 1G ro/hole && echo end >>ro/hole && echo s >ro/s && chmod 6755 ro/s && chmod 555 ro && "
      "touch -d @1000000000.123456789 ro/a ro");
  ASSERT_EQ(mknod((dir / "from/socket").c_str(), S_IFSOCK | 0644, 0), 0);
  go(FOP_COPY, {"ro", "socket"}, "to");
  EXPECT_EQ(asked, Names());
  EXPECT_EQ(items, 6);
  EXPECT_EQ(dir.shell("find to -mindepth 1 -printf '%P %y%m %T@\\n' | sed '/ro.[hps]/s/ [^ ]*$//' | sort"),
            "ro d555 1000000000.1234567890\nro/a f640 1000000000.1234567890\nro/hole f644\nro/p p600\n"
            "ro/s f6755\n");
  EXPECT_EQ(dir.shell("cd to/ro && [ $(stat -c %b hole) -lt 100 ] && stat -c %s hole && tail -c 4 hole"),
            "1073741828\nend\n");
}

TEST_F(CopyTest, WhatIsInTheWayIsNotWrittenThrough) {
  dir.shell(
      "echo new >from/f && ln -s ../absent to/f && ln -s ../outside from/l && echo old >to/l && "
      "touch -h -d @5 from/l && touch -d @9 outside");
  for (const int answer : {1, 2}) {  // a dangling link is a conflict like any other
    go(FOP_COPY, {"f"}, "to", {answer});
    EXPECT_EQ(asked, Names{conflict("Copy/Move", "to/f")});
    EXPECT_EQ(read_file(dir / "to/f"), answer == 1 ? "" : "new\n");
    EXPECT_FALSE(path_exists(dir / "absent"));
  }
  // A link never takes a file's place unasked, and its target's times and owner are not the copy's business.
  go(FOP_COPY, {"l"}, "to", {1}, FOP_COPY_LINKS);
  EXPECT_EQ(asked, Names{conflict("Copy/Move", "to/l")});
  EXPECT_EQ(read_file(dir / "to/l"), "old\n");
  unlink((dir / "to/l").c_str());
  go(FOP_COPY, {"l"}, "to", {}, FOP_COPY_LINKS);
  EXPECT_EQ(dir.shell("stat -c '%F %Y' outside to/l"), "regular empty file 9\nsymbolic link 5\n");
}

TEST_F(CopyTest, ThingsOfAnotherKindInTheWayAreTold) {
  const std::pair<std::string, const char*> rows[] = {
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
    EXPECT_EQ(asked, Names{std::string("Copy/Move|") + told + "|&Continue|&Abort"}) << make;
    EXPECT_EQ(read_file(dir / "to/other") + dir.shell(list), "other\n" + before) << make;
  }
}

TEST_F(CopyTest, CancelLeavesNoPartAndPauseHoldsStill) {
  dir.shell("head -c 9000000 /dev/urandom >from/big && cp from/big from/old && echo old >to/old");
  for (const char* name : {"big", "old"}) {
    go(FOP_COPY, {name}, "to", {}, FOP_OVERWRITE_ALL, [](fop_control& control, int percent) {
      if (percent >= 40) control.cancel = 1;
    });
    EXPECT_EQ(asked, Names{"aborted"});
  }
  EXPECT_EQ(dir.listing("to") + read_file(dir / "to/old"), "old old\n");
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
  mkdir((dir / to).c_str(), 0755);
  go(FOP_COPY, {part}, to, {1});
  ASSERT_EQ(asked.size(), 1u);
  EXPECT_NE(asked[0].find("File name too long"), std::string::npos);

  write_file(dir / "from/f", "text");
  ASSERT_EQ(chdir(dir.path().c_str()), 0);
  for (const char* chosen : {"", "short"}) {
    const auto choose = [chosen](fop_control&, int) { terminal_start().long_name = chosen; };
    go(FOP_COPY, {"f"}, "to/" + std::string(256, 'n'), {}, 0, choose);
    EXPECT_EQ(asked, Names());
    EXPECT_EQ(read_file(dir / "short"), *chosen ? "text" : "");
  }
}
