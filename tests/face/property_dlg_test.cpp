#include "commands/ui/property_dlg.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QTimer>

#include "core/state.h"
#include "dirmodel/dir_record.h"
#include "tests/face/dialog_fixture.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"

namespace {

class PropertyDlg : public DialogTest {
 protected:
  mode_t mode_of(const std::string& name) {
    struct stat status;
    return stat((dir_ / name).c_str(), &status) == 0 ? status.st_mode & 07777u : 0xffff;
  }
  QDialog* open(const std::vector<std::string>& names) {
    show_directory(names);
    property_dlg_open();
    return dialog("property_dlg");
  }
  static std::string text(QDialog* in, const char* name) {
    if (auto* field = in->findChild<QLineEdit*>(QString::fromLatin1(name)))
      return field->text().toStdString();
    return find<QLabel>(in, name)->text().toStdString();
  }
};

}  // namespace

TEST_F(PropertyDlg, ShowsOneEntryWhole) {
  write_file(dir_ / "target", std::string(12345, 'x'), 0640);
  ASSERT_EQ(symlink("target", (dir_ / "link").c_str()), 0);
  QDialog* shown = open({"link"});
  ASSERT_TRUE(shown);
  EXPECT_EQ(text(shown, "pr_name"), "link");
  EXPECT_EQ(text(shown, "pr_size"), "12,345");
  EXPECT_EQ(text(shown, "pr_location"), dir_.path());
  EXPECT_EQ(text(shown, "pr_symbolic"), "target");
  EXPECT_TRUE(QTest::qWaitFor([&] { return !text(shown, "pr_filetype").empty(); }, 30000));
  struct Row {
    const char* name;
    bool on;
  };
  const Row rows[] = {{"pr_uread", true},      {"pr_uwrite", true},     {"pr_uexec", false},
                      {"pr_gread", true},      {"pr_gwrite", false},    {"pr_gexec", false},
                      {"pr_oread", false},     {"pr_owrite", false},    {"pr_oexec", false},
                      {"pr_setuserid", false}, {"pr_setgroupid", false}};
  for (const Row& row : rows) EXPECT_EQ(find<QCheckBox>(shown, row.name)->isChecked(), row.on) << row.name;
  press(Qt::Key_Escape);
  EXPECT_FALSE(dialog("property_dlg"));
}

TEST_F(PropertyDlg, RenamesAndChangesModeByKeys) {
  write_file(dir_ / "old", "", 0644);
  write_file(dir_ / "zzz", "");
  QDialog* shown = open({"old"});
  type("new name");  // the name comes up selected
  ASSERT_TRUE(tab_to(shown, "pr_uexec"));
  press(Qt::Key_Space);
  ASSERT_TRUE(tab_to(shown, "pr_setgroupid"));
  press(Qt::Key_Space);
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
  open({odd});
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("property_dlg"));
  EXPECT_EQ(mode_of(odd), 0604u);
  EXPECT_EQ(gDir.count, 1);
}

TEST_F(PropertyDlg, SeveralGetTheCommonBits) {
  write_file(dir_ / "a", "", 0644);
  write_file(dir_ / "b", "", 0600);
  ASSERT_EQ(chmod((dir_ / "b").c_str(), 01600), 0);
  mkdir((dir_ / "d").c_str(), 0755);
  QDialog* shown = open({"a", "b", "d"});
  EXPECT_EQ(text(shown, "pr_comment"), "(3 items: 1 directory, 2 files)");
  EXPECT_TRUE(find<QLineEdit>(shown, "pr_name")->isReadOnly());
  for (const char* dimmed : {"pr_filetype_title", "pr_modified_title", "pr_symbolic_title", "pr_size"}) {
    EXPECT_FALSE(find<QWidget>(shown, dimmed)->isEnabled()) << dimmed;
  }
  ASSERT_TRUE(tab_to(shown, "pr_gread"));
  press(Qt::Key_Space);
  ASSERT_TRUE(tab_to(shown, "pr_done"));
  press(Qt::Key_Space);
  for (const char* name : {"a", "b", "d"}) EXPECT_EQ(mode_of(name), 0640u) << name;
}

