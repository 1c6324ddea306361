#include "commands/ui/new_dlg.h"

#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPushButton>

#include "dirmodel/dir_record.h"
#include "tests/face/dialog_fixture.h"
#include "views/ui/base.h"

namespace {
class NewDlg : public DialogTest {};
}  // namespace

TEST_F(NewDlg, EachKindAsksInItsOwnWordsAndCreates) {
  struct Row {
    int kind;
    const char *title, *label, *name;
    bool directory;
  };
  const Row rows[] = {
      {1, "Create New File", "File Name", "a file", false},
      {0, "Create New Folder", "Folder Name", "a folder", true},
      {-2, "Create New Folder", "Folder Name", "another", true},
  };
  write_file(dir_ / "zzz", "");
  for (const Row& row : rows) {
    show_directory({"zzz"});
    new_dlg_open(row.kind);
    QDialog* asked = dialog("new_dlg");
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->windowTitle().toStdString(), row.title);
    EXPECT_EQ(find<QLabel>(asked, "new_label")->text().toStdString(), row.label);
    type(row.name);
    press(Qt::Key_Return);
    EXPECT_FALSE(dialog("new_dlg"));
    EXPECT_EQ(current_name(), row.name);
    EXPECT_EQ(gDir.sel_count, 1);
    EXPECT_EQ(dir_entry_is_directory(*gDir.entries[gDir.current]), row.directory);
    EXPECT_EQ(base_window()->focusWidget(), base_find_widget("filelist"));
  }
}

TEST_F(NewDlg, StaysForAnotherTryAfterAMessage) {
  write_file(dir_ / "taken", "kept");
  show_directory();
  new_dlg_open(1);
  ASSERT_TRUE(dialog("new_dlg"));
  press(Qt::Key_Return);  // nothing typed: nothing happens
  ASSERT_TRUE(dialog("new_dlg"));
  type("taken");
  expect_message("File or directory 'taken' already exists");
  press(Qt::Key_Return);
  ASSERT_TRUE(dialog("new_dlg"));
  EXPECT_EQ(read_file(dir_ / "taken"), "kept");
  type("2");
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("new_dlg"));
  EXPECT_TRUE(path_exists(dir_ / "taken2"));
}

TEST_F(NewDlg, AFileThatCannotBeMadeStillReadsTheListAgain) {
  show_directory();
  new_dlg_open(1);
  ASSERT_TRUE(dialog("new_dlg"));
  write_file(dir_ / "appeared", "");
  type("no/way");
  expect_message("Unable to create file 'no/way'\n");
  press(Qt::Key_Return);
  EXPECT_EQ(gDir.count, 1);
  ASSERT_TRUE(dialog("new_dlg"));
  press(Qt::Key_Escape);
  EXPECT_FALSE(dialog("new_dlg"));
}

TEST_F(NewDlg, EscapeAndCancelCreateNothing) {
  show_directory();
  for (const bool button : {false, true}) {
    new_dlg_open(1);
    ASSERT_TRUE(dialog("new_dlg"));
    type("x");
    if (button) {
      ASSERT_TRUE(tab_to(dialog("new_dlg"), "new_cancel"));
    }
    press(button ? Qt::Key_Space : Qt::Key_Escape);
    EXPECT_FALSE(dialog("new_dlg"));
    EXPECT_FALSE(path_exists(dir_ / "x"));
  }
}
