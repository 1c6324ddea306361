#include "commands/ui/property_dlg.h"

#include <QCheckBox>

#include "tests/face/window_test.h"

namespace {

class PropertyDlg : public WindowTest {
 protected:
  mode_t mode_of(const std::string& name) {
    struct stat status;
    return stat((dir_ / name).c_str(), &status) == 0 ? status.st_mode & 07777u : 0xffff;
  }
  // Files of mode 0644, and the dialog on them.
  QDialog* open_on(const Texts& names) {
    show(names, names);
    for (const std::string& name : names) chmod((dir_ / name).c_str(), 0644);
    show({}, names);
    property_dlg_open();
    return dialog("property_dlg");
  }
  static std::string text(QDialog* in, const char* name) {
    return find<QWidget>(in, name)->property("text").toString().toStdString();
  }
};

}  // namespace

TEST_F(PropertyDlg, ShowsOneEntryWhole) {
  write_file(dir_ / "target", std::string(12345, 'x'), 0640);
  ASSERT_EQ(symlink("target", (dir_ / "link").c_str()), 0);
  show({}, {"link"});
  property_dlg_open();
  QDialog* shown = dialog("property_dlg");
  ASSERT_TRUE(shown);
  std::string values;
  for (const char* name : {"pr_name", "pr_size", "pr_location", "pr_symbolic"})
    values += text(shown, name) + "|";
  EXPECT_EQ(values, "link|12,345|" + dir_.path() + "|target|");
  EXPECT_TRUE(wait_for([&] { return !text(shown, "pr_filetype").empty(); }));
  std::string on;
  for (auto* box : shown->findChildren<QCheckBox*>())
    if (box->isChecked()) on += box->objectName().toStdString() + " ";
  EXPECT_EQ(on, "pr_uread pr_uwrite pr_gread ");
  press(Qt::Key_Escape);
}

TEST_F(PropertyDlg, RenamesAndChangesModeByKeys) {
  make({"zzz"});
  QDialog* shown = open_on({"old"});
  type("new name");  // the name comes up selected
  toggle(shown, "pr_uexec");
  toggle(shown, "pr_setgroupid");
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("property_dlg"));
  EXPECT_EQ(mode_of("new name"), 02744u);
  EXPECT_FALSE(path_exists(dir_ / "old"));
  EXPECT_EQ(current_name(), "new name");
}

TEST_F(PropertyDlg, DoneWithNothingChangedLeavesOddNamesAndOwnersAlone) {
  const std::string odd = "caf\xe9\n-x";
  write_file(dir_ / odd, "", 0604);
  (void)!chown((dir_ / odd).c_str(), 3999999999u, 3999999998u);
  show({}, {odd});
  property_dlg_open();
  ASSERT_TRUE(dialog("property_dlg"));
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("property_dlg"));
  EXPECT_EQ(mode_of(odd), 0604u);
  EXPECT_EQ(gDir.count, 1);
}

// Also when another instance makes a file and the list is read again while the dialog is open.
TEST_F(PropertyDlg, SeveralGetTheCommonBits) {
  make({"d/", "c"});
  show({}, {"c", "d"});
  ASSERT_EQ(chmod((dir_ / "c").c_str(), 01600), 0);
  QDialog* shown = open_on({"b", "c", "d"});
  ASSERT_TRUE(shown);
  EXPECT_TRUE(find<QLineEdit>(shown, "pr_name")->isReadOnly());
  write_file(dir_ / "a", "", 0644);
  signal_refresh();
  toggle(shown, "pr_oread");
  toggle(shown, "pr_done");
  EXPECT_FALSE(dialog("property_dlg"));
  for (const char* name : {"b", "c", "d"}) EXPECT_EQ(mode_of(name), 0640u) << name;
  EXPECT_EQ(mode_of("a"), 0644u);
}

// Escape while something is waited for, here for the answer to a message, leaves out what is still to come.
TEST_F(PropertyDlg, EachErrorIsShownAndTheRestGoesOnUntilEscape) {
  for (const bool escape : {false, true}) {
    QDialog* shown = open_on({"a", "b", "c", "d"});
    unlink((dir_ / "b").c_str());
    if (!escape) unlink((dir_ / "c").c_str());
    toggle(shown, "pr_oread");
    expect_message("Unable to change permissions of 'b'");
    if (!escape) expect_message("Unable to change permissions of 'c'");
    if (escape) QTimer::singleShot(0, shown, [shown] { QTest::keyClick(shown, Qt::Key_Escape); });
    press(Qt::Key_Return);
    EXPECT_FALSE(dialog("property_dlg"));
    EXPECT_EQ(mode_of("a"), 0640u);
    EXPECT_EQ(mode_of("d"), escape ? 0644u : 0640u);
  }
}

TEST_F(PropertyDlg, BadTextsAreToldAndChangeNothing) {
  const struct {
    const char *field, *text, *message;
  } rows[] = {
      {"pr_name", "taken", "File name 'taken' already exists"},
      {"pr_name", "a/b/c", "Unable to rename 'a/b/c'."},
      {"pr_owner", "12ab", "Invalid owner_id '12ab'"},
      {"pr_group", "$(id)", "Invalid group '$(id)'"},
  };
  make({"taken"});
  for (const auto& row : rows) {
    QDialog* shown = open_on({"mine"});
    find<QLineEdit>(shown, row.field)->setText(QString::fromUtf8(row.text));
    expect_message(row.message);
    press(Qt::Key_Return);
    EXPECT_FALSE(dialog("property_dlg")) << "it closes whatever the outcome";
    EXPECT_EQ(read_file(dir_ / "taken") + read_file(dir_ / "mine"), "takenmine");
  }
}

TEST_F(PropertyDlg, BlocksTheMainWindowUntilItCloses) {
  open_on({"a"});
  key(Qt::Key_U, Qt::ControlModifier);
  QTest::mouseClick(fl_view(), Qt::LeftButton);
  EXPECT_EQ(selected(), "a");
  press(Qt::Key_Escape);
  EXPECT_FALSE(base_window()->property("busy").toBool());
  show({});
  property_dlg_open();
  EXPECT_FALSE(dialog("property_dlg")) << "nothing is selected";
}
