#include <sys/socket.h>
#include <sys/un.h>

#include "tests/engine/fop_run.h"

using CopyTest = FopTest;

TEST_F(CopyTest, TheDestinationDecidesWhereItemsGo) {
  const struct {
    Names names;
    const char* to;
    std::vector<int> answers;
    std::string asked;  // the first question or notice begins so
    const char* made;   // what must be there; null: nothing was made
  } rows[] = {
      {{"f"}, "new", {}, "", "new"},
      {{"d"}, "to", {}, "", "to/d/g"},
      {{"d"}, "new/", {}, "", "new/g"},
      {{"f"}, "pipe", {}, "File Scan|Source and destination file types mismatch.|&Close", nullptr},
      {{"missing"}, "to", {}, "File Scan|Unable to get stats for '", nullptr},
      {{"f", "d"}, "new", {1}, "Make Directory|The '", "new/d/g"},
      {{"f", "d"}, "new", {2}, "Make Directory|The '", nullptr},
      {{"f", "d"}, "pipe", {}, "File Scan|Can't copy/move multiple files into \n'", nullptr},
      {{"d"}, "no/where", {}, "Make Directory|Unable to create '", nullptr},
  };
  const std::string kUntouched = "from from/d from/d/g from/f pipe to ";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.names[0] + " -> " + row.to);
    dir.shell("rm -rf * && mkdir -p from/d to && mkfifo pipe && echo text >from/f && echo more >from/d/g");
    go(FOP_COPY, row.names, dir / row.to, row.answers);
    EXPECT_EQ(run.aborted, !row.made);
    EXPECT_EQ(run.asked.empty() ? "" : run.asked[0].substr(0, row.asked.size()), row.asked);
    EXPECT_TRUE(row.made ? path_exists(dir / row.made) : dir.listing() == kUntouched) << dir.listing();
  }
}

TEST_F(CopyTest, ConflictsAreAskedUntilOverwriteAll) {
  const struct {
    std::vector<int> answers;
    size_t questions;
    const char* contents;  // of a, b, c afterwards: n new, o old
    bool aborted;
  } rows[] = {
      {{1, 2, 1}, 3, "ono", false}, {{3}, 1, "nnn", false}, {{2, 4}, 2, "noo", true}, {{}, 1, "ooo", true}};
  for (const auto& row : rows) {
    dir.shell("for n in a b c; do echo new >from/$n; echo old >to/$n; done");
    go(FOP_COPY, {"a", "b", "c"}, dir / "to", row.answers);
    EXPECT_EQ(run.asked.size(), row.questions);
    EXPECT_EQ(run.asked[0], "Copy/Move|The '" + (dir / "to/a") + kConflict);
    EXPECT_EQ(dir.shell("cut -c1 to/* | tr -d '\\n'"), row.contents);
    EXPECT_EQ(run.aborted, row.aborted);
  }
  EXPECT_EQ(dir.listing("to"), "a b c ") << "a temporary file is left";
}

TEST_F(CopyTest, NothingIsCopiedOntoOrIntoItself) {
  const bool bound = run_shell("cd '" + dir.path() +
                               "' && echo text >from/f && mkdir -p from/d/below mount && chmod 500 from/d && "
                               "ln from/f to/f && ln -s from alias && ln -s from/d/below inside && "
                               "mount --bind from/d/below mount 2>/dev/null") == 0;
  const struct {
    int kind;
    const char *from, *name, *to;
  } rows[] = {{FOP_COPY, "from", "f", "from"},   {FOP_COPY, "from", "f", "to"},
              {FOP_COPY, "alias", "f", "from"},  {FOP_COPY, "from", "d", "alias"},
              {FOP_COPY, "from", "d", "inside"}, {FOP_COPY, "from", "d", "alias/d/below/new"},
              {FOP_MOVE, "alias", "f", "from"},  {FOP_MOVE, "from", "d", "inside"},
              {FOP_COPY, "from", "d", "mount"},  {FOP_COPY, "from", "d", "mount/new"}};
  for (const auto& row : rows) {
    if (!bound && std::string(row.to).starts_with("mount")) continue;
    SCOPED_TRACE(std::string(row.from) + "/" + row.name + " -> " + row.to);
    run = FopRun{row.kind, dir / row.from, {row.name}, dir / row.to, FOP_OVERWRITE_ALL};
    fop_run(&run);
    const std::string verb = row.kind == FOP_COPY ? "copy" : "move";
    EXPECT_EQ(run.asked, Names{"File Scan|Can't " + verb + " file(s) into itself.|&Close"});
    EXPECT_TRUE(run.aborted);
    EXPECT_EQ(dir.listing("from") + dir.listing("to") + read_file(dir / "from/f"), "d d/below f f text\n");
    EXPECT_EQ(mode_of(dir / "from/d"), 0500u);
  }
  if (bound) dir.shell("umount mount");
}

