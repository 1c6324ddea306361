// The dialogs that ask for one name or pattern.
#include "commands/ui/new_dlg.h"
#include "commands/ui/pattern_dlg.h"
#include "commands/ui/symlink_dlg.h"
#include "core/history.h"
#include "tests/face/window_test.h"

namespace {

class NewDlg : public WindowTest {};
class PatternDlg : public WindowTest {};
class SymlinkDlg : public WindowTest {};

TEST_F(NewDlg, StaysForAnotherTryAfterAMessageUntilItHasCreatedWhatWasAsked) {
  show({"taken"});
  new_dlg_open(1);
  ASSERT_TRUE(dialog("new_dlg"));
  press("Return");  // nothing typed: nothing happens
  make({"appeared"});
  type("no/way");
  expect_message("Unable to create file 'no/way'\n");
  press("Return");
  EXPECT_EQ(gDir.count, 2) << "the list is read again all the same";
  ASSERT_TRUE(dialog("new_dlg"));
  press("Ctrl+A");
  type("taken");
  expect_message("File or directory 'taken' already exists");
  press("Return");
  ASSERT_TRUE(dialog("new_dlg"));
  const std::tuple<int, const char*, const char*> rows[] = {
      {1, "none", "Esc"}, {1, "made", "Return"}, {0, "folder", "Return"}, {-2, "other", "Return"}};
  for (const auto& [kind, name, end] : rows) {
    new_dlg_open(kind);
    ASSERT_TRUE(dialog("new_dlg"));
    press("Ctrl+A");
    type(name);
    press(end);
    EXPECT_FALSE(dialog("new_dlg"));
    EXPECT_EQ(base_window()->focusWidget(), fl_view());
    EXPECT_EQ(selected() == name && current_name() == name, *end == 'R') << name;
  }
  EXPECT_EQ(held(), "appeared:appeared folder/ made: other/ taken:taken ");
}

TEST_F(PatternDlg, SelectsAndUnselectsByWhatWasTyped) {
  const std::tuple<int, const char*, bool, const char*> rows[] = {
      {0, "*.cpp", false, "a.cpp"},
      {1, "*", true, ""},
      {0, "*.c", false, "a.c b.c"},  // the beginning of a longer one of old
      {1, "a*", false, "b.c"},
      {0, "^*.C", true, "B.C a.c b.c d.c"},
      {1, "d.c|b.c", false, "B.C a.c d.c"},
      {1, "[", true, "B.C a.c d.c"},
  };
  show({"a.c", "a.cpp", "b.c", "B.C", "d.c/"});
  std::string last;
  for (const auto& [op, pattern, folders, expected] : rows) {
    pattern_dlg_open(op);
    QDialog* asked = dialog("pattern_dlg");
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->windowTitle().toStdString(), op ? "Unselect Pattern" : "Select Pattern");
    EXPECT_EQ(line(asked, "ppattern")->selectedText().toStdString(), last);
    type(pattern);  // replaces the pattern used last
    if (folders) press_in("pinclude");
    press("Return");
    EXPECT_FALSE(dialog("pattern_dlg"));
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

TEST_F(SymlinkDlg, LinksToTheFirstSelectedEntry) {
  const std::string odd = "n\xff 'x' &y";
  show({odd, "z"});
  symlink_dlg_open();
  EXPECT_FALSE(dialog("symlink_dlg")) << "nothing is selected";
  select({odd, "z"});
  symlink_dlg_open();
  EXPECT_EQ(find<QLabel>(dialog("symlink_dlg"), "symlink_src_lbl")->text(), QStringLiteral("?n? 'x' &y"));
  type("link");
  press("Return");
  EXPECT_FALSE(dialog("symlink_dlg"));
  EXPECT_EQ(link_target(dir_ / "link"), dir_ / odd);
}

TEST_F(SymlinkDlg, NoticesAndTheQuestionKeepItOpen) {
  dir_.shell("ln -s old link");
  show({"file"}, {"file"});
  symlink_dlg_open();
  const std::string overwrite = "The destination symlink exists.\nDo you want to overwrite it ?";
  const std::pair<const char*, std::string> rows[] = {{"", "Symlink destination name must be entered!"},
                                                      {"file", "'file' exists and is not a symlink.\n"},
                                                      {"link", overwrite}};
  for (const auto& [name, message] : rows) {
    ASSERT_TRUE(dialog("symlink_dlg"));
    line(dialog("symlink_dlg"), "symlink_dst_txt")->setText(QString::fromUtf8(name));
    expect_message(message, "Esc");
    press("Return");
    EXPECT_EQ(held(), "file:file link@old ");
  }
  ASSERT_TRUE(dialog("symlink_dlg"));
  expect_message(overwrite);
  press("Return");
  EXPECT_FALSE(dialog("symlink_dlg"));
  EXPECT_EQ(link_target(dir_ / "link"), dir_ / "file");
}

}  // namespace
