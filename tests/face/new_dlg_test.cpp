#include "commands/ui/new_dlg.h"

#include "tests/face/window_test.h"

namespace {
class NewDlg : public WindowTest {};
}  // namespace

TEST_F(NewDlg, EachKindAsksInItsOwnWordsAndCreates) {
  const struct {
    int kind;
    const char *title, *name;
    bool directory;
  } rows[] = {
      {1, "Create New File", "a file", false},
      {0, "Create New Folder", "a folder", true},
      {-2, "Create New Folder", "another", true},
  };
  for (const auto& row : rows) {
    show({"zzz"}, {"zzz"});
    new_dlg_open(row.kind);
    QDialog* asked = dialog("new_dlg");
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->windowTitle().toStdString(), row.title);
    type(row.name);
    press(Qt::Key_Return);
    EXPECT_FALSE(dialog("new_dlg"));
    EXPECT_EQ(selected(), row.name);
    EXPECT_EQ(dir_entry_is_directory(*gDir.entries[gDir.current]), row.directory);
    EXPECT_EQ(base_window()->focusWidget(), fl_view());
  }
}

TEST_F(NewDlg, StaysForAnotherTryAfterAMessageAndEscapeCreatesNothing) {
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
  type("2");
  press(Qt::Key_Escape);
  EXPECT_FALSE(dialog("new_dlg"));
  EXPECT_FALSE(path_exists(dir_ / "taken2"));
}
