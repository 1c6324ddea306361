#include "commands/ui/property_dlg.h"

#include <QCheckBox>

#include "tests/face/window_test.h"

namespace {

class PropertyDlg : public WindowTest {
 protected:
  // Selects, and opens the dialog on them.
  QDialog* open_on(const Texts& names) {
    show({}, names);
    property_dlg_open();
    return dialog("property_dlg");
  }
  // The same with these names as files of mode 0644.
  QDialog* open_on_new(const Texts& names) {
    make(names);
    for (const std::string& name : names) chmod((dir_ / name).c_str(), 0644);
    return open_on(names);
  }
  // All in dir_ with their modes.
  std::string modes() const { return dir_.shell("stat -c '%n %a' * | tr '\\n' ' '"); }
};

}  // namespace

TEST_F(PropertyDlg, ShowsOneEntryWhole) {
  write_file(dir_ / "target", std::string(12345, 'x'), 0640);
  dir_.shell("ln -s target link");
  QDialog* shown = open_on({"link"});
  ASSERT_TRUE(shown);
  const auto text = [shown](const char* name) {
    return find<QWidget>(shown, name)->property("text").toString().toStdString();
  };
  std::string values;
  for (const char* name : {"pr_name", "pr_size", "pr_location", "pr_symbolic"}) values += text(name) + "|";
  for (auto* box : shown->findChildren<QCheckBox*>())
    if (box->isChecked()) values += box->objectName().toStdString() + " ";
  EXPECT_EQ(values, "link|12,345|" + dir_.path() + "|target|pr_uread pr_uwrite pr_gread ");
  EXPECT_TRUE(wait_for([&] { return !text("pr_filetype").empty(); }));
  press("Esc");
}

TEST_F(PropertyDlg, RenamesAndChangesModeByKeys) {
  make({"zzz"});
  open_on_new({"old"});
  // The name comes up selected.
  EXPECT_FALSE(stays("property_dlg", "'new name' @pr_uexec Space @pr_setgroupid Space Return"));
  EXPECT_EQ(modes(), "new name 2744 zzz 644 ");
  EXPECT_EQ(current_name(), "new name");
}

TEST_F(PropertyDlg, DoneWithNothingChangedLeavesOddNamesAndOwnersAlone) {
  const std::string odd = "caf\xe9\n-x";
  write_file(dir_ / odd, "", 0604);
  (void)!chown((dir_ / odd).c_str(), 3999999999u, 3999999998u);
  open_on({odd});
  EXPECT_FALSE(stays("property_dlg", "Return"));
  EXPECT_EQ(mode_of(dir_ / odd), 0604u);
  EXPECT_EQ(gDir.count, 1);
}

// Also when another instance makes a file and the list is read again while the dialog is open.
TEST_F(PropertyDlg, SeveralGetTheCommonBits) {
  make({"d/"});
  QDialog* shown = open_on_new({"b", "c", "d"});
  ASSERT_TRUE(shown);
  EXPECT_TRUE(line(shown, "pr_name")->isReadOnly());
  write_file(dir_ / "a", "", 0644);
  signal_refresh();
  EXPECT_FALSE(stays("property_dlg", "@pr_oread Space @pr_done Space"));
  EXPECT_EQ(modes(), "a 644 b 640 c 640 d 640 ");
}

// Escape while something is waited for, here for the answer to a message, leaves out what is still to come.
TEST_F(PropertyDlg, EachErrorIsShownAndTheRestGoesOnUntilEscape) {
  for (const bool escape : {false, true}) {
    QDialog* shown = open_on_new({"a", "b", "c", "d"});
    dir_.shell(escape ? "rm b" : "rm b c");
    expect_message("Unable to change permissions of 'b'");
    if (!escape) expect_message("Unable to change permissions of 'c'");
    if (escape) QTimer::singleShot(0, shown, [shown] { press("Esc", shown); });
    EXPECT_FALSE(stays("property_dlg", "@pr_oread Space Return"));
    EXPECT_EQ(modes(), escape ? "a 640 c 644 d 644 " : "a 640 d 640 ");
  }
}

TEST_F(PropertyDlg, BadTextsAreToldAndChangeNothing) {
  const std::tuple<const char*, const char*, const char*> rows[] = {
      {"pr_name", "taken", "File name 'taken' already exists"},
      {"pr_name", "a/b/c", "Unable to rename 'a/b/c'."},
      {"pr_owner", "12ab", "Invalid owner_id '12ab'"},
      {"pr_group", "$(id)", "Invalid group '$(id)'"}};
  make({"taken"});
  for (const auto& [field, text, message] : rows) {
    line(open_on_new({"mine"}), field)->setText(QString::fromUtf8(text));
    expect_message(message);
    EXPECT_FALSE(stays("property_dlg", "Return")) << "it closes whatever the outcome";
    EXPECT_EQ(held(), "mine:mine taken:taken ");
  }
}

TEST_F(PropertyDlg, BlocksTheMainWindowUntilItCloses) {
  open_on_new({"a"});
  key("Ctrl+U");
  QTest::mouseClick(fl_view(), Qt::LeftButton);
  EXPECT_EQ(selected(), "a");
  press("Esc");
  EXPECT_FALSE(base_window()->property("busy").toBool());
  EXPECT_FALSE(open_on({})) << "nothing is selected";
}
