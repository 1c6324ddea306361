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
    associate_dlg_open();
    EXPECT_EQ(rows(), ">*.a|open a|view a|edit a\n*.b|open b||\n*.c||view c|\n");
  }
  std::string file() { return read_file(config_ / "associate.003"); }
  // What the list shows, columns between '|', the selected row behind '>'.
  static std::string rows() {
    std::string text;
    for (QTreeWidgetItemIterator at(find<QTreeWidget>(dialog("associate_dlg"), "as_list")); *at; ++at) {
      text += (*at)->isSelected() ? ">" : "";
      for (int column = 0; column < 4; ++column)
        text += (*at)->text(column).toStdString() + (column < 3 ? "|" : "\n");
    }
    return text;
  }
  // Fills the dialog of one association, from the pattern on, and stores it. Whether it stays open.
  static bool fill(const Texts& fields) {
    const char* const names[] = {"at_pattern", "at_command", "at_view_cmd", "at_edit_cmd"};
    for (size_t i = 0; i < fields.size(); ++i)
      line(dialog("assoc_type_dlg"), names[i])->setText(QString::fromStdString(fields[i]));
    return stays("assoc_type_dlg", "Return");
  }
};
}  // namespace

TEST_F(AssociateDlg, AddsChangesAndRemovesByKeysAndWritesTheBytes) {
  const std::string first = ">*.a|open a|view a|edit a\n", added = "*.neu||less @ \xc3\xa4|\n";
  press("Alt+A");  // Add
  EXPECT_FALSE(fill({"*.neu", "", "less @ \xc3\xa4"}));
  EXPECT_EQ(rows(), first + "*.b|open b||\n*.c||view c|\n" + added)
      << "the first is selected, not the new one";
  press("@as_list Down Return");  // changes the line, and is not Done
  EXPECT_EQ(line(dialog("assoc_type_dlg"), "at_command")->text(), QStringLiteral("open b"));
  EXPECT_FALSE(fill({"*.B", "other b"}));
  EXPECT_EQ(rows(), first + "*.B|other b||\n*.c||view c|\n" + added);
  press("@as_list Down Del");
  EXPECT_EQ(rows(), first + "*.c||view c|\n" + added);
  EXPECT_STREQ(_get_pat_cmd("x.b", AS_OPEN), "open b") << "the table itself is still the old one";
  press("Alt+D");  // Done
  EXPECT_FALSE(dialog("associate_dlg"));
  EXPECT_EQ(file(), kHeader + "*.a\topen a\tview a\tedit a\n*.c\t\tview c\t\n*.neu\t\tless @ \xc3\xa4\t\n");
  EXPECT_STREQ(_get_pat_cmd("x.neu", AS_VIEW), "less @ \xc3\xa4");
}

TEST_F(AssociateDlg, EscapeThrowsTheWorkingCopyAwayAndAnEmptyOneLeavesOnlyTheHeader) {
  press("Alt+R Alt+A");
  EXPECT_FALSE(stays("assoc_type_dlg", "Esc"));  // this association only
  EXPECT_EQ(rows(), ">*.b|open b||\n*.c||view c|\n");
  EXPECT_FALSE(stays("associate_dlg", "Esc") || path_exists(config_ / "associate.003"));
  EXPECT_EQ(apat_ctr, 3);
  associate_dlg_open();
  ASSERT_TRUE(dialog("associate_dlg"));
  press("Alt+R Alt+R Alt+R Alt+R");
  EXPECT_EQ(rows(), "");
  press("Alt+D");
  EXPECT_EQ(file(), kHeader);
}

TEST_F(AssociateDlg, RefusesWhatTheFileCannotHold) {
  const std::pair<Texts, const char*> bad[] = {
      {{"", "o"}, "Pattern cannot have TABs"},
      {{"a\tb", "o"}, "Pattern cannot have TABs"},
      {{"*.x", "", "", ""}, "No actions added for Open, View or Edit"},
      {{"*.x", std::string(1020, 'o')}, "Association too long"}};
  press("Alt+A");
  for (const auto& [fields, message] : bad) {
    expect_message(message);
    ASSERT_TRUE(fill(fields)) << message;
  }
  // A comment's first character, a line's end, and a command of blanks, which is one.
  EXPECT_FALSE(fill({"#*#", "one\ntwo", " ", ""}));
  EXPECT_TRUE(rows().ends_with("\n[#]*#|one two| |\n"));
  press("Alt+D");
  init_read_associations(config_.path().c_str(), "associate.003");
  EXPECT_EQ(_get_pat_idx("#draft#"), 3);
  EXPECT_EQ(apat_ctr, 4);
}
