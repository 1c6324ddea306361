// The views' halves that need no window: stacks, paths, completion, rows, status line, find.
#include <cstring>

#include "core/state.h"
#include "dirmodel/dir_read.h"
#include "dirmodel/text.h"
#include "platform/terminal/terminal.h"
#include "tests/support/temp_dir.h"
#include "views/find.h"
#include "views/path_check.h"
#include "views/path_complete.h"
#include "views/path_history.h"
#include "views/row_text.h"
#include "views/status_line.h"

namespace {
DirEntry* add_entry(DirRecord* dir, const std::string& name, int64_t size = 0, mode_t mode = S_IFREG | 0644) {
  DirEntry* entry = dir_take_entry(dir);
  std::strcpy(entry->name, name.c_str());
  entry->st.st_size = size;
  entry->st.st_mode = mode;
  dir_store_entry(dir, entry);
  return entry;
}
}  // namespace

TEST(PathHistory, KeepsTenAndPassesOverTheTop) {
  PathHistory history;
  std::string path = "kept";
  EXPECT_FALSE(x_history_pop(&history, &path));
  EXPECT_EQ(path, "kept");
  x_history_push(&history, "");
  EXPECT_EQ(history.paths.size(), 0u);
  for (int i = 1; i <= 12; ++i) {
    x_history_push(&history, "/" + std::to_string(i));
    x_history_push(&history, "/" + std::to_string(i));
  }
  std::string all;
  while (x_history_pop(&history, &path)) all += path + " ";
  EXPECT_EQ(all, "/12 /11 /10 /9 /8 /7 /6 /5 /4 /3 ");
}

TEST(PathCheck, CleansOrSaysWhy) {
  terminal_start();
  TempDir dir;
  dir.shell("mkdir sub && mkdir -m 711 closed && touch file && chmod 755 .");
  const std::string& top = dir.path();
  const struct {
    std::string text, path, message;
  } rows[] = {
      {top + "//sub/", top + "/sub", ""},
      {top + "/", "", ""},
      {"", "", "Directory '', not found"},
      {dir / "file", "", "Path '" + (dir / "file") + "' not found"},
      {dir / "no\xff", "", "Directory '?" + top + "/no?', not found"},
      {"sub/", top + "/sub", ""},
      {"file", "", "Path 'file' not found"},
      {"gone", "", "Directory 'gone', not found"},
  };
  std::string message;
  ASSERT_EQ(chdir("/"), 0);  // what is shown counts, whatever the working directory is
  for (const auto& row : rows) {
    EXPECT_EQ(x_check_path(row.text.c_str(), top, &message), row.path) << row.text;
    EXPECT_EQ(message, row.message) << row.text;
  }
  if (geteuid() != 0) return;
  ASSERT_EQ(seteuid(65534), 0);
  EXPECT_EQ(x_check_path((dir / "closed").c_str(), "/", &message), "");
  EXPECT_EQ(message, "Cannot access directory '" + (dir / "closed") + "'");
  ASSERT_EQ(seteuid(0), 0);
}

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
  EXPECT_EQ(find_matching_dir("usr"), nullptr);
  EXPECT_STREQ(find_matching_dir("/pro"), "/proc/");
}

TEST(RowText, GivesTheColumnsTabSeparated) {
  setenv("TZ", "UTC", 1);
  tzset();
  DirRecord dir;
  DirEntry* plain = add_entry(&dir, "a\xff", 1234567, S_IFREG | 04751);
  plain->st.st_mtime = 86400;
  plain->st.st_uid = 0, plain->st.st_gid = 4123456789u;
  EXPECT_EQ(fl_row_text(*plain), "?a?\t1,234,567\t 01/02/1970 12:00 AM\troot\t4123456789\trws r-x --x");
  plain->flags = ENTRY_INFO;
  dir_set_info(plain, "to/target");
  EXPECT_EQ(fl_row_text(*plain),
            "?a?\t1,234,567\t 01/02/1970 12:00 AM\troot\t4123456789\trws r-x --x\tto/target");
  EXPECT_EQ(fl_column_text(*plain, 7), "");
  dir_free(&dir);
}

