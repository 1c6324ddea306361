// The dialogs that ask for one name or pattern.
#include <filesystem>

#include "commands/ui/new_dlg.h"
#include "commands/ui/pattern_dlg.h"
#include "commands/ui/symlink_dlg.h"
#include "core/history.h"
#include "tests/face/window_test.h"

namespace {

class NewDlg : public WindowTest {};
class PatternDlg : public WindowTest {};
class SymlinkDlg : public WindowTest {
 protected:
  std::string target_of(const std::string& name) { return std::filesystem::read_symlink(dir_ / name); }
};

TEST_F(NewDlg, StaysForAnotherTryAfterAMessageUntilItHasCreatedWhatWasAsked) {
  show({"taken"});
  new_dlg_open(1);
  ASSERT_TRUE(dialog("new_dlg"));
  press(Qt::Key_Return);  // nothing typed: nothing happens
  write_file(dir_ / "appeared", "");
  type("no/way");
  expect_message("Unable to create file 'no/way'\n");
  press(Qt::Key_Return);
  EXPECT_EQ(gDir.count, 2) << "the list is read again all the same";
  ASSERT_TRUE(dialog("new_dlg"));
  press(Qt::Key_A, Qt::ControlModifier);
  type("taken");
  expect_message("File or directory 'taken' already exists");
  press(Qt::Key_Return);
  ASSERT_TRUE(dialog("new_dlg"));
  EXPECT_EQ(read_file(dir_ / "taken"), "taken");
  const std::tuple<int, const char*, Qt::Key> rows[] = {{1, "none", Qt::Key_Escape},
                                                        {1, "made", Qt::Key_Return},
                                                        {0, "folder", Qt::Key_Return},
                                                        {-2, "other", Qt::Key_Return}};
  for (const auto& [kind, name, end] : rows) {
    new_dlg_open(kind);
    ASSERT_TRUE(dialog("new_dlg"));
    press(Qt::Key_A, Qt::ControlModifier);
    type(name);
    press(end);
    EXPECT_FALSE(dialog("new_dlg"));
    ASSERT_EQ(path_exists(dir_ / name), end == Qt::Key_Return);
    if (end == Qt::Key_Escape) continue;
    EXPECT_EQ(selected(), name);
    EXPECT_EQ(dir_entry_is_directory(*gDir.entries[gDir.current]), kind != 1);
    EXPECT_EQ(base_window()->focusWidget(), fl_view());
  }
}

TEST_F(PatternDlg, SelectsAndUnselectsByWhatWasTyped) {
  const struct {
    int op;
    const char *title, *pattern;
    bool folders;
    const char* selected;
  } rows[] = {
      {0, "Select Pattern", "*.cpp", false, "a.cpp"},
      {1, "Unselect Pattern", "*", true, ""},
      {0, "Select Pattern", "*.c", false, "a.c b.c"},  // the beginning of a longer one of old
      {1, "Unselect Pattern", "a*", false, "b.c"},
      {0, "Select Pattern", "^*.C", true, "B.C a.c b.c d.c"},
      {1, "Unselect Pattern", "d.c|b.c", false, "B.C a.c d.c"},
      {1, "Unselect Pattern", "[", true, "B.C a.c d.c"},
  };
  show({"a.c", "a.cpp", "b.c", "B.C", "d.c/"});
  std::string last;
  for (const auto& row : rows) {
    pattern_dlg_open(row.op);
    QDialog* asked = dialog("pattern_dlg");
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->windowTitle().toStdString(), row.title);
    auto* field = find<QComboBox>(asked, "ppattern");
    EXPECT_EQ(field->lineEdit()->selectedText().toStdString(), last);
    EXPECT_EQ(field->count(), &row - rows) << "every pattern used is offered";
    type(row.pattern);  // replaces the pattern used last
    if (row.folders) toggle(asked, "pinclude");
    press(Qt::Key_Return);
    EXPECT_FALSE(dialog("pattern_dlg"));
    EXPECT_EQ(selected(), row.selected) << row.pattern;
    EXPECT_EQ(base_window()->focusWidget(), fl_view());
    last = row.pattern;
  }
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
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("symlink_dlg"));
  EXPECT_EQ(target_of("link"), dir_ / odd);
}

TEST_F(SymlinkDlg, NoticesAndTheQuestionKeepItOpen) {
  std::filesystem::create_symlink("old", dir_ / "link");
  show({"file"}, {"file"});
  symlink_dlg_open();
  const std::string overwrite = "The destination symlink exists.\nDo you want to overwrite it ?";
  const struct {
    const char* name;
    std::string message;
  } rows[] = {{"", "Symlink destination name must be entered!"},
              {"file", "'file' exists and is not a symlink.\n"},
              {"link", overwrite}};
  for (const auto& row : rows) {
    ASSERT_TRUE(dialog("symlink_dlg"));
    find<QLineEdit>(dialog("symlink_dlg"), "symlink_dst_txt")->setText(QString::fromUtf8(row.name));
    expect_message(row.message, Qt::Key_Escape);
    press(Qt::Key_Return);
    ASSERT_TRUE(dialog("symlink_dlg"));
    EXPECT_EQ(read_file(dir_ / "file") + target_of("link"), "fileold");
  }
  expect_message(overwrite, Qt::Key_Return);
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("symlink_dlg"));
  EXPECT_EQ(target_of("link"), dir_ / "file");
}

}  // namespace
