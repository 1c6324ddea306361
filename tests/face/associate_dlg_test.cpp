#include "commands/ui/associate_dlg.h"

#include <QApplication>
#include <QLineEdit>
#include <QPushButton>
#include <QTreeWidget>

#include "commands/associations.h"
#include "tests/face/dialog_fixture.h"

namespace {
const std::string kHeader =
    "# <pattern[|pattern[..]]> \\t <open_command> \\t <view_command> \\t <edit command>\n";

class AssociateDlg : public DialogTest {
 protected:
  void SetUp() override {
    DialogTest::SetUp();
    table({"*.a\topen a\tview a\tedit a", "*.b\topen b\t\t", "*.c\t\tview c\t"});
  }
  void table(const std::vector<std::string>& lines) { as_replace(lines); }
  std::string file() { return read_file(config_ / "associate.003"); }
  QDialog* open() {
    associate_dlg_open();
    return dialog("associate_dlg");
  }
  // A dialog that has closed is deleted now, and not while the next one gets its keys.
  static void settle() { QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete); }
  // What the list shows, columns between '|', the selected row behind '>'.
  static std::vector<std::string> rows() {
    settle();
    auto* list = find<QTreeWidget>(dialog("associate_dlg"), "as_list");
    std::vector<std::string> texts;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
      QTreeWidgetItem* item = list->topLevelItem(i);
      std::string text = item->isSelected() ? ">" : "";
      for (int column = 0; column < 4; ++column)
        text += (column ? "|" : "") + item->text(column).toStdString();
      texts.push_back(text);
    }
    return texts;
  }
  static bool enabled(const char* button) {
    return find<QPushButton>(dialog("associate_dlg"), button)->isEnabled();
  }
  // A button's letter; the button clicks a moment later.
  static void press_button(Qt::Key key) {
    const QPointer<QWidget> window = QApplication::activeWindow();
    ASSERT_TRUE(window);
    press(key, Qt::AltModifier);
    const auto is_down = [&] {
      for (const auto* button : window->findChildren<QPushButton*>())
        if (button->isDown()) return true;
      return false;
    };
    while (window && is_down()) QTest::qWait(5);
  }
  // Types the four fields, from the pattern on.
  static void fill(const std::vector<std::string>& fields) {
    settle();
    ASSERT_TRUE(dialog("assoc_type_dlg"));
    for (size_t i = 0; i < fields.size(); ++i) {
      if (i > 0) press(Qt::Key_Tab);
      press(Qt::Key_A, Qt::ControlModifier);
      press(Qt::Key_Delete);
      auto* field = qobject_cast<QLineEdit*>(QApplication::focusWidget());
      ASSERT_TRUE(field);
      field->insert(QString::fromStdString(fields[i]));
    }
  }
};
}  // namespace

TEST_F(AssociateDlg, AddsChangesAndRemovesByKeysAndWritesTheBytes) {
  ASSERT_TRUE(open());
  EXPECT_EQ(rows(), (std::vector<std::string>{">*.a|open a|view a|edit a", "*.b|open b||", "*.c||view c|"}));

  press_button(Qt::Key_A);  // Add
  fill({"*.neu", "", "less @ \xc3\xa4"});
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("assoc_type_dlg"));
  EXPECT_EQ(rows().size(), 4u);
  EXPECT_EQ(rows()[0][0], '>');  // the first, not the new one
  EXPECT_EQ(rows()[3], "*.neu||less @ \xc3\xa4|");

  ASSERT_TRUE(tab_to(dialog("associate_dlg"), "as_list"));
  press(Qt::Key_Down);
  press(Qt::Key_Return);  // changes the line, and is not Done
  ASSERT_TRUE(dialog("assoc_type_dlg"));
  EXPECT_EQ(find<QLineEdit>(dialog("assoc_type_dlg"), "at_pattern")->text(), QStringLiteral("*.b"));
  EXPECT_EQ(find<QLineEdit>(dialog("assoc_type_dlg"), "at_command")->text(), QStringLiteral("open b"));
  fill({"*.B", "other b"});
  press(Qt::Key_Return);
  EXPECT_EQ(rows()[0], ">*.a|open a|view a|edit a");
  EXPECT_EQ(rows()[1], "*.B|other b||");

  ASSERT_TRUE(tab_to(dialog("associate_dlg"), "as_list"));
  press(Qt::Key_Delete);
  EXPECT_EQ(rows()[0], ">*.B|other b||");
  EXPECT_EQ(apat_ctr, 3);   // the table itself is still the old one
  press_button(Qt::Key_D);  // Done
  EXPECT_FALSE(dialog("associate_dlg"));
  EXPECT_EQ(file(), kHeader + "*.B\tother b\t\t\n*.c\t\tview c\t\n*.neu\t\tless @ \xc3\xa4\t\n");
  EXPECT_EQ(apat_ctr, 3);
  EXPECT_STREQ(_get_pat_cmd("x.neu", AS_VIEW), "less @ \xc3\xa4");

  init_read_associations(config_.path().c_str(), "associate.003");
  EXPECT_EQ(as_line(*apat[0]), "*.B\tother b\t\t");
}

