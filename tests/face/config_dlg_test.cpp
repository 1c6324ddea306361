#include "core/ui/config_dlg.h"

#include <QApplication>
#include <QComboBox>
#include <QFontDialog>
#include <QLabel>
#include <QLineEdit>
#include <QRadioButton>
#include <cstring>

#include "core/state.h"
#include "core/toolkit/fonts.h"
#include "dirmodel/dir_record.h"
#include "tests/face/dialog_fixture.h"
#include "views/charsets.h"
#include "views/fname.h"
#include "views/ui/base.h"

namespace {

class ConfigDlg : public DialogTest {
 protected:
  void TearDown() override {
    fname_set_translation("");
    DialogTest::TearDown();
  }
  QDialog* open() {
    config_dlg_open();
    return dialog("config_dlg");
  }
  static void check(QDialog* in, const char* name) {
    ASSERT_TRUE(tab_to_choice(in, name)) << name;
    press(Qt::Key_Space);
  }
  // A toggle of an exclusive group is reached with the arrow keys from the one that is on.
  static bool tab_to_choice(QDialog* in, const char* name) {
    auto* wanted = find<QAbstractButton>(in, name);
    for (int i = 0; i < 120 && wanted && QApplication::focusWidget() != wanted; i++) {
      auto* here = qobject_cast<QRadioButton*>(QApplication::focusWidget());
      const bool same = here && here->group() && here->group() == wanted->group();
      press(same ? Qt::Key_Down : Qt::Key_Tab);
    }
    return wanted && QApplication::focusWidget() == wanted;
  }
  std::string record() {
    EXPECT_EQ(init_save_config(gConfig, gConfigPath, "config.003"), 0);
    return read_file(config_ / "config.003");
  }
};

// Where two records differ: the offsets of their bytes.
std::vector<size_t> differences(const std::string& a, const std::string& b) {
  std::vector<size_t> offsets;
  for (size_t i = 0; i < a.size() && i < b.size(); i++) {
    if (a[i] != b[i]) offsets.push_back(i);
  }
  return offsets;
}

}  // namespace

TEST_F(ConfigDlg, DoneAtOnceKeepsEveryByte) {
  const std::string before = record();
  ASSERT_EQ(before.size(), 5692u);
  ASSERT_TRUE(open());
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("config_dlg"));
  EXPECT_EQ(differences(before, record()), std::vector<size_t>());
}

