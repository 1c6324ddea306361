#include "commands/new_item.h"

#include "core/state.h"
#include "tests/support/temp_dir.h"
#include "views/fname.h"

TEST(NewItem, CreatesWithTheUmaskApplied) {
  TempDir dir;
  const mode_t before = umask(027);
  const std::pair<int, std::string> rows[] = {{1, "-rf"}, {0, "a\nb '$(x)"}, {-2, std::string(254, 'n')}};
  for (const auto& [kind, name] : rows) {
    const NewItemResult result = new_item_create(kind, dir.path(), name);
    EXPECT_TRUE(result.created) << name;
    EXPECT_EQ(result.name, name);
  }
  umask(before);
  EXPECT_EQ(dir.shell("stat -c '%F %a' -- *"), "regular empty file 640\ndirectory 750\ndirectory 750\n");
}

TEST(NewItem, RefusesWithItsMessage) {
  TempDir dir;
  dir.shell("printf kept >file && mkdir folder && ln -s nowhere dangling");
  const std::string exists = "' already exists";
  // Shown is the entry gone to after the list was read again.
  const std::tuple<int, std::string, std::string, std::string> rows[] = {
      {1, "", "", ""},
      {0, std::string(255, 'n'), "Name too long!", ""},
      {1, "file", "File or directory 'file" + exists, ""},
      {1, "dangling", "File or directory 'dangling" + exists, ""},
      {0, "dangling", "File or directory 'dangling" + exists, ""},
      {1, "missing/x", "Unable to create file 'missing/x'\n", "missing/x"},
      {0, "missing/x", "Unable to create directory 'missing/x'", ""}};
  for (const auto& [kind, typed, message, shown] : rows) {
    const NewItemResult result = new_item_create(kind, dir.path(), typed);
    EXPECT_EQ(result.message + "|" + result.name, message + "|" + shown) << typed;
    EXPECT_FALSE(result.created) << typed;
  }
  EXPECT_EQ(dir.listing() + read_file(dir / "file"), "dangling file folder kept");
}

TEST(NewItem, ConvertsToTheAlternateEncodingOrSaysThatItCannot) {
  TempDir dir;
  const uint32_t before = gConfig->flags;
  gConfig->flags = (before & ~SET_ENC_MASK) | SET_ENC_ALTERNATE;
  snprintf(gConfig->encoding, sizeof gConfig->encoding, "ISO-8859-1");
  fname_set_translation("ISO-8859-1");
  EXPECT_EQ(new_item_create(1, dir.path(), "caf\xc3\xa9").name, "caf\xe9");
  EXPECT_EQ(dir.listing(), "caf\xe9 ");
  EXPECT_EQ(new_item_create(0, dir.path(), "\xe6\xbc\xa2").message,
            "Unable to translate '\xe6\xbc\xa2' into 'ISO-8859-1' encoding.");
  gConfig->flags = before;
  gConfig->encoding[0] = '\0';
  fname_set_translation("");
}
