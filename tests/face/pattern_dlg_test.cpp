#include "commands/ui/pattern_dlg.h"

#include <QComboBox>
#include <QLineEdit>

#include "core/history.h"
#include "tests/face/window_test.h"

namespace {
class PatternDlg : public WindowTest {};
}  // namespace

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

TEST_F(PatternDlg, TheMainWindowTakesNoKeyMeanwhile) {
  show({"a"});
  pattern_dlg_open(0);
  ASSERT_TRUE(dialog("pattern_dlg"));
  key(Qt::Key_A, Qt::ControlModifier);
  key(Qt::Key_Space);
  EXPECT_EQ(gDir.sel_count, 0);
  press(Qt::Key_Escape);
  key(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(gDir.sel_count, 1) << "still blocked";
}
