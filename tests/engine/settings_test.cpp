#include "core/settings.h"

#include <cstring>

#include "core/history.h"
#include "core/save_file.h"
#include "core/state.h"
#include "tests/support/temp_dir.h"

static std::string record_bytes(uint32_t flags) {
  Settings record;
  settings_defaults(&record);
  record.flags = flags;
  record.window_width = 777;
  return std::string(reinterpret_cast<char*>(&record), sizeof record);
}

static std::string history_texts(const History* history) {
  std::string all;
  for (int i = 1; i <= history->count; ++i) all += std::string(cl_get(history, i)) + "|";
  return all;
}

TEST(Settings, LoadsKeepsOrMigratesTheRecord) {
  const std::string kept = record_bytes(0xff000000u | SET_RM_NO_PROMPT);
  const std::tuple<const char*, std::string, uint32_t, int32_t, bool, bool> rows[] = {
      {"missing", "", 0x925, 600, true, false},
      {"short", kept.substr(0, 5691), 0x925, 600, true, false},
      {"this version", kept, 0xff000200u, 777, true, true},
      {"longer", kept + "more", 0xff000200u, 777, true, true},
      {"flag word 0", record_bytes(0), 0x924, 777, false, true},
      {"half marked", record_bytes(0x7f000010), 0x925, 777, true, false},
      {"no text ends", std::string(5692, '\xff'), 0xffffffff, -1, true, false}};
  for (const auto& [what, bytes, flags, width, apply_charset, dots] : rows) {
    TempDir dir;
    if (!bytes.empty()) write_file(dir / "config.003", bytes);
    gOptions = OPT_INITIAL;
    Settings record;
    const bool applied = settings_load(&record, dir.path().c_str(), "config.003");
    EXPECT_TRUE(record.flags == flags && record.window_width == width && applied == apply_charset) << what;
    EXPECT_EQ((gOptions & OPT_DOT_PAIR) == OPT_DOT_PAIR, dots) << what;
    EXPECT_LT(strlen(record.list_font), sizeof record.list_font) << what;
  }
  gOptions = OPT_INITIAL;
}

TEST(Settings, WritesEveryFieldAtItsOffset) {
  TempDir dir;
  Settings record;
  settings_defaults(&record);
  ASSERT_EQ(init_save_config(&record, dir.path().c_str(), "config.003"), 0);
  std::string expected(5692, '\0');
  const auto word = [&](size_t offset, uint32_t value) { std::memcpy(&expected[offset], &value, 4); };
  const auto text = [&](size_t offset, const char* value) { expected.replace(offset, strlen(value), value); };
  word(0, 1), text(8, "kored @"), text(2056, "lpr @"), text(3080, "conwin");
  text(4104, "TextFont08"), text(4359, "TextFont08");
  word(4616, 125), word(4620, 50), word(4624, 105), word(4628, 53), word(4632, 53), word(4636, 75);
  word(4640, 190), word(4644, 410), word(4648, 600), word(4652, 1500), word(4656, 0xff000924u), word(4660, 1);
  expected[4664] = 1;
  EXPECT_EQ(read_file(dir / "config.003"), expected);
}

TEST(Settings, WhatAnotherWindowHasStoredIsKept) {
  TempDir dir;
  Settings mine, theirs;
  settings_load(&mine, dir.path().c_str(), "config.003");
  theirs = mine;
  theirs.cdirs = 2, theirs.window_width = 700, theirs.column_width[1] = 80;
  theirs.flags ^= SET_RM1_PROMPT | SET_RM1_NO_PROMPT | SET_SYM_PROMPT | SET_SYM_FILES;
  init_save_config(&theirs, dir.path().c_str(), "config.003");
  mine.window_width = 800, mine.flags ^= SET_RM1_PROMPT | SET_RM1_PROMPT_NOWR;
  settings_take_over(&mine, dir.path().c_str(), "config.003");
  EXPECT_TRUE(mine.cdirs == 2 && mine.column_width[1] == 80 && mine.window_width == 800);
  EXPECT_EQ(mine.flags & 0xfc, uint32_t(SET_RM1_PROMPT_NOWR | SET_SYM_FILES));
}