TEST_F(ConfigDlg, EachToggleSetsItsOwnBits) {
  struct Row {
    const char* name;
    uint32_t mask, bits;
  };
  const Row rows[] = {
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
  for (const Row& row : rows) {
    QDialog* shown = open();
    check(shown, row.name);
    press(Qt::Key_Return);
    expected = (expected & ~row.mask) | row.bits;
    EXPECT_EQ(gConfig->flags, expected) << row.name;
    const std::string bytes = record();
    uint32_t stored;
    memcpy(&stored, bytes.data() + 4656, sizeof stored);
    EXPECT_EQ(stored, expected | SET_FORMAT_MARK) << row.name;
    EXPECT_TRUE(find<QAbstractButton>(open(), row.name)->isChecked()) << "not shown again: " << row.name;
    press(Qt::Key_Escape);
  }
}

TEST_F(ConfigDlg, DotFilesAndFoldersFirstApplyAtOnce) {
  write_file(dir_ / ".hidden", "");
  write_file(dir_ / "a", "");
  show_directory();
  ASSERT_EQ(gDir.count, 1);
  const std::string before = record();
  check(open(), "cdot");
  check(dialog("config_dlg"), "cdirs");
  press(Qt::Key_Return);
  EXPECT_EQ(gDir.count, 2);
  EXPECT_EQ(gOptions & OPT_DOT_PAIR, +OPT_DOT_PAIR);
  EXPECT_EQ(gConfig->cdirs, 2);
  EXPECT_EQ(differences(before, record()), (std::vector<size_t>{4, 4656}));
  check(open(), "cdot");
  press(Qt::Key_Return);
  EXPECT_EQ(gDir.count, 1);
  EXPECT_EQ(gOptions & OPT_DOT_PAIR, 0u);
}

TEST_F(ConfigDlg, TimeOutTakesAnyText) {
  struct Row {
    const char* text;
    int value;
  };
  const Row rows[] = {{"2000ms", 2000}, {"abc", 0},  {"", 0},     {" 7", 7},
                      {"1e3", 1},       {"0x10", 0}, {"-5x", -5}, {"99999999999999999999", INT32_MAX}};
  for (const Row& row : rows) {
    QDialog* shown = open();
    ASSERT_TRUE(tab_to(shown, "cto"));
    press(Qt::Key_A, Qt::ControlModifier);
    press(Qt::Key_Delete);
    type(row.text);
    press(Qt::Key_Return);
    EXPECT_EQ(gConfig->type_ahead_ms, row.value) << row.text;
  }
}

TEST_F(ConfigDlg, CharacterSetsAreThoseThatOpen) {
  ASSERT_GT(charset_names().size(), 3u);
  for (const std::string& name : charset_names()) EXPECT_TRUE(fname_charset_opens(name.c_str())) << name;
  write_file(dir_ / "caf\xe9", "");
  show_directory();
  QDialog* shown = open();
  EXPECT_EQ(find<QComboBox>(shown, "cenc")->currentIndex(), 0) << "none is chosen";
  check(shown, "cenc_utf8_alternate");
  ASSERT_TRUE(tab_to(shown, "cenc"));
  type("ISO-8859-1");
  press(Qt::Key_Return);
  EXPECT_STREQ(gConfig->encoding, "ISO-8859-1");
  EXPECT_STREQ(fname_decode(gDir.entries[0]->name), "caf\xc3\xa9") << "not applied at once";
  const std::string bytes = record();
  EXPECT_EQ(bytes.substr(4665, 12), std::string("ISO-8859-1\0\0", 12));
  EXPECT_EQ(bytes[5689], '\0');

  shown = open();
  EXPECT_EQ(find<QComboBox>(shown, "cenc")->currentText(), QStringLiteral("ISO-8859-1"));
  ASSERT_TRUE(tab_to(shown, "cenc"));
  press(Qt::Key_Home);
  press(Qt::Key_Return);
  EXPECT_EQ(std::string(gConfig->encoding, sizeof gConfig->encoding),
            std::string(sizeof gConfig->encoding, '\0'));
}

TEST_F(ConfigDlg, ASetNotInTheListIsKeptWhereItOpens) {
  strcpy(gConfig->encoding, "latin1");
  open();
  press(Qt::Key_Return);
  EXPECT_STREQ(gConfig->encoding, "latin1");
  strcpy(gConfig->encoding, "no-such-set");
  open();
  press(Qt::Key_Return);
  EXPECT_STREQ(gConfig->encoding, "");
}

TEST_F(ConfigDlg, FontsAreChosenAndAppliedOnDone) {
  QDialog* shown = open();
  EXPECT_EQ(find<QLabel>(shown, "clist_font")->text(), QStringLiteral("TextFont08"));
  QFont chosen = base_find_widget("filelist")->font();
  chosen.setPointSize(15);
  chosen.setItalic(true);
  struct Row {
    const char *button, *label, *title;
  };
  for (const Row& row : {Row{"clist_select", "clist_font", "Select File List Font"},
                         Row{"ctree_select", "ctree_font", "Select Tree Font"}}) {
    ASSERT_TRUE(tab_to(shown, row.button));
    press(Qt::Key_Space);
    const QPointer<QFontDialog> chooser(shown->findChild<QFontDialog*>());
    ASSERT_TRUE(chooser);
    EXPECT_EQ(chooser->windowTitle().toStdString(), row.title);
    if (row.label == std::string("clist_font")) chooser->setCurrentFont(chosen);
    chooser->accept();
    ASSERT_TRUE(QTest::qWaitFor([&] { return !chooser; }));
    ASSERT_TRUE(dialog("config_dlg"));
  }
  EXPECT_EQ(find<QLabel>(shown, "ctree_font")->text(), QStringLiteral("TextFont08")) << "the same font again";
  EXPECT_STREQ(gConfig->list_font, "TextFont08") << "stored before Done";
  ASSERT_TRUE(tab_to(shown, "capply"));
  press(Qt::Key_Return);
  EXPECT_EQ(base_find_widget("filelist")->font().pointSize(), 15);
  EXPECT_TRUE(base_find_widget("filelist")->font().italic());
  EXPECT_EQ(font_from_name(QString::fromUtf8(gConfig->list_font)).pointSize(), 15);
  EXPECT_STREQ(gConfig->tree_font, "TextFont08");
}

TEST_F(ConfigDlg, EscapeAndCancelChangeNothing) {
  const std::string before = record();
  for (const bool button : {false, true}) {
    QDialog* shown = open();
    check(shown, "cdot");
    check(shown, "rm_no_prompt");
    if (button) {
      ASSERT_TRUE(tab_to(shown, "ccancel"));
    }
    press(button ? Qt::Key_Space : Qt::Key_Escape);
    EXPECT_FALSE(dialog("config_dlg"));
    EXPECT_EQ(differences(before, record()), std::vector<size_t>());
  }
}

TEST(Fonts, NamesOfTheRecord) {
  struct Row {
    const char* name;
    int size;
    bool bold, italic;
  };
  const Row rows[] = {{"TextFont08", 8, false, false},  {"helv12", 12, false, false},
                      {"TextFont09i", 9, false, true},  {"TextFont10b", 10, true, false},
                      {"x24bi", 24, true, true},        {"", -1, false, false},
                      {"TextFont00", -1, false, false}, {"bi", -1, false, false},
                      {"99999", 999, false, false},     {",,,", -1, false, false}};
  const int own = font_from_name(QString()).pointSize();
  for (const Row& row : rows) {
    const QFont font = font_from_name(QString::fromUtf8(row.name));
    EXPECT_EQ(font.pointSize(), row.size < 0 ? own : row.size) << row.name;
    EXPECT_EQ(font.bold(), row.bold) << row.name;
    EXPECT_EQ(font.italic(), row.italic) << row.name;
  }
}

TEST(Fonts, ANameIsReadBackWhole) {
  std::vector<QFont> fonts;
  for (const char* family : {"DejaVu Sans", "Terminus12", "A, B", "Ünïcode"}) {
    for (const double size : {7.0, 12.0, 10.5, 120.0}) {
      QFont font(QString::fromUtf8(family));
      font.setPointSizeF(size);
      fonts.push_back(font);
      font.setWeight(QFont::Light);
      font.setUnderline(true);
      fonts.push_back(font);
    }
  }
  for (const QFont& font : fonts) {
    const QString name = font_name(font);
    EXPECT_LE(name.toUtf8().size(), 254) << name.toStdString();
    EXPECT_EQ(font_from_name(name).toString().toStdString(), font.toString().toStdString());
  }
  EXPECT_LE(font_name(QFont(QString(300, QLatin1Char('x')))).toUtf8().size(), 254);
}
