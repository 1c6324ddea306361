#include "core/ui/config_dlg.h"

#include <QAbstractButton>
#include <QFontDialog>
#include <cstring>

#include "core/toolkit/fonts.h"
#include "tests/face/window_test.h"
#include "views/charsets.h"
#include "views/fname.h"

namespace {

class ConfigDlg : public WindowTest {
 protected:
  void SetUp() override {
    WindowTest::SetUp();
    write_file(dir_ / "caf\xe9", "");
    write_file(dir_ / ".hidden", "");
    open();
    before_ = record();
  }
  void TearDown() override {
    fname_set_translation("");
    WindowTest::TearDown();
  }
  static QDialog* open_dialog() {
    config_dlg_open();
    return dialog("config_dlg");
  }
  // The bytes that are saved.
  std::string record() {
    EXPECT_EQ(init_save_config(gConfig, gConfigPath, "config.003"), 0);
    return read_file(config_ / "config.003");
  }
  // The offsets at which they differ from those at the start.
  std::vector<size_t> changed_bytes() {
    const std::string now = record();
    std::vector<size_t> offsets;
    for (size_t i = 0; i < now.size(); i++)
      if (before_[i] != now[i]) offsets.push_back(i);
    return offsets;
  }
  std::string before_;
};

using Offsets = std::vector<size_t>;

}  // namespace

TEST_F(ConfigDlg, DoneAtOnceEscapeAndCancelKeepEveryByte) {
  ASSERT_EQ(before_.size(), 5692u);
  for (const char* end : {"capply", "ccancel", ""}) {
    QDialog* shown = open_dialog();
    if (std::string(end) != "capply") {
      toggle(shown, "cdot");
      toggle(shown, "rm_no_prompt");
    }
    if (*end)
      toggle(shown, end);
    else
      press(Qt::Key_Escape);
    EXPECT_FALSE(dialog("config_dlg"));
    EXPECT_EQ(changed_bytes(), Offsets()) << end;
  }
}

TEST_F(ConfigDlg, EachToggleSetsItsOwnBits) {
  const struct {
    const char* name;
    uint32_t mask, bits;
  } rows[] = {
      {"overwrite", 0x2, 0x2},
      {"overwrite_prompt", 0x2, 0},
      {"sym_symlinks", 0xe0, 0x40},
      {"sym_files", 0xe0, 0x80},
      {"sym_prompt", 0xe0, 0x20},
      {"rm1_prompt_nowr", 0x1c, 0x8},
      {"rm1_no_prompt", 0x1c, 0x10},
      {"rm1_prompt", 0x1c, 0x4},
      {"rm_no_prompt", 0x300, 0x200},
      {"rm_prompt", 0x300, 0x100},
      {"rm_i_prompt", 0x1c00, 0x400},
      {"rm_i_no_prompt", 0x1c00, 0x1000},
      {"rm_i_prompt_nowr", 0x1c00, 0x800},
      {"cenc_utf8_alternate", 0x6000, 0x2000},
      {"cenc_alternate", 0x6000, 0x4000},
      {"cenc_utf8", 0x6000, 0},
      {"change_owner_dialog_assume_ignore", 0x8000, 0x8000},
      {"change_owner_dialog_show", 0x8000, 0},
  };
  uint32_t expected = gConfig->flags;
  for (const auto& row : rows) {
    toggle(open_dialog(), row.name);
    press(Qt::Key_Return);
    expected = (expected & ~row.mask) | row.bits;
    EXPECT_EQ(gConfig->flags, expected) << row.name;
    uint32_t stored;
    memcpy(&stored, record().data() + 4656, sizeof stored);
    EXPECT_EQ(stored, expected | SET_FORMAT_MARK) << row.name;
    EXPECT_TRUE(find<QAbstractButton>(open_dialog(), row.name)->isChecked())
        << "not shown again: " << row.name;
    press(Qt::Key_Escape);
  }
}