TEST(StatusLine, CountsAndSums) {
  DirRecord dir;
  EXPECT_EQ(status_directory_text(dir), "0 item, 0 bytes");
  const int64_t sizes[] = {1024, int64_t{3} << 30, 500};
  for (const int64_t size : sizes) add_entry(&dir, "x", size);
  EXPECT_EQ(status_directory_text(dir), "3 items, 3072.0MB");
  EXPECT_EQ(status_selection_text(dir), "");
  const std::pair<int, const char*> rows[] = {{0, "1 selected item, 1.0KB"},
                                              {2, "2 selected items, 1.5KB"},
                                              {1, "3 selected items, -1073740300 bytes"}};  // kept as it is
  for (const auto& [i, text] : rows) {
    dir.entries[i]->flags |= ENTRY_SELECTED;
    ++dir.sel_count;
    EXPECT_EQ(status_selection_text(dir), text);
  }
  dir_free(&dir);
}

TEST(Find, FollowsItsFlags) {
  dir_free(&gDir);
  for (const char* name : {"alpha", "a*", "beta", "[", "gamma"}) add_entry(&gDir, name);
  gDir.entries[2]->st.st_mode = S_IFDIR;
  const struct {
    const char* text;
    unsigned flags;
    int found, last;
  } rows[] = {
      {"", FIND_EXACT, -2, -2},    {"..", FIND_EXACT, -1, -1},
      {"beta", FIND_EXACT, 2, 2},  {"b", FIND_EXACT, -2, -2},
      {"b", FIND_PREFIX, 2, 2},    {"b", FIND_PREFIX | FIND_NO_DIRS, -2, -2},
      {"a*", FIND_EXACT, 0, 1},    {"*a", 0, 0, 4},
      {"^GAM*", 0, 4, 4},          {"gamma", FIND_BACKWARD, -2, -2},
      {"a*", FIND_BACKWARD, 0, 0}, {"[", FIND_EXACT, 3, 3},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(x_find(row.text, 0, row.flags), row.found) << row.text << row.flags;
    int calls = 0;
    EXPECT_EQ(x_find(row.text, 3, row.flags, [&](int) { ++calls; }), row.last) << row.text << row.flags;
  }
  dir_free(&gDir);
  EXPECT_EQ(x_find("*", 0, FIND_BACKWARD), -2);
  EXPECT_EQ(x_find(nullptr, 0, 0), -2);
}

TEST(ZanOpList, PrintsWhatTheListShows) {
  TempDir dir;
  dir.shell("mkdir sub && printf 12345 >five && printf 1 >one && ln -s one link && touch .dot 'new\nline'");
  const auto list = [&](const std::string& arguments) {
    return dir.shell(std::string("LC_ALL=C ") + ZAN_BUILD_BIN + "/zan-op list " + arguments);
  };
  const std::string names = " . | cut -f1 | tr '\n' ' '";
  EXPECT_EQ(list("" + names), ".dot five link new line one sub ");
  EXPECT_EQ(list("--hide-dot --folders-first --sort size" + names), "sub five link one new line ");
  EXPECT_EQ(list("--hide-dot --folders-first --sort size --descending" + names),
            "sub new line one link five ");
  EXPECT_EQ(list("--filter 'f*|.*' --sort link" + names), ".dot five sub ");
  EXPECT_EQ(list("-0 --hide-dot . | tr '\\n\\0' '|\\n' | cut -f1 | tr '\\n' ' '"),
            "five link new|line one sub ");
  EXPECT_NE(list("--filter link .").find("\trw- r-- r--\tone\n"), std::string::npos);
  const std::pair<std::string, const char*> failures[] = {
      {"/etc/passwd", "1\n"}, {"", "2\n"},    {"--sort colour /", "2\n"}, {"--filter", "2\n"},
      {"-x /", "2\n"},        {"/ /", "2\n"}, {"/etc >/dev/full", "1\n"}};
  for (const auto& [arguments, status] : failures)
    EXPECT_EQ(list(arguments + " 2>/dev/null || echo $?"), status) << arguments;
  EXPECT_EQ(list("/nowhere 2>&1 || :"), "zan-op: cannot read directory '/nowhere'\n");
}
