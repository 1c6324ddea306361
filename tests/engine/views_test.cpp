#include "dirmodel/dir_read.h"
#include "dirmodel/text.h"
#include "platform/terminal/terminal.h"
#include "tests/support/shown_dir.h"
#include "views/path_complete.h"
#include "views/status_line.h"

TEST(PathComplete, FindsTheLongestCommonBeginning) {
  terminal_start();
  TempDir dir;
  dir.shell(
      "mkdir -p usr/lib usr/local usr/.dot one/only x && touch usr/loud && ln -s usr link && ln -s gone "
      "broken");
  const std::pair<const char*, const char*> rows[] = {
      {"/us", "/usr/"},     {"/usr/l", "/usr/l"}, {"/usr/lo", "/usr/local/"},  {"/usr/.", "/usr/.dot/"},
      {"/li", "/link/"},    {"/usr/z", nullptr},  {"/one/", "/one/only/"},     {"/br", nullptr},
      {"/none/x", nullptr}, {"/x/", nullptr},     {"/usr//lo", "/usr//local/"}};
  for (const auto& [typed, completed] : rows) {
    const char* found = find_matching_dir((dir.path() + typed).c_str());
    EXPECT_EQ(found ? found : "(none)", completed ? dir.path() + completed : "(none)") << typed;
  }
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
  const auto list = [&](const std::string& arguments) {
    return dir.shell(std::string("LC_ALL=C ") + ZAN_BUILD_BIN + "/zan-op list " + arguments);
  };
  const std::string names = " . | cut -f1 | tr '\n' ' '";
  EXPECT_EQ(list("" + names), ".dot five link new line one sub ");
  EXPECT_EQ(list("--hide-dot --folders-first --sort size --descending" + names),
            "sub new line one link five ");
  EXPECT_EQ(list("--filter 'f*|.*' --sort link" + names), ".dot five sub ");
  EXPECT_NE(list("--filter link .").find("\trw- r-- r--\tone\n"), std::string::npos);
  EXPECT_EQ(list("/nowhere 2>&1 || :"), "zan-op: cannot read directory '/nowhere'\n");
}
