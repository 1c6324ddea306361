#include "commands/ui/pattern_dlg.h"

#include <sys/stat.h>

#include <QComboBox>
#include <QLineEdit>
#include <QMainWindow>

#include "core/history.h"
#include "core/state.h"
#include "dirmodel/dir_record.h"
#include "tests/face/dialog_fixture.h"
#include "views/ui/base.h"

namespace {

class PatternDlg : public DialogTest {
 protected:
  void SetUp() override {
    DialogTest::SetUp();
    for (const char* name : {"a.c", "a.cpp", "b.c", "B.C"}) write_file(dir_ / name, "");
    mkdir((dir_ / "d.c").c_str(), 0755);
    show_directory();
  }
  static std::string selected() {
    std::string names;
    for (int i = 0; i < gDir.count; i++) {
      if (gDir.entries[i]->flags & ENTRY_SELECTED) names += std::string(gDir.entries[i]->name) + " ";
    }
    return names;
  }
};

}  // namespace

TEST_F(PatternDlg, SelectsAndUnselects) {
  struct Row {
    int op;
    const char *title, *pattern;
    bool folders;
    const char* selected;
  };
  const Row rows[] = {
      {0, "Select Pattern", "*.c", false, "a.c b.c "},
      {1, "Unselect Pattern", "a*", false, "b.c "},
      {0, "Select Pattern", "^*.C", true, "B.C a.c b.c d.c "},
      {1, "Unselect Pattern", "d.c|b.c", false, "B.C a.c d.c "},
      {1, "Unselect Pattern", "[", true, "B.C a.c d.c "},
      {1, "Unselect Pattern", "*", true, ""},
  };
  for (const Row& row : rows) {
    pattern_dlg_open(row.op);
    QDialog* asked = dialog("pattern_dlg");
    ASSERT_TRUE(asked);
    EXPECT_EQ(asked->windowTitle().toStdString(), row.title);
    type(row.pattern);  // replaces the pattern used last, which comes up selected
    if (row.folders) {
      ASSERT_TRUE(tab_to(asked, "pinclude"));
      press(Qt::Key_Space);
    }
    press(Qt::Key_Return);
    EXPECT_FALSE(dialog("pattern_dlg"));
    EXPECT_EQ(selected(), row.selected) << row.pattern;
    EXPECT_EQ(base_window()->focusWidget(), base_find_widget("filelist"));
    EXPECT_STREQ(cl_get(gPatternList, 1), row.pattern);
  }
}

TEST_F(PatternDlg, OffersEveryPatternUsedAndTakesWhatWasTyped) {
  cl_add(gPatternList, "*.cpp");
  cl_add(gPatternList, "*.h");
  for (int round = 0; round < 2; round++) {
    pattern_dlg_open(0);
    auto* field = find<QComboBox>(dialog("pattern_dlg"), "ppattern");
    ASSERT_EQ(field->count(), 2) << "round " << round;
    EXPECT_EQ(field->itemText(1).toStdString(), "*.cpp");
    EXPECT_EQ(field->lineEdit()->selectedText().toStdString(), "*.h");
    press(Qt::Key_Escape);
  }
  pattern_dlg_open(0);
  ASSERT_TRUE(dialog("pattern_dlg"));
  type("*.c");  // the beginning of a longer one of old
  press(Qt::Key_Return);
  EXPECT_EQ(selected(), "a.c b.c ");
  init_save_cboxs(gConfigPath);
  EXPECT_EQ(read_file(config_ / "pattern.001"), "*.c\n*.h\n*.cpp\n");
}

TEST_F(PatternDlg, TheMainWindowTakesNoKeyMeanwhile) {
  pattern_dlg_open(0);
  ASSERT_TRUE(dialog("pattern_dlg"));
  QTest::keyClick(base_find_widget("filelist"), Qt::Key_A, Qt::ControlModifier);
  QTest::keyClick(base_find_widget("filelist"), Qt::Key_Space);
  EXPECT_EQ(gDir.sel_count, 0);
  press(Qt::Key_Escape);
  QTest::keyClick(base_find_widget("filelist"), Qt::Key_Home);
  QTest::keyClick(base_find_widget("filelist"), Qt::Key_Down);
  EXPECT_EQ(gDir.sel_count, 1) << "still blocked";
}
