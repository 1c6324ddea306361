#include "dirmodel/dir_read.h"
#include "dirmodel/text.h"
#include "platform/terminal/terminal.h"
#include "tests/support/shown_dir.h"
#include "views/path_complete.h"
#include "views/status_line.h"

TEST(PathComplete, FindsTheLongestCommonBeginning) {
  terminal_start();
  TempDir dir;
  dir.shell("mkdir -p usr/lib usr/local usr/.dot one/only x && touch usr/loud && ln -s usr link");
  dir.shell("ln -s gone broken");
  const auto completed = [&](const char* typed) {
    const char* found = find_matching_dir((dir.path() + typed).c_str());
    return found ? found + dir.path().size() : "-";
  };
  EXPECT_EQ(each<const char*>({"/us", "/usr/l", "/usr/lo", "/usr/.", "/li", "/usr/z", "/one/", "/br",
                               "/none/x", "/x/", "/usr//lo"},
                              completed),
            "/usr/|/usr/l|/usr/local/|/usr/.dot/|/link/|-|/one/only/|-|-|-|/usr//local/|");
  EXPECT_STREQ(find_matching_dir("/pro"), "/proc/");
}

TEST(StatusLine, CountsAndSums) {
  DirRecord dir;
  EXPECT_EQ(status_directory_text(dir), "0 item, 0 bytes");
  for (const int64_t size : {int64_t{1024}, int64_t{3} << 30, int64_t{500}}) record_add(&dir, "x", size);
  EXPECT_EQ(status_directory_text(dir), "3 items, 3072.0MB");
  EXPECT_EQ(status_selection_text(dir), "");
  for (const int i : {0, 2}) dir.entries[i]->flags |= ENTRY_SELECTED;
  dir.sel_count = 2;
  EXPECT_EQ(status_selection_text(dir), "2 selected items, 1.5KB");
  dir_free(&dir);
}

TEST(ZanOpList, PrintsWhatTheListShows) {
  TempDir dir;
  dir.shell("mkdir sub && printf 12345 >five && printf 1 >one && ln -s one link && touch .dot 'new\nline'");
  const std::string names = " . | cut -f1 | tr '\n' ' '";
  const std::pair<std::string, const char*> rows[] = {
      {names, ".dot five link new line one sub "},
      {"--hide-dot --folders-first --sort size --descending" + names, "sub new line one link five "},
      {"--filter 'f*|.*' --sort link" + names, ".dot five sub "},
      {"--filter link . | grep one | cut -f1,6-", "link\trw- r-- r--\tone\n"},
      {"/nowhere 2>&1 || :", "zan-op: cannot read directory '/nowhere'\n"}};
  for (const auto& [arguments, listed] : rows)
    EXPECT_EQ(dir.shell(std::string("LC_ALL=C ") + ZAN_BUILD_BIN + "/zan-op list " + arguments), listed);
}
