#include "core/settings.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "core/history.h"
#include "core/state.h"
#include "tests/support/temp_dir.h"

namespace {
std::string record_bytes(uint32_t flags) {
  Settings record;
  settings_defaults(&record);
  record.flags = flags;
  record.window_width = 777;
  return std::string(reinterpret_cast<char*>(&record), sizeof record);
}
}  // namespace

TEST(Settings, LoadsKeepsOrMigratesTheRecord) {
  const std::string none, kept = record_bytes(0xff000000u | SET_RM_NO_PROMPT);
  struct Row {
    const char* what;
    std::string bytes;
    uint32_t flags;
    int32_t width;
    bool apply_charset, dots;
  };
  const Row rows[] = {
      {"missing", none, 0x925, 600, true, false},
      {"short", kept.substr(0, 5691), 0x925, 600, true, false},
      {"this version", kept, 0xff000200u, 777, true, true},
      {"this version, hiding", record_bytes(0xff000201u), 0xff000201u, 777, true, false},
      {"longer", kept + "more", 0xff000200u, 777, true, true},
      {"flag word 0", record_bytes(0), 0x924, 777, false, true},
      {"older", record_bytes(0x10), 0x925, 777, true, false},
      {"half marked", record_bytes(0x7f000010), 0x925, 777, true, false},
  };
  for (const Row& row : rows) {
    TempDir dir;
    if (!row.bytes.empty()) write_file(dir / "config.003", row.bytes);
    gOptions = OPT_INITIAL;
    Settings record;
    EXPECT_EQ(settings_load(&record, dir.path().c_str(), "config.003"), row.apply_charset) << row.what;
    EXPECT_EQ(record.flags, row.flags) << row.what;
    EXPECT_EQ(record.window_width, row.width) << row.what;
    EXPECT_EQ((gOptions & OPT_DOT_PAIR) == OPT_DOT_PAIR, row.dots) << row.what;
  }
  gOptions = OPT_INITIAL;
}

TEST(Settings, WritesEveryFieldAtItsOffset) {
  TempDir dir;
  Settings record;
  settings_defaults(&record);
  ASSERT_EQ(init_save_config(&record, dir.path().c_str(), "config.003"), 0);
  const std::string bytes = read_file(dir / "config.003");
  ASSERT_EQ(bytes.size(), 5692u);
  std::string expected(5692, '\0');
  const auto word = [&](size_t offset, uint32_t value) { std::memcpy(&expected[offset], &value, 4); };
  const auto text = [&](size_t offset, const char* value) { expected.replace(offset, strlen(value), value); };
  word(0, 1), text(8, "kored @"), text(2056, "lpr @"), text(3080, "conwin");
  text(4104, "TextFont08"), text(4359, "TextFont08");
  word(4616, 125), word(4620, 50), word(4624, 105), word(4628, 53), word(4632, 53), word(4636, 75);
  word(4640, 190), word(4644, 410), word(4648, 600), word(4652, 1500), word(4656, 0xff000924u), word(4660, 1);
  expected[4664] = 1;
  EXPECT_EQ(bytes, expected);
}

TEST(Settings, ASaveThatFailsLeavesTheOldFileAndNothingElse) {
  TempDir dir;
  if (run_shell("mount -t tmpfs -o size=16k none '" + dir.path() + "' 2>/dev/null") != 0)
    GTEST_SKIP() << "needs the right to mount";
  Settings record;
  settings_defaults(&record);
  ASSERT_EQ(init_save_config(&record, dir.path().c_str(), "config.003"), 0);
  const std::string before = read_file(dir / "config.003");
  run_shell("head -c 100000 /dev/zero > '" + dir / "filler" + "' 2>/dev/null");
  record.window_width = 1;
  EXPECT_EQ(init_save_config(&record, dir.path().c_str(), "config.003"), -1);
  EXPECT_EQ(read_file(dir / "config.003"), before);
  std::string names;
  run_shell("ls '" + dir.path() + "'", &names);
  EXPECT_EQ(names, "config.003\nfiller\n");
  run_shell("umount '" + dir.path() + "'");
}