TEST(SaveFile, AFullDiskLeavesTheOldFileAndNothingElse) {
  TempDir dir;
  if (run_shell("mount -t tmpfs -o size=16k none '" + dir.path() + "' 2>/dev/null") != 0)
    GTEST_SKIP() << "needs the right to mount";
  EXPECT_EQ(save_file(dir.path().c_str(), "kept", "old"), 0);
  EXPECT_EQ(save_file(dir.path().c_str(), "kept", std::string(17000, 'x')), -1);
  EXPECT_EQ(dir.listing() + read_file(dir / "kept"), "kept old");
  dir.shell("umount -l .");
}

TEST(SaveFile, KeepsLinksAndModesAndLeavesWhatIsNoFileOrReadOnly) {
  TempDir dir;
  dir.shell(
      "mkdir -m 777 real folder && printf old >real/kept && chmod 640 real/kept && ln -s real/kept link && "
      "mkfifo -m 644 device && ln -s device linked && printf old >closed && chmod 444 closed");
  const char* path = dir.path().c_str();
  EXPECT_EQ(save_file(path, "link", "new"), 0);
  ASSERT_EQ(chdir(path), 0);
  EXPECT_TRUE(save_file(nullptr, "here", "new") == -1 &&
              save_file((dir / "none").c_str(), "file", "new") == -1);
  for (const char* name : {"device", "linked", "folder"}) EXPECT_EQ(save_file(path, name, "new"), -1) << name;
  if (geteuid() == 0) {
    dir.shell("chmod 777 . && chown 65534 closed");
    ASSERT_EQ(seteuid(65534), 0);
  }
  EXPECT_EQ(save_file(path, "closed", "new"), -1);
  EXPECT_EQ(seteuid(getuid()), 0);
  EXPECT_EQ(dir.shell("cat closed real/kept && find * -printf '%p %y %m %l\\n' | sort"),
            "oldnewclosed f 444 \ndevice p 644 \nfolder d 777 \nlink l 777 real/kept\nlinked l 777 device\n"
            "real d 777 \nreal/kept f 640 \n");
}

TEST(History, KeepsTwentyAndBringsToTheFront) {
  History history;
  for (const char* text : {"1", "2", "3", "4", "2", "2"}) cl_add(&history, text);
  EXPECT_EQ(history_texts(&history), "2|4|3|1|");
  for (int i = 10; i < 40; ++i) cl_add(&history, std::to_string(i).c_str());
  EXPECT_EQ(history_texts(&history), "39|38|37|36|35|34|33|32|31|30|29|28|27|26|25|24|23|22|21|20|");
}

TEST(History, ReadsAndSavesItsFiles) {
  TempDir dir;
  const std::string long_line(1500, 'x');
  const std::pair<std::string, std::string> rows[] = {
      {"a\nb", "a|b|"},
      {std::string("a\0z\nb\n", 6), "a|b|"},
      {"1\n2\n3\n4\n5\n6\n7\n8\n9\n10\n11\n12\n13\n14\n15\n16\n17\n18\n19\n20\n21\n",
       "1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16|17|18|19|20|"},
      {long_line + "\nb\n", std::string(1022, 'x') + "|" + std::string(478, 'x') + "|b|"}};
  for (const auto& [bytes, expected] : rows) {
    write_file(dir / "h", bytes);
    History* history = cl_read(dir.path().c_str(), "h");
    EXPECT_EQ(history_texts(history), expected);
    cl_destroy(history);
  }
  History history;
  for (const char* text : {"first", "with\nnewline", long_line.c_str(), "last"}) cl_add(&history, text);
  cl_save(&history, dir.path().c_str(), "h");
  EXPECT_EQ(read_file(dir / "h"), "last\nfirst\n");
}
