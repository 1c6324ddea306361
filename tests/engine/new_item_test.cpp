#include "commands/new_item.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstring>

#include "core/state.h"
#include "platform/desktop.h"
#include "platform/terminal/terminal.h"
#include "tests/support/slow_mount.h"
#include "tests/support/temp_dir.h"
#include "views/fname.h"

namespace {

mode_t mode_of(const std::string& path) {
  struct stat status;
  return lstat(path.c_str(), &status) == 0 ? status.st_mode : 0;
}

}  // namespace

TEST(NewItem, CreatesWithTheUmaskApplied) {
  TempDir dir;
  const mode_t before = umask(027);
  for (const int kind : {1, 0, -2}) {
    const std::string name = "item " + std::to_string(kind);
    const NewItemResult result = new_item_create(kind, dir.path(), name);
    EXPECT_TRUE(result.created) << kind;
    EXPECT_EQ(result.message, "") << kind;
    EXPECT_EQ(result.name, name);
    EXPECT_EQ(mode_of(dir / name), kind == 1 ? S_IFREG | 0640 : S_IFDIR | 0750) << kind;
  }
  umask(before);
}

TEST(NewItem, RefusesWithItsMessage) {
  TempDir dir;
  write_file(dir / "file", "kept");
  ASSERT_EQ(mkdir((dir / "folder").c_str(), 0700), 0);
  ASSERT_EQ(symlink("nowhere", (dir / "dangling").c_str()), 0);
  struct Row {
    int kind;
    std::string typed, message, shown;  // shown: the entry gone to after the list was read again
  };
  const std::string long_name(255, 'n'), fits(254, 'n');
  const Row rows[] = {
      {1, "", "", ""},
      {0, "", "", ""},
      {1, long_name, "Name too long!", ""},
      {0, long_name, "Name too long!", ""},
      {1, "file", "File or directory 'file' already exists", ""},
      {0, "file", "File or directory 'file' already exists", ""},
      {1, "folder", "File or directory 'folder' already exists", ""},
      {1, "dangling", "File or directory 'dangling' already exists", ""},
      {0, "dangling", "File or directory 'dangling' already exists", ""},
      {1, "missing/x", "Unable to create file 'missing/x'\n", "missing/x"},
      {0, "missing/x", "Unable to create directory 'missing/x'", ""},
      {1, "file/x", "Unable to create file 'file/x'\n", "file/x"},
  };
  for (const Row& row : rows) {
    const NewItemResult result = new_item_create(row.kind, dir.path(), row.typed);
    EXPECT_EQ(result.message, row.message) << row.typed;
    EXPECT_EQ(result.name, row.shown) << row.typed;
    EXPECT_FALSE(result.created) << row.typed;
  }
  EXPECT_EQ(read_file(dir / "file"), "kept");
  EXPECT_FALSE(path_exists(dir / "nowhere")) << "created through a link";
  EXPECT_FALSE(path_exists(dir / long_name));
  EXPECT_TRUE(new_item_create(1, dir.path(), fits).created) << "254 bytes are allowed";
}

TEST(NewItem, NamesThatLookLikeSomethingElseAreNames) {
  TempDir dir;
  for (const std::string name : {"-rf", "$(touch x)", "a\nb", "'", " ", "*", "..."}) {
    EXPECT_TRUE(new_item_create(1, dir.path(), name).created) << name;
    EXPECT_TRUE(path_exists(dir / name)) << name;
  }
}

TEST(NewItem, ConvertsToTheAlternateEncodingOrSaysThatItCannot) {
  TempDir dir;
  const uint32_t before = gConfig->flags;
  gConfig->flags = (before & ~SET_ENC_MASK) | SET_ENC_ALTERNATE;
  strcpy(gConfig->encoding, "ISO-8859-1");
  fname_set_translation("ISO-8859-1");
  EXPECT_EQ(new_item_create(1, dir.path(), "caf\xc3\xa9").name, "caf\xe9");
  EXPECT_TRUE(path_exists(dir / "caf\xe9"));
  const NewItemResult refused = new_item_create(0, dir.path(), "\xe6\xbc\xa2");
  EXPECT_EQ(refused.message, "Unable to translate '\xe6\xbc\xa2' into 'ISO-8859-1' encoding.");
  EXPECT_FALSE(refused.created);
  gConfig->flags = before;
  gConfig->encoding[0] = '\0';
  fname_set_translation("");
}

// Ends after the ten seconds that a file system is given, while events run.
TEST(NewItem, AFileSystemThatHangsDoesNotTakeTheWindowWithIt) {
  SlowMount mount("lookup", 600000);
  if (!mount.mounted()) GTEST_SKIP() << "no file system in user space here";
  terminal_start() = Terminal();
  int ticks = 0;
  const int timer = desk_timer_start(50, [&] { ticks++; });
  const NewItemResult result = new_item_create(1, mount.path(), "entry05");
  desk_timer_stop(timer);
  EXPECT_EQ(result.message, "Unable to create file 'entry05'\n");
  EXPECT_FALSE(result.created);
  EXPECT_GT(ticks, 3);
  EXPECT_GE(mount.hung(), 1);
}
