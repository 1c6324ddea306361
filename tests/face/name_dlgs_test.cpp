// The dialogs that ask for one name or pattern.
#include "commands/ui/new_dlg.h"
#include "commands/ui/pattern_dlg.h"
#include "commands/ui/symlink_dlg.h"
#include "core/history.h"
#include "tests/face/window_test.h"

namespace {

class NameDlgs : public WindowTest {};

TEST_F(NameDlgs, ANewOneStaysForAnotherTryAfterAMessageUntilItHasCreatedWhatWasAsked) {
  show({"taken"});
  new_dlg_open(1);
  EXPECT_TRUE(stays("new_dlg", "Return")) << "nothing typed: nothing happens";
  make({"appeared"});
  expect_message("Unable to create file 'no/way'\n");
  EXPECT_TRUE(stays("new_dlg", "'no/way' Return"));
  EXPECT_EQ(gDir.count, 2) << "the list is read again all the same";
  expect_message("File or directory 'taken' already exists");
  EXPECT_TRUE(stays("new_dlg", "Ctrl+A 'taken' Return"));
  const std::tuple<int, const char*, const char*> rows[] = {
      {1, "none", "Esc"}, {1, "made", "Return"}, {0, "folder", "Return"}, {-2, "other", "Return"}};
  for (const auto& [kind, name, end] : rows) {
    new_dlg_open(kind);
    EXPECT_FALSE(stays("new_dlg", "Ctrl+A '" + std::string(name) + "' " + end));
    EXPECT_EQ(base_window()->focusWidget(), fl_view());
    EXPECT_EQ(selected() == name && current_name() == name, *end == 'R') << name;
  }
  EXPECT_EQ(held(), "appeared:appeared folder/ made: other/ taken:taken ");
}

TEST_F(NameDlgs, APatternSelectsAndUnselectsByWhatWasTyped) {
  const std::tuple<int, const char*, bool, const char*> rows[] = {
      {0, "*.cpp", false, "a.cpp"},
      {1, "*", true, ""},
      {0, "*.c", false, "a.c b.c"},  // the beginning of a longer one of old
      {1, "a*", false, "b.c"},
      {0, "^*.C", true, "B.C a.c b.c d.c"},
      {1, "d.c|b.c", false, "B.C a.c d.c"},
      {1, "[", true, "B.C a.c d.c"}};
  show({"a.c", "a.cpp", "b.c", "B.C", "d.c/"});
  std::string last;
  for (const auto& [op, pattern, folders, expected] : rows) {
    pattern_dlg_open(op);
    QDialog* asked = dialog("pattern_dlg");
    EXPECT_EQ(asked->windowTitle().toStdString(), op ? "Unselect Pattern" : "Select Pattern");
    EXPECT_EQ(line(asked, "ppattern")->selectedText().toStdString(), last);
    // What is typed replaces the pattern used last.
    EXPECT_FALSE(stays("pattern_dlg",
                       "'" + std::string(pattern) + (folders ? "' @pinclude Space Return" : "' Return")));
    EXPECT_EQ(selected(), expected) << pattern;
    EXPECT_EQ(base_window()->focusWidget(), fl_view());
    last = pattern;
  }
  pattern_dlg_open(0);
  EXPECT_EQ(find<QComboBox>(dialog("pattern_dlg"), "ppattern")->count(), std::ssize(rows))
      << "every pattern used is offered";
  init_save_cboxs(gConfigPath);
  EXPECT_EQ(read_file(config_ / "pattern.001"), "[\nd.c|b.c\n^*.C\na*\n*.c\n*\n*.cpp\n");
}

TEST_F(NameDlgs, ALinksNoticesAndQuestionKeepItOpenUntilItLinksToTheFirstSelectedEntry) {
  const std::string odd = "n\xff 'x' &y",
                    overwrite = "The destination symlink exists.\nDo you want to overwrite it ?";
  dir_.shell("ln -s old link");
  show({odd, "z"});
  symlink_dlg_open();
  EXPECT_FALSE(dialog("symlink_dlg")) << "nothing is selected";
  select({odd, "z"});
  symlink_dlg_open();
  EXPECT_EQ(find<QLabel>(dialog("symlink_dlg"), "symlink_src_lbl")->text(), QStringLiteral("?n? 'x' &y"));
  const std::pair<const char*, std::string> rows[] = {{"Return", "Symlink destination name must be entered!"},
                                                      {"'z' Return", "'z' exists and is not a symlink.\n"},
                                                      {"Ctrl+A 'link' Return", overwrite}};
  for (const auto& [words, message] : rows) {
    expect_message(message, "Esc");
    EXPECT_TRUE(stays("symlink_dlg", words));
    EXPECT_EQ(read_file(dir_ / "z") + link_target(dir_ / "link"), "zold");
  }
  expect_message(overwrite);
  EXPECT_FALSE(stays("symlink_dlg", "Return"));
  EXPECT_EQ(link_target(dir_ / "link"), dir_ / odd);
}

}  // namespace
