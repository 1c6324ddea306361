#include "commands/ui/symlink_dlg.h"

#include <QLineEdit>
#include <filesystem>

#include "tests/face/window_test.h"

namespace {
class SymlinkDlg : public WindowTest {
 protected:
  std::string target_of(const std::string& name) { return std::filesystem::read_symlink(dir_ / name); }
};
}  // namespace

TEST_F(SymlinkDlg, LinksToTheFirstSelectedEntry) {
  const std::string odd = "n\xff 'x' &y";
  show({odd, "z"});
  symlink_dlg_open();
  EXPECT_FALSE(dialog("symlink_dlg")) << "nothing is selected";
  select({odd, "z"});
  symlink_dlg_open();
  EXPECT_EQ(find<QLabel>(dialog("symlink_dlg"), "symlink_src_lbl")->text(), QStringLiteral("?n? 'x' &y"));
  type("link");
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("symlink_dlg"));
  EXPECT_EQ(target_of("link"), dir_ / odd);
}

TEST_F(SymlinkDlg, NoticesAndTheQuestionKeepItOpen) {
  std::filesystem::create_symlink("old", dir_ / "link");
  show({"file"}, {"file"});
  symlink_dlg_open();
  const std::string overwrite = "The destination symlink exists.\nDo you want to overwrite it ?";
  const struct {
    const char* name;
    std::string message;
  } rows[] = {{"", "Symlink destination name must be entered!"},
              {"file", "'file' exists and is not a symlink.\n"},
              {"link", overwrite}};
  for (const auto& row : rows) {
    ASSERT_TRUE(dialog("symlink_dlg"));
    find<QLineEdit>(dialog("symlink_dlg"), "symlink_dst_txt")->setText(QString::fromUtf8(row.name));
    expect_message(row.message, Qt::Key_Escape);
    press(Qt::Key_Return);
    ASSERT_TRUE(dialog("symlink_dlg"));
    EXPECT_EQ(read_file(dir_ / "file") + target_of("link"), "fileold");
  }
  expect_message(overwrite, Qt::Key_Return);
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("symlink_dlg"));
  EXPECT_EQ(target_of("link"), dir_ / "file");
}