TEST_F(AssociateDlg, TheLastOneRemovedLeavesOnlyTheHeader) {
  table({"*.a\topen\t\t"});
  ASSERT_TRUE(open());
  press_button(Qt::Key_R);
  EXPECT_TRUE(rows().empty());
  EXPECT_FALSE(enabled("as_remove"));
  EXPECT_FALSE(enabled("as_edit"));
  press_button(Qt::Key_D);
  EXPECT_EQ(file(), kHeader);

  ASSERT_TRUE(open());  // an empty table
  EXPECT_FALSE(enabled("as_remove"));
  press_button(Qt::Key_A);
  fill({"*.v", "", "view"});
  press(Qt::Key_Return);
  EXPECT_EQ(rows(), (std::vector<std::string>{">*.v||view|"}));
  EXPECT_TRUE(enabled("as_remove") && enabled("as_edit"));
  press_button(Qt::Key_D);
  EXPECT_EQ(file(), kHeader + "*.v\t\tview\t\n");
}

TEST_F(AssociateDlg, EscapeThrowsTheWorkingCopyAway) {
  ASSERT_TRUE(open());
  press_button(Qt::Key_R);
  press_button(Qt::Key_A);
  fill({"*.x", "x"});
  press(Qt::Key_Escape);  // this association only
  EXPECT_FALSE(dialog("assoc_type_dlg"));
  EXPECT_EQ(rows().size(), 2u);
  press(Qt::Key_Escape);
  EXPECT_FALSE(dialog("associate_dlg"));
  EXPECT_EQ(apat_ctr, 3);
  EXPECT_FALSE(path_exists(config_ / "associate.003"));
  ASSERT_TRUE(open());
  EXPECT_EQ(rows().size(), 3u);
}

TEST_F(AssociateDlg, RefusesWhatTheFileCannotHold) {
  const struct {
    std::vector<std::string> fields;
    const char* message;
  } rows_[] = {
      {{"", "o"}, "Pattern cannot have TABs"},
      {{"*.x", "", "", ""}, "No actions added for Open, View or Edit"},
      {{"*.x", std::string(1020, 'o')}, "Association too long"},
  };
  ASSERT_TRUE(open());
  press_button(Qt::Key_A);
  for (const auto& row : rows_) {
    fill(row.fields);
    expect_message(row.message);
    press(Qt::Key_Return);
    ASSERT_TRUE(dialog("assoc_type_dlg")) << row.message;
    find<QLineEdit>(dialog("assoc_type_dlg"), "at_pattern")->setFocus();
  }
  find<QLineEdit>(dialog("assoc_type_dlg"), "at_pattern")->setText(QStringLiteral("a\tb"));
  expect_message("Pattern cannot have TABs");
  press(Qt::Key_Return);
  find<QLineEdit>(dialog("assoc_type_dlg"), "at_pattern")->setFocus();
  // A comment's first character, a line's end, and a command of blanks, which is one.
  fill({"#*#", "x", " ", ""});
  find<QLineEdit>(dialog("assoc_type_dlg"), "at_command")->setText(QStringLiteral("one\ntwo"));
  press(Qt::Key_Return);
  EXPECT_EQ(rows().back(), "[#]*#|one two| |");
  press_button(Qt::Key_D);
  init_read_associations(config_.path().c_str(), "associate.003");
  EXPECT_EQ(_get_pat_idx("#draft#"), 3);
  EXPECT_EQ(apat_ctr, 4);
}

TEST_F(AssociateDlg, AFileThatCannotBeWrittenIsSilent) {
  ASSERT_EQ(run_shell("rmdir '" + config_.path() + "' && : > '" + config_.path() + "'"), 0);
  ASSERT_TRUE(open());
  press_button(Qt::Key_R);
  press_button(Qt::Key_D);
  EXPECT_FALSE(dialog("associate_dlg"));
  EXPECT_EQ(apat_ctr, 2);  // the table in memory is the new one all the same
}
