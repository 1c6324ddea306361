#include "commands/new_item.h"

#include "tests/support/encoding.h"
#include "tests/support/temp_dir.h"

TEST(NewItem, CreatesWithTheUmaskApplied) {
  TempDir dir;
  const mode_t before = umask(027);
  const std::pair<int, std::string> rows[] = {{1, "-rf"}, {0, "a\nb '$(x)"}, {-2, std::string(254, 'n')}};
  for (const auto& [kind, name] : rows) {
    const NewItemResult result = new_item_create(kind, dir.path(), name);
    EXPECT_TRUE(result.created && result.name == name) << name;
  }
  umask(before);
  EXPECT_EQ(dir.shell("stat -c '%F %a' -- *"), "regular empty file 640\ndirectory 750\ndirectory 750\n");
}

TEST(NewItem, RefusesWithItsMessage) {
  TempDir dir;
  dir.shell("printf kept >file && mkdir folder && ln -s nowhere dangling");
  // Typed is the kind's first letter and the name; told the message and the entry gone to after the list was
  // read.
  const auto told = [&](const std::string& typed) {
    const NewItemResult result = new_item_create(typed[0] == 'f', dir.path(), typed.substr(1));
    return result.created ? "created" : result.message + ">" + result.name;
  };
  const std::string taken = "File or directory '", exists = "' already exists>|";
  EXPECT_EQ(
      each<std::string>(
          {"f", "d" + std::string(255, 'n'), "ffile", "fdangling", "ddangling", "fmissing/x", "dmissing/x"},
          told),
      ">|Name too long!>|" + taken + "file" + exists + taken + "dangling" + exists + taken + "dangling" +
          exists + "Unable to create file 'missing/x'\n>missing/x|Unable to create directory 'missing/x'>|");
  EXPECT_EQ(dir.listing() + read_file(dir / "file"), "dangling file folder kept");
}

TEST(NewItem, ConvertsToTheAlternateEncodingOrSaysThatItCannot) {
  TempDir dir;
  const Encoding encoding(SET_ENC_ALTERNATE, "ISO-8859-1");
  EXPECT_TRUE(new_item_create(1, dir.path(), "caf\xc3\xa9").name == "caf\xe9" && dir.listing() == "caf\xe9 ");
  EXPECT_EQ(new_item_create(0, dir.path(), "\xe6\xbc\xa2").message,
            "Unable to translate '\xe6\xbc\xa2' into 'ISO-8859-1' encoding.");
}