TEST_F(CopyTest, LinksAreAskedAboutOnce) {
  dir.shell(
      "cd from && mkdir d && printf text >f && printf more >d/g && ln -s f l && ln -s d ld && ln -s .. d/up");
  go(FOP_COPY, {"l", "ld", "d"}, dir / "to", {2});
  EXPECT_EQ(run.asked, Names{"Copy|Symbolic links detected in the file list\nWhat do you want to copy ?"
                             "|&Files|@&Links|#&Abort"});
  EXPECT_EQ(link_target(dir / "to/l") + link_target(dir / "to/ld") + link_target(dir / "to/d/up"), "fd..");
  // Followed, a link that leads above itself is no endless tree.
  dir.shell("rm -rf to/*");
  go(FOP_COPY, {"l", "ld", "d"}, dir / "to", {1, 1, 1, 1});
  ASSERT_EQ(run.asked.size(), 3u);
  EXPECT_EQ(run.asked[1], "File Scan|Unable to stat '" + (dir / "from/ld/up") +
                              "'\nToo many levels of symbolic links\n|&Continue|&Abort");
  EXPECT_EQ(read_file(dir / "to/l") + read_file(dir / "to/ld/g"), "textmore");
}

TEST_F(CopyTest, ModesTimesAndKindsAreKept) {
  umask(022);
  dir.shell(
      "cd from && mkdir ro && echo a >ro/a && chmod 640 ro/a && mkfifo -m 600 ro/p && "
      "truncate -s 1G ro/hole && echo end >>ro/hole && echo s >ro/s && chmod 6755 ro/s && chmod 555 ro && "
      "touch -d @1000000000.123456789 ro/a ro");
  const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  sockaddr_un address{AF_UNIX, "socket"};
  ASSERT_EQ(chdir((dir / "from").c_str()), 0);
  ASSERT_EQ(bind(fd, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  close(fd);
  go(FOP_COPY, {"ro", "socket"}, dir / "to");
  EXPECT_TRUE(run.asked.empty()) << run.asked[0];
  EXPECT_EQ(run.items, 6);
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
    go(FOP_COPY, {"f"}, dir / "to", {answer});
    EXPECT_EQ(run.asked, Names{"Copy/Move|The '" + (dir / "to/f") + kConflict});
    EXPECT_EQ(read_file(dir / "to/f"), answer == 1 ? "" : "new\n");
    EXPECT_FALSE(path_exists(dir / "absent"));
  }
  // A link never takes a file's place unasked, and its target's times and owner are not the copy's business.
  go(FOP_COPY, {"l"}, dir / "to", {1}, FOP_COPY_LINKS);
  EXPECT_EQ(run.asked, Names{"Copy/Move|The '" + (dir / "to/l") + kConflict});
  EXPECT_EQ(read_file(dir / "to/l"), "old\n");
  unlink((dir / "to/l").c_str());
  go(FOP_COPY, {"l"}, dir / "to", {}, FOP_COPY_LINKS);
  EXPECT_EQ(dir.shell("stat -c '%F %Y' outside to/l"), "regular empty file 9\nsymbolic link 5\n");
}

TEST_F(CopyTest, ThingsOfAnotherKindInTheWayAreTold) {
  const std::string x = dir / "to/x";
  const struct {
    const char* make;
    std::string asked;
  } rows[] = {
      {"mkfifo from/x; echo 1 >to/x", "The '" + x + "' is not a FIFO\n"},
      {"mkdir -p from/x/y; echo 1 >from/x/y/z; echo 1 >to/x", "The '" + x + "' is not a directory\n"},
      {"mkdir from/x; ln -s gone to/x", "Unable to make '" + x + "' directory\n"},
      {"ln -s t from/x; mkdir to/x; echo 1 >to/x/y", "Unable to create symbolic link '" + x + "' to\n't'\n"},
      {"echo 1 >from/x; mkdir to/x", "Error writing '" + x + "'\nIs a directory\n"},
      {"echo 1 >from/x; mkfifo to/x", "Error writing '" + x + "'\nNo such device or address\n"},
  };
  const std::string list = "ls -lR --time-style=+ to | grep -v other | tail -n +3";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.make);
    dir.shell(std::string("rm -rf from to && mkdir from to && echo other >from/other && ") + row.make);
    const std::string before = dir.shell(list);
    go(FOP_COPY, {"x", "other"}, dir / "to", {1}, FOP_OVERWRITE_ALL | FOP_COPY_LINKS);
    EXPECT_EQ(run.asked, Names{"Copy/Move|" + row.asked + "|&Continue|&Abort"});
    EXPECT_FALSE(run.aborted);
    EXPECT_EQ(read_file(dir / "to/other"), "other\n");
    EXPECT_EQ(dir.shell(list), before);
  }
}