TEST(Settings, ASaveKeepsASymbolicLinkAndRefusesANullDirectory) {
  TempDir dir;
  mkdir((dir / "real").c_str(), 0700);
  symlink("real/kept", (dir / "config.003").c_str());
  write_file(dir / "real/kept", "old", 0640);
  Settings record;
  settings_defaults(&record);
  EXPECT_EQ(init_save_config(&record, dir.path().c_str(), "config.003"), 0);
  EXPECT_EQ(read_file(dir / "real/kept").size(), 5692u);
  struct stat status;
  ASSERT_EQ(lstat((dir / "config.003").c_str(), &status), 0);
  EXPECT_TRUE(S_ISLNK(status.st_mode));
  ASSERT_EQ(stat((dir / "real/kept").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640u);
  ASSERT_EQ(chdir(dir.path().c_str()), 0);
  EXPECT_EQ(init_save_config(&record, nullptr, "elsewhere"), -1);
  EXPECT_FALSE(path_exists(dir / "elsewhere"));
}

TEST(Settings, ASaveLeavesWhatIsNoFileOrReadOnly) {
  TempDir dir;
  Settings record;
  settings_defaults(&record);
  mkfifo((dir / "device").c_str(), 0666);
  symlink("device", (dir / "linked").c_str());
  mkdir((dir / "folder").c_str(), 0777);
  for (const char* name : {"device", "linked", "folder"})
    EXPECT_EQ(init_save_config(&record, dir.path().c_str(), name), -1) << name;
  struct stat status;
  ASSERT_EQ(stat((dir / "device").c_str(), &status), 0);
  EXPECT_TRUE(S_ISFIFO(status.st_mode));
  write_file(dir / "kept", "old", 0444);
  if (geteuid() == 0) {
    ASSERT_EQ(chmod(dir.path().c_str(), 0777), 0);
    ASSERT_EQ(chown((dir / "kept").c_str(), 65534, 65534), 0);
    ASSERT_EQ(seteuid(65534), 0);
  }
  EXPECT_EQ(init_save_config(&record, dir.path().c_str(), "kept"), -1);
  if (getuid() == 0) {
    ASSERT_EQ(seteuid(0), 0);
  }
  EXPECT_EQ(read_file(dir / "kept"), "old");
  std::string names;
  run_shell("ls '" + dir.path() + "'", &names);
  EXPECT_EQ(names, "device\nfolder\nkept\nlinked\n");
}

TEST(Settings, DamagedFilesOfAnyKindAreTakenInSilence) {
  TempDir dir;
  Settings record;
  write_file(dir / "full", std::string(5692, '\xff'));
  EXPECT_TRUE(settings_load(&record, dir.path().c_str(), "full"));
  EXPECT_EQ(strlen(record.editor), 2047u);
  EXPECT_EQ(strlen(record.encoding), 1024u);
  mkdir((dir / "folder").c_str(), 0700);
  mkfifo((dir / "fifo").c_str(), 0600);
  for (const char* name : {"folder", "fifo", "none"}) {
    EXPECT_TRUE(settings_load(&record, dir.path().c_str(), name)) << name;
    EXPECT_EQ(record.flags, 0x925u) << name;
    History* history = cl_read(dir.path().c_str(), name);
    EXPECT_EQ(history->count, 0) << name;
    cl_destroy(history);
  }
}

namespace {
std::string history_texts(const History* history) {
  std::string all;
  for (int n = 1; cl_get(history, n); ++n) all += std::string(cl_get(history, n)) + "|";
  return all;
}
}  // namespace

TEST(History, AddsMovesAndDropsTheOldest) {
  History history;
  for (int i = 1; i <= 4; ++i) cl_add(&history, std::to_string(i).c_str());
  EXPECT_EQ(history_texts(&history), "4|3|2|1|");
  history.flags = 0;
  cl_add(&history, "4");
  EXPECT_EQ(history.flags, 0u) << "the newest again is no change";
  cl_add(&history, "2");
  EXPECT_EQ(history_texts(&history), "2|4|3|1|");
  EXPECT_EQ(history.count, 4);
  cl_add(&history, cl_get(&history, 4));  // a text of the ring itself
  EXPECT_EQ(history_texts(&history), "1|2|4|3|");
  EXPECT_EQ(history.flags, 1u);
  for (int i = 10; i < 40; ++i) cl_add(&history, std::to_string(i).c_str());
  EXPECT_EQ(history.count, 20);
  EXPECT_STREQ(cl_get(&history, 1), "39");
  EXPECT_STREQ(cl_get(&history, 20), "20");
  EXPECT_EQ(cl_get(&history, 21), nullptr);
  EXPECT_EQ(cl_get(&history, 0), nullptr);
  cl_add(&history, "20");
  EXPECT_STREQ(cl_get(&history, 20), "21");
}

TEST(History, ReadsAndSavesItsFiles) {
  TempDir dir;
  std::string lines;
  for (int i = 1; i <= 21; ++i) lines += std::to_string(i) + "\n";
  const std::string long_line(1500, 'x');
  const std::pair<std::string, std::string> rows[] = {
      {"", ""},
      {"a\nb\n", "a|b|"},
      {"a\nb", "a|b|"},
      {"\n\nb\n", "||b|"},
      {std::string("a\0z\nb\n", 6), "a|b|"},
      {lines, "1|2|3|4|5|6|7|8|9|10|11|12|13|14|15|16|17|18|19|20|"},
      {long_line + "\nb\n", std::string(1022, 'x') + "|" + std::string(478, 'x') + "|b|"},
      {std::string(1022, 'y') + "\nb\n", std::string(1022, 'y') + "|b|"},
  };
  for (auto& [bytes, expected] : rows) {
    write_file(dir / "h", bytes);
    History* history = cl_read(dir.path().c_str(), "h");
    EXPECT_EQ(history_texts(history), expected);
    EXPECT_EQ(history->head, 0);
    EXPECT_EQ(history->flags, 1u);
    cl_destroy(history);
  }
  History history;
  for (const char* text : {"first", "with\nnewline", "last"}) cl_add(&history, text);
  cl_save(&history, dir.path().c_str(), "h");
  EXPECT_EQ(read_file(dir / "h"), "last\nfirst\n");
}

TEST(History, SavesThreeOfFiveAndGivesTheFilterItsStar) {
  TempDir dir;
  write_file(dir / "with.001", "viewer\n");
  init_read_cboxs(dir.path().c_str());
  EXPECT_EQ(history_texts(gSpecList), "*|");
  EXPECT_EQ(history_texts(gWithList), "viewer|");
  for (History* history : {gPathList, gSpecList, gWithList, gCopyList, gPatternList}) cl_add(history, "new");
  init_save_cboxs(dir.path().c_str());
  EXPECT_EQ(read_file(dir / "goto.001"), "new\n");
  EXPECT_EQ(read_file(dir / "fspec.001"), "new\n*\n");
  EXPECT_EQ(read_file(dir / "pattern.001"), "new\n");
  EXPECT_EQ(read_file(dir / "with.001"), "viewer\n");
  EXPECT_FALSE(path_exists(dir / "copy.001"));
  init_destroy_cboxs();
  EXPECT_EQ(gPathList, nullptr);
}

TEST(History, CompletesWithoutWebPrefixes) {
  History history;
  for (const char* text : {"/usr/local", "ftp://host/pub", "/usr/lib"}) cl_add(&history, text);
  const std::pair<const char*, const char*> rows[] = {
      {"file:///usr/lo", "/usr/local"}, {"/usr/l", "/usr/lib"}, {"host", "host/pub"},
      {"http://host/pub", "host/pub"},  {"/x", nullptr},        {"/usr/local/", nullptr}};
  for (auto& [text, expected] : rows) EXPECT_STREQ(cl_find_pattern(&history, text), expected) << text;
  EXPECT_EQ(cl_is_web_address("ftp:/x"), nullptr);
  EXPECT_STREQ(cl_is_web_address("gopher://x"), "x");
}