TEST_F(PropertyDlg, EachErrorOfSeveralIsShownAndTheRestGoesOn) {
  for (const char* name : {"a", "b", "c"}) write_file(dir_ / name, "", 0644);
  QDialog* shown = open({"a", "b", "c"});
  unlink((dir_ / "a").c_str());
  unlink((dir_ / "b").c_str());
  ASSERT_TRUE(tab_to(shown, "pr_oread"));
  press(Qt::Key_Space);
  expect_message("Unable to change permissions of 'a'");
  expect_message("Unable to change permissions of 'b'");
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("property_dlg"));
  EXPECT_EQ(mode_of("c"), 0640u);
  EXPECT_EQ(gDir.count, 1);
}

TEST_F(PropertyDlg, BadTextsAreToldAndChangeNothing) {
  struct Row {
    const char *field, *text, *message;
  };
  const Row rows[] = {
      {"pr_name", "taken", "File name 'taken' already exists"},
      {"pr_name", "a/b/c", "Unable to rename 'a/b/c'."},
      {"pr_owner", "12ab", "Invalid owner_id '12ab'"},
      {"pr_group", "$(id)", "Invalid group '$(id)'"},
  };
  write_file(dir_ / "taken", "theirs");
  write_file(dir_ / "mine", "mine");
  for (const Row& row : rows) {
    QDialog* shown = open({"mine"});
    find<QLineEdit>(shown, row.field)->setText(QString::fromUtf8(row.text));
    expect_message(row.message);
    press(Qt::Key_Return);
    EXPECT_FALSE(dialog("property_dlg")) << "it closes whatever the outcome";
    EXPECT_EQ(read_file(dir_ / "taken"), "theirs");
    EXPECT_EQ(read_file(dir_ / "mine"), "mine");
  }
}

// Another instance made a file, and the list was read again while the dialog was open.
TEST_F(PropertyDlg, ARefreshMeanwhileDoesNotChangeWhoseProperties) {
  write_file(dir_ / "b", "", 0644);
  QDialog* shown = open({"b"});
  write_file(dir_ / "a", "", 0644);
  signal_refresh();
  ASSERT_TRUE(tab_to(shown, "pr_oread"));
  press(Qt::Key_Space);
  press(Qt::Key_Return);
  EXPECT_EQ(mode_of("a"), 0644u);
  EXPECT_EQ(mode_of("b"), 0640u);
}

TEST_F(PropertyDlg, BlocksTheMainWindowUntilItCloses) {
  write_file(dir_ / "a", "");
  open({"a"});
  QTest::keyClick(base_find_widget("filelist"), Qt::Key_U, Qt::ControlModifier);
  QTest::mouseClick(base_find_widget("filelist"), Qt::LeftButton);
  EXPECT_EQ(gDir.sel_count, 1);
  EXPECT_TRUE(base_find_widget("filelist")->window()->property("busy").toBool());
  press(Qt::Key_Escape);
  EXPECT_FALSE(base_find_widget("filelist")->window()->property("busy").toBool());
  show_directory();
  property_dlg_open();
  EXPECT_FALSE(dialog("property_dlg")) << "nothing is selected";
}

// While something is waited for, here for the answer to a message, Escape leaves out what is still to come.
TEST_F(PropertyDlg, EscapeEndsALongChange) {
  for (const char* name : {"a", "b", "c", "d"}) write_file(dir_ / name, "", 0644);
  QDialog* shown = open({"a", "b", "c", "d"});
  unlink((dir_ / "b").c_str());
  ASSERT_TRUE(tab_to(shown, "pr_oread"));
  press(Qt::Key_Space);
  expect_message("Unable to change permissions of 'b'");
  QTimer::singleShot(0, shown, [shown] { QTest::keyClick(shown, Qt::Key_Escape); });
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("property_dlg"));
  EXPECT_EQ(mode_of("a"), 0640u);
  for (const char* name : {"c", "d"}) EXPECT_EQ(mode_of(name), 0644u) << name;
}
