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
    make({"caf\xe9", ".hidden"});
    open();
  }
  void TearDown() override {
    fname_set_translation("");
    WindowTest::TearDown();
  }
  // Opens the dialog and works in it. Whether it is open then.
  static bool open_and(const std::string& words) {
    config_dlg_open();
    return stays("config_dlg", words);
  }
  // The bytes that are saved.
  std::string record() {
    EXPECT_EQ(init_save_config(gConfig, gConfigPath, "config.003"), 0);
    return read_file(config_ / "config.003");
  }
};

}  // namespace

TEST_F(ConfigDlg, DoneAtOnceEscapeAndCancelKeepEveryByte) {
  const std::string before = record();
  ASSERT_EQ(before.size(), 5692u);
  for (const char* words : {"@capply Space", "@cdot Space @rm_no_prompt Space @ccancel Space",
                            "@cdot Space @rm_no_prompt Space Esc"}) {
    EXPECT_FALSE(open_and(words));
    EXPECT_TRUE(record() == before) << words;
  }
}

TEST_F(ConfigDlg, EachToggleSetsItsOwnBits) {
  const std::pair<uint32_t, std::vector<std::pair<const char*, uint32_t>>> groups[] = {
      {0x2, {{"overwrite", 0x2}, {"overwrite_prompt", 0}}},
      {0xe0, {{"sym_symlinks", 0x40}, {"sym_files", 0x80}, {"sym_prompt", 0x20}}},
      {0x1c, {{"rm1_prompt_nowr", 0x8}, {"rm1_no_prompt", 0x10}, {"rm1_prompt", 0x4}}},
      {0x300, {{"rm_no_prompt", 0x200}, {"rm_prompt", 0x100}}},
      {0x1c00, {{"rm_i_prompt", 0x400}, {"rm_i_no_prompt", 0x1000}, {"rm_i_prompt_nowr", 0x800}}},
      {0x6000, {{"cenc_utf8_alternate", 0x2000}, {"cenc_alternate", 0x4000}, {"cenc_utf8", 0}}},
      {0x8000, {{"change_owner_dialog_assume_ignore", 0x8000}, {"change_owner_dialog_show", 0}}}};
  uint32_t expected = gConfig->flags, stored;
  for (const auto& [mask, toggles] : groups) {
    for (const auto& [name, bits] : toggles) {
      EXPECT_FALSE(open_and("@" + std::string(name) + " Space Return"));
      expected = (expected & ~mask) | bits;
      EXPECT_EQ(gConfig->flags, expected) << name;
      memcpy(&stored, record().data() + 4656, sizeof stored);
      EXPECT_EQ(stored, expected | SET_FORMAT_MARK) << name;
      config_dlg_open();
      EXPECT_TRUE(find<QAbstractButton>(dialog("config_dlg"), name)->isChecked())
          << "not shown again: " << name;
      press("Esc");
    }
  }
}

TEST_F(ConfigDlg, DotFilesAndFoldersFirstApplyAtOnce) {
  ASSERT_EQ(gDir.count, 1);
  EXPECT_FALSE(open_and("@cdot Space @cdirs Space @cto Ctrl+A '-5x' Return"));
  EXPECT_EQ(gDir.count, 2);
  EXPECT_EQ(gOptions & OPT_DOT_PAIR, +OPT_DOT_PAIR);
  EXPECT_EQ(gConfig->cdirs, 2);
  EXPECT_EQ(gConfig->type_ahead_ms, -5) << "any text is taken, by the number it begins with";
  EXPECT_FALSE(open_and("@cdot Space Return"));
  EXPECT_EQ(gDir.count, 1);
  EXPECT_EQ(gOptions & OPT_DOT_PAIR, 0u);
}

TEST_F(ConfigDlg, CharacterSetsAreThoseThatOpen) {
  ASSERT_GT(charset_names().size(), 3u);
  for (const std::string& name : charset_names()) EXPECT_TRUE(fname_charset_opens(name.c_str())) << name;
  config_dlg_open();
  EXPECT_EQ(find<QComboBox>(dialog("config_dlg"), "cenc")->currentIndex(), 0) << "none is chosen";
  EXPECT_FALSE(stays("config_dlg", "@cenc_utf8_alternate Space @cenc 'ISO-8859-1' Return"));
  EXPECT_STREQ(fname_decode(gDir.entries[0]->name), "caf\xc3\xa9") << "not applied at once";
  EXPECT_EQ(record().substr(4665, 12), std::string("ISO-8859-1\0\0", 12));
  EXPECT_FALSE(open_and("@cenc Home Return"));
  EXPECT_EQ(record().substr(4665, 12), std::string(12, '\0'));
  strcpy(gConfig->encoding, "latin1");  // not in the list, and kept for all that
  EXPECT_FALSE(open_and("Return"));
  EXPECT_STREQ(gConfig->encoding, "latin1");
}

TEST_F(ConfigDlg, FontsAreChosenAndAppliedOnDone) {
  config_dlg_open();
  for (const std::string button : {"clist_select", "ctree_select"}) {
    EXPECT_TRUE(stays("config_dlg", "@" + button + " Space"));
    const QPointer<QFontDialog> chooser(dialog("config_dlg")->findChild<QFontDialog*>());
    ASSERT_TRUE(chooser);
    if (button[1] == 'l') chooser->setCurrentFont(QFont(QStringLiteral("DejaVu Sans"), 15));
    chooser->accept();
    ASSERT_TRUE(wait_for([&] { return !chooser && dialog("config_dlg"); }));
  }
  EXPECT_STREQ(gConfig->list_font, "TextFont08") << "stored before Done";
  const int width = fl_get_column_width(3);
  press("@capply Return");
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
  EXPECT_TRUE(font_from_name(QStringLiteral("TextFont09i")).italic());
}