TEST_F(ConfigDlg, DotFilesAndFoldersFirstApplyAtOnce) {
  ASSERT_EQ(gDir.count, 1);
  toggle(open_dialog(), "cdot");
  toggle(dialog("config_dlg"), "cdirs");
  ASSERT_TRUE(tab_to(dialog("config_dlg"), "cto"));
  press(Qt::Key_A, Qt::ControlModifier);
  type("-5x");
  press(Qt::Key_Return);
  EXPECT_EQ(gDir.count, 2);
  EXPECT_EQ(gOptions & OPT_DOT_PAIR, +OPT_DOT_PAIR);
  EXPECT_EQ(gConfig->cdirs, 2);
  EXPECT_EQ(gConfig->type_ahead_ms, -5) << "any text is taken, by the number it begins with";
  toggle(open_dialog(), "cdot");
  press(Qt::Key_Return);
  EXPECT_EQ(gDir.count, 1);
  EXPECT_EQ(gOptions & OPT_DOT_PAIR, 0u);
}

TEST_F(ConfigDlg, CharacterSetsAreThoseThatOpen) {
  ASSERT_GT(charset_names().size(), 3u);
  for (const std::string& name : charset_names()) EXPECT_TRUE(fname_charset_opens(name.c_str())) << name;
  QDialog* shown = open_dialog();
  EXPECT_EQ(find<QComboBox>(shown, "cenc")->currentIndex(), 0) << "none is chosen";
  toggle(shown, "cenc_utf8_alternate");
  ASSERT_TRUE(tab_to(shown, "cenc"));
  type("ISO-8859-1");
  press(Qt::Key_Return);
  EXPECT_STREQ(fname_decode(gDir.entries[0]->name), "caf\xc3\xa9") << "not applied at once";
  EXPECT_EQ(record().substr(4665, 12), std::string("ISO-8859-1\0\0", 12));
  ASSERT_TRUE(tab_to(open_dialog(), "cenc"));
  press(Qt::Key_Home);
  press(Qt::Key_Return);
  EXPECT_EQ(record().substr(4665, 12), std::string(12, '\0'));
  strcpy(gConfig->encoding, "latin1");  // not in the list, and kept for all that
  open_dialog();
  press(Qt::Key_Return);
  EXPECT_STREQ(gConfig->encoding, "latin1");
}

TEST_F(ConfigDlg, FontsAreChosenAndAppliedOnDone) {
  QDialog* shown = open_dialog();
  for (const char* button : {"clist_select", "ctree_select"}) {
    toggle(shown, button);
    const QPointer<QFontDialog> chooser(shown->findChild<QFontDialog*>());
    ASSERT_TRUE(chooser);
    if (button[1] == 'l') chooser->setCurrentFont(QFont(QStringLiteral("DejaVu Sans"), 15));
    chooser->accept();
    ASSERT_TRUE(wait_for([&] { return !chooser && dialog("config_dlg"); }));
  }
  EXPECT_STREQ(gConfig->list_font, "TextFont08") << "stored before Done";
  const int width = fl_get_column_width(3);
  ASSERT_TRUE(tab_to(shown, "capply"));
  press(Qt::Key_Return);
  EXPECT_EQ(fl_get_column_width(3), width) << "in characters of the new font";
  EXPECT_EQ(fl_view()->font().pointSize(), 15);
  EXPECT_EQ(font_from_name(QString::fromUtf8(gConfig->list_font)).pointSize(), 15);
  EXPECT_STREQ(gConfig->tree_font, "TextFont08") << "the same font again";
}

TEST(Fonts, ANameIsReadBackWholeAndAnOldOneByItsEnd) {
  for (const char* family : {"DejaVu Sans", "Terminus12", "A, B", "Ünïcode"}) {
    QFont font(QString::fromUtf8(family));
    for (const double size : {7.0, 10.5}) {
      font.setPointSizeF(size);
      EXPECT_EQ(font_from_name(font_name(font)).toString().toStdString(), font.toString().toStdString());
      font.setUnderline(true);
    }
  }
  EXPECT_LE(font_name(QFont(QString(300, QLatin1Char('x')))).toUtf8().size(), 254);
  const int own = font_from_name(QString()).pointSize();
  const std::pair<const char*, int> rows[] = {{"helv12", 12}, {"TextFont09i", 9}, {"TextFont00", own},
                                              {"bi", own},    {"99999", 999},     {",,,", own}};
  for (const auto& [name, size] : rows) EXPECT_EQ(font_from_name(QLatin1String(name)).pointSize(), size);
}
