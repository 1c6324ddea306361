#include "commands/ui/associate_dlg.h"

#include <QTreeWidget>

#include "commands/associations.h"
#include "tests/face/window_test.h"

namespace {
const std::string kHeader =
    "# <pattern[|pattern[..]]> \\t <open_command> \\t <view_command> \\t <edit command>\n";

class AssociateDlg : public WindowTest {
 protected:
  void SetUp() override {
    WindowTest::SetUp();
    as_replace({"*.a\topen a\tview a\tedit a", "*.b\topen b\t\t", "*.c\t\tview c\t"});
    open();
    open_dialog();
  }
  static void open_dialog() {
    associate_dlg_open();
    ASSERT_TRUE(dialog("associate_dlg"));
  }
  std::string file() { return read_file(config_ / "associate.003"); }
  // What the list shows, columns between '|', the selected row behind '>'.
  static Texts rows() {
    auto* list = find<QTreeWidget>(dialog("associate_dlg"), "as_list");
    Texts texts;
    for (int i = 0; i < list->topLevelItemCount(); ++i) {
      const QTreeWidgetItem* item = list->topLevelItem(i);
      std::string text = item->isSelected() ? ">" : "";
      for (int column = 0; column < 4; ++column)
        text += (column ? "|" : "") + item->text(column).toStdString();
      texts.push_back(text);
    }
    return texts;
  }
  // A button's letter; the button clicks a moment later.
  static void press_button(Qt::Key key) {
    const QPointer<QWidget> window = QApplication::activeWindow();
    press(key, Qt::AltModifier);
    EXPECT_TRUE(wait_for([&] {
      if (!window) return true;
      const auto buttons = window->findChildren<QPushButton*>();
      return std::none_of(buttons.begin(), buttons.end(),
                          [](QPushButton* button) { return button->isDown(); });
    }));
  }
  // Gives the dialog of one association these fields, from the pattern on, and stores it.
  static void fill(const Texts& fields) {
    const char* const names[] = {"at_pattern", "at_command", "at_view_cmd", "at_edit_cmd"};
    for (size_t i = 0; i < fields.size(); ++i)
      find<QLineEdit>(dialog("assoc_type_dlg"), names[i])->setText(QString::fromStdString(fields[i]));
    press(Qt::Key_Return);
  }
};
}  // namespace

TEST_F(AssociateDlg, AddsChangesAndRemovesByKeysAndWritesTheBytes) {
  EXPECT_EQ(rows(), (Texts{">*.a|open a|view a|edit a", "*.b|open b||", "*.c||view c|"}));
  press_button(Qt::Key_A);  // Add
  fill({"*.neu", "", "less @ \xc3\xa4"});
  EXPECT_FALSE(dialog("assoc_type_dlg"));
  EXPECT_EQ(rows(), (Texts{">*.a|open a|view a|edit a", "*.b|open b||", "*.c||view c|",
                           "*.neu||less @ \xc3\xa4|"}));  // the first is selected, not the new one
  ASSERT_TRUE(tab_to(dialog("associate_dlg"), "as_list"));
  press(Qt::Key_Down);
  press(Qt::Key_Return);  // changes the line, and is not Done
  EXPECT_EQ(find<QLineEdit>(dialog("assoc_type_dlg"), "at_command")->text(), QStringLiteral("open b"));
  fill({"*.B", "other b"});
  EXPECT_EQ(rows()[1], "*.B|other b||");
  ASSERT_TRUE(tab_to(dialog("associate_dlg"), "as_list"));
  press(Qt::Key_Down);
  press(Qt::Key_Delete);
  EXPECT_EQ(rows(), (Texts{">*.a|open a|view a|edit a", "*.c||view c|", "*.neu||less @ \xc3\xa4|"}));
  EXPECT_STREQ(_get_pat_cmd("x.b", AS_OPEN), "open b") << "the table itself is still the old one";
  press_button(Qt::Key_D);  // Done
  EXPECT_FALSE(dialog("associate_dlg"));
  EXPECT_EQ(file(), kHeader + "*.a\topen a\tview a\tedit a\n*.c\t\tview c\t\n*.neu\t\tless @ \xc3\xa4\t\n");
  EXPECT_STREQ(_get_pat_cmd("x.neu", AS_VIEW), "less @ \xc3\xa4");
}

TEST_F(AssociateDlg, EscapeThrowsTheWorkingCopyAwayAndAnEmptyOneLeavesOnlyTheHeader) {
  press_button(Qt::Key_R);
  press_button(Qt::Key_A);
  ASSERT_TRUE(dialog("assoc_type_dlg"));
  press(Qt::Key_Escape);  // this association only
  EXPECT_FALSE(dialog("assoc_type_dlg"));
  EXPECT_EQ(rows().size(), 2u);
  press(Qt::Key_Escape);
  EXPECT_FALSE(dialog("associate_dlg"));
  EXPECT_EQ(apat_ctr, 3);
  EXPECT_FALSE(path_exists(config_ / "associate.003"));
  open_dialog();
  EXPECT_EQ(rows().size(), 3u);
  for (int i = 0; i < 4; ++i) press_button(Qt::Key_R);
  EXPECT_TRUE(rows().empty());
  press_button(Qt::Key_D);
  EXPECT_EQ(file(), kHeader);
}

TEST_F(AssociateDlg, RefusesWhatTheFileCannotHold) {
  const std::pair<Texts, const char*> bad[] = {
      {{"", "o"}, "Pattern cannot have TABs"},
      {{"a\tb", "o"}, "Pattern cannot have TABs"},
      {{"*.x", "", "", ""}, "No actions added for Open, View or Edit"},
      {{"*.x", std::string(1020, 'o')}, "Association too long"},
  };
  press_button(Qt::Key_A);
  for (const auto& [fields, message] : bad) {
    expect_message(message);
    fill(fields);
    ASSERT_TRUE(dialog("assoc_type_dlg")) << message;
  }
  // A comment's first character, a line's end, and a command of blanks, which is one.
  fill({"#*#", "one\ntwo", " ", ""});
  EXPECT_EQ(rows().back(), "[#]*#|one two| |");
  press_button(Qt::Key_D);
  init_read_associations(config_.path().c_str(), "associate.003");
  EXPECT_EQ(_get_pat_idx("#draft#"), 3);
  EXPECT_EQ(apat_ctr, 4);
}