TEST_F(CopyTest, CancelLeavesNoPartAndPauseHoldsStill) {
  dir.shell("head -c 9000000 /dev/urandom >from/big && cp from/big from/old && echo old >to/old");
  for (const char* name : {"big", "old"}) {
    go(FOP_COPY, {name}, dir / "to", {}, FOP_OVERWRITE_ALL, [](fop_control& control, int percent) {
      if (percent >= 40) control.cancel = 1;
    });
    EXPECT_TRUE(run.aborted);
  }
  EXPECT_EQ(dir.listing("to"), "old ");
  EXPECT_EQ(read_file(dir / "to/old"), "old\n") << "what was there is still whole";
  std::atomic<fop_control*> held{nullptr};
  std::vector<off_t> sizes;
  const int timer = desk_timer_start(50, [&] {
    struct stat now;
    if (!held || !held.load()->pause || stat((dir / "to/big").c_str(), &now) != 0) return;
    sizes.push_back(now.st_size);
    if (sizes.size() == 4) held.load()->pause = 0;
  });
  go(FOP_COPY, {"big"}, dir / "to", {}, 0, [&held](fop_control& control, int percent) {
    if (percent >= 30 && !held) control.pause = 1, held = &control;
  });
  desk_timer_stop(timer);
  ASSERT_EQ(sizes.size(), 4u);
  EXPECT_EQ(sizes.front(), sizes.back());
  EXPECT_LT(sizes.back(), 9000000);
  dir.shell("cmp from/big to/big");
}

TEST_F(CopyTest, ATooLongPathIsRefusedAndATooLongNameAsked) {
  const std::string part(200, 'd'), to = dir / "to/" + std::string(150, 't');
  std::string deep = dir / "from";
  while (deep.size() < 1000) mkdir((deep += "/" + part).c_str(), 0755);
  write_file(deep + "/" + std::string(200, 'f'), "text");
  mkdir(to.c_str(), 0755);
  go(FOP_COPY, {part}, to, {1});
  ASSERT_EQ(run.asked.size(), 1u);
  EXPECT_NE(run.asked[0].find("File name too long"), std::string::npos);

  write_file(dir / "from/f", "text");
  ASSERT_EQ(chdir(dir.path().c_str()), 0);
  for (const char* chosen : {"", "short"}) {
    const auto choose = [chosen](fop_control&, int) { terminal_start().long_name = chosen; };
    go(FOP_COPY, {"f"}, dir / "to/" + std::string(256, 'n'), {}, 0, choose);
    EXPECT_TRUE(run.asked.empty());
    EXPECT_EQ(read_file(dir / "short"), *chosen ? "text" : "");
  }
}
