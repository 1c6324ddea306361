#include "commands/ui/symlink_dlg.h"

#include <unistd.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>

#include "tests/face/dialog_fixture.h"

namespace {

class SymlinkDlg : public DialogTest {
 protected:
  std::string target_of(const std::string& name) {
    char text[4096];
    const ssize_t length = readlink((dir_ / name).c_str(), text, sizeof text);
    return length < 0 ? "" : std::string(text, length);
  }
};

}  // namespace

TEST_F(SymlinkDlg, LinksToTheFirstSelectedEntry) {
  const std::string odd = "n\xff 'x' &y";
  write_file(dir_ / odd, "");
  write_file(dir_ / "z", "");
  show_directory({odd, "z"});
  symlink_dlg_open();
  QDialog* asked = dialog("symlink_dlg");
  EXPECT_EQ(find<QLabel>(asked, "symlink_src_lbl")->text().toStdString(), "?n? 'x' &y");
  auto* by_path_manager = find<QCheckBox>(asked, "symlink_proclink_tgl");
  EXPECT_FALSE(by_path_manager->isEnabled());
  EXPECT_FALSE(by_path_manager->toolTip().isEmpty());
  type("link");
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("symlink_dlg"));
  EXPECT_EQ(target_of("link"), dir_ / odd);
}

TEST_F(SymlinkDlg, NoticesAndTheQuestionKeepItOpen) {
  write_file(dir_ / "file", "kept");
  ASSERT_EQ(symlink("old", (dir_ / "link").c_str()), 0);
  show_directory({"file"});
  symlink_dlg_open();
  QDialog* asked = dialog("symlink_dlg");
  expect_message("Symlink destination name must be entered!");
  press(Qt::Key_Return);
  ASSERT_TRUE(dialog("symlink_dlg"));
  type("file");
  expect_message("'file' exists and is not a symlink.\n");
  press(Qt::Key_Return);
  ASSERT_TRUE(dialog("symlink_dlg"));
  EXPECT_EQ(read_file(dir_ / "file"), "kept");
  find<QLineEdit>(asked, "symlink_dst_txt")->setText(QStringLiteral("link"));
  expect_message("The destination symlink exists.\nDo you want to overwrite it ?", Qt::Key_Escape);
  press(Qt::Key_Return);
  ASSERT_TRUE(dialog("symlink_dlg"));
  EXPECT_EQ(target_of("link"), "old");
  expect_message("The destination symlink exists.\nDo you want to overwrite it ?", Qt::Key_Return);
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("symlink_dlg"));
  EXPECT_EQ(target_of("link"), dir_ / "file");
}

TEST_F(SymlinkDlg, NothingSelectedOpensNothing) {
  write_file(dir_ / "file", "");
  show_directory();
  symlink_dlg_open();
  EXPECT_FALSE(dialog("symlink_dlg"));
}
