#include "commands/ui/menus.h"

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QTextBrowser>
#include <map>

#include "commands/ui/menu_table.h"
#include "core/keybind.h"
#include "core/settings.h"
#include "fileops/ui/clipboard.h"
#include "tests/face/shown_window.h"
#include "views/ui/navigation.h"

namespace {
// The identifiers of what is disabled while the menu is open, submenus included.
std::string disabled_in(QMenu* menu) {
  menu->popup(QPoint(0, 0));
  std::string names;
  for (QAction* action : menu->findChildren<QAction*>())
    if (!action->isEnabled()) names += action->objectName().toStdString() + " ";
  menu->hide();
  for (QAction* action : menu->findChildren<QAction*>())
    EXPECT_TRUE(action->isEnabled()) << "a closed menu must not hold back a key";
  return names;
}

QDialog* open_dialog(const char* name) {
  for (QWidget* window : QApplication::topLevelWidgets())
    if (window->objectName() == QLatin1String(name) && window->isVisible())
      return qobject_cast<QDialog*>(window);
  return nullptr;
}

void close_dialog(const char* name) {
  if (QDialog* dialog = open_dialog(name)) dialog->reject();
}
}  // namespace

TEST(Menus, ItemsFollowTheSelectionAndTheClipboard) {
  ShownWindow window({"a.txt", "b.txt", "d/", "e/"});
  const struct {
    std::vector<std::string> selection;
    bool clipboard;
    const char *file, *edit;
  } rows[] = {
      {{},
       false,
       "fm_open fm_open_another fm_view fm_edit fm_open_with fm_print fm_print_directory fm_inspect ",
       "em_cut em_copy em_paste em_delete em_rename em_unselect em_unselect_all em_unselect_pattern "},
      {{"d"}, true, "fm_view fm_edit fm_open_with fm_print fm_print_directory ", ""},
      {{"d", "a.txt"}, true, "fm_view fm_edit fm_open_with fm_print fm_print_directory ", ""},
      {{"a.txt"}, false, nullptr, "em_paste "},
  };
  for (const auto& row : rows) {
    QApplication::clipboard()->setMimeData(new QMimeData);
    if (row.clipboard) clipboard_put({"/d", {"x"}, false}, false);
    window.select(row.selection);
    if (row.file) {
      EXPECT_EQ(disabled_in(window.menu("file_menu")), row.file);
    }
    EXPECT_EQ(disabled_in(window.menu("edit_menu")), row.edit);
  }
  const std::string back = fl_get_back_count() == 0 ? "gm_back " : "";
  EXPECT_EQ(disabled_in(window.menu("go_menu")), back + "gm_forward ");
  EXPECT_EQ(disabled_in(window.menu("hotlist_menu")), "hm_delete ");
}

// The state when a menu was last open says nothing about the moment of a key.
TEST(Menus, AKeyIsJudgedByTheMomentItIsPressed) {
  ShownWindow window({"a", "b"});
  disabled_in(window.menu("edit_menu"));
  QTest::keyClick(window.list(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_FALSE(em_check_clipboard_for_type(-1, nullptr)) << "nothing was selected";
  QTest::keyClick(window.list(), Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(window.selected(), "a b ");
  QTest::keyClick(window.list(), Qt::Key_X, Qt::ControlModifier);
  EXPECT_TRUE(em_check_clipboard_for_type(-1, kClipMoveFiles));
  EXPECT_EQ(window.selected(), "") << "a cut clears the selection";
  EXPECT_TRUE(file_is_cut(window.path().c_str(), "b"));
  window.select({"a"});
  QTest::keyClick(window.list(), Qt::Key_I, Qt::ControlModifier);
  EXPECT_EQ(window.selected(), "b ");
  QTest::keyClick(window.list(), Qt::Key_C, Qt::ControlModifier);
  EXPECT_FALSE(file_is_cut(window.path().c_str(), "a")) << "a copy ends the cut";
  QTest::keyClick(window.list(), Qt::Key_U, Qt::ControlModifier);
  EXPECT_EQ(window.selected(), "");
}

TEST(Menus, TextFieldsKeepTheKeysThatEditText) {
  ShownWindow window({"a", "b"});
  window.select({"a", "b"});
  for (const char* name : {"tb_curpath", "tb_filespec"}) {
    QLineEdit* field = base_find<QComboBox>(name)->lineEdit();
    const struct {
      Qt::Key key;
      Qt::KeyboardModifiers modifiers;
      const char* text;
    } rows[] = {
        {Qt::Key_A, Qt::ControlModifier, "wxyz"},   {Qt::Key_C, Qt::ControlModifier, "wxyz"},
        {Qt::Key_End, Qt::NoModifier, "wxyz"},      {Qt::Key_Backspace, Qt::NoModifier, "wxy"},
        {Qt::Key_Home, Qt::NoModifier, "wxy"},      {Qt::Key_Delete, Qt::NoModifier, "xy"},
        {Qt::Key_V, Qt::ControlModifier, "wxyzxy"}, {Qt::Key_A, Qt::ControlModifier, "wxyzxy"},
        {Qt::Key_X, Qt::ControlModifier, ""},       {Qt::Key_V, Qt::ControlModifier, "wxyzxy"},
    };
    field->setFocus();
    field->setText(QStringLiteral("wxyz"));
    for (const auto& row : rows) {
      QTest::keyClick(field, row.key, row.modifiers);
      EXPECT_EQ(field->text().toStdString(), row.text) << name << ", key " << row.key;
    }
    EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("wxyzxy"));
    EXPECT_FALSE(em_check_clipboard_for_type(-1, nullptr));
    EXPECT_EQ(window.selected(), "a b ");
    EXPECT_EQ(gDir.path, window.path());
  }
}

TEST(Menus, NoMnemonicInTheWindowTakesTheKeyOfAnItemOrOfAnother) {
  ShownWindow window;
  std::map<QString, QString> owner;  // of a key, which no two may share
  const auto claim = [&owner](const QKeySequence& keys, const QString& who) {
    if (keys.isEmpty()) return;
    EXPECT_TRUE(owner.emplace(keys.toString(), who).second)
        << keys.toString().toStdString() << ": " << who.toStdString() << " and "
        << owner[keys.toString()].toStdString();
  };
  for (const MenuTitle& title : kMenuBar) {
    const QString shown = window.menu(title.id)->title();
    claim(QKeySequence::mnemonic(shown), shown);
  }
  for (const MenuEntry& entry : kMenuTable)
    if (const QAction* item = menu_item(entry.id))
      for (const QKeySequence& keys : item->shortcuts()) claim(keys, item->text());
  for (const QLabel* label : base_window()->findChildren<QLabel*>())
    if (label->buddy()) claim(QKeySequence::mnemonic(label->text()), label->text());
  EXPECT_TRUE(owner.count(QStringLiteral("Alt+V"))) << "the View command's key";
}

TEST(Menus, KeysWithoutModifiersBelongToTheList) {
  ShownWindow window({"a", "d/"});
  window.select({"d"});
  QWidget* tree = base_find_widget("tree");
  tree->setFocus();
  for (Qt::Key key : {Qt::Key_Delete, Qt::Key_Return}) QTest::keyClick(tree, key);
  EXPECT_TRUE(path_exists(window / "d"));
  EXPECT_NE(gDir.path, window / "d") << "Enter is the tree's";
  fl_setpath(window.path().c_str());
  fl_goto_index(window.index_of("d"));  // current, but not selected: the menu's Open is disabled
  fl_unselect_all();
  window.list()->setFocus();
  QTest::keyClick(window.list(), Qt::Key_Return);
  EXPECT_EQ(gDir.path, window / "d");
  QTest::keyClick(window.list(), Qt::Key_Backspace);
  EXPECT_EQ(gDir.path, window.path());
  QTest::keyClick(window.list(), Qt::Key_Left, Qt::AltModifier);
  EXPECT_EQ(gDir.path, window / "d");
}

TEST(Menus, InertItemsDoNothingAndTheOthersOfViewToggle) {
  ShownWindow window;
  QMenu* view = window.menu("view_menu");
  const auto marks = [view] {
    view->popup(QPoint(0, 0));
    std::string names;
    for (QAction* action : view->findChildren<QAction*>())
      if (action->isChecked()) names += action->objectName().toStdString() + " ";
    view->hide();
    return names;
  };
  const std::string before = marks();
  for (const MenuEntry& entry : kMenuTable) {
    if (std::string_view(entry.id).substr(0, 3) != "vm_" || entry.kind == MenuKind::submenu) continue;
    const bool works =
        std::string_view(entry.id) == "vm_hotlist" || std::string_view(entry.id) == "vm_clip_tb";
    menu_item(entry.id)->trigger();
    EXPECT_EQ(marks() == before, !works) << entry.id;
    if (works) menu_item(entry.id)->trigger();
    EXPECT_EQ(marks(), before) << entry.id;
  }
  menu_item("vm_hotlist")->trigger();
  EXPECT_TRUE(base_find_widget("hotlist_panel")->isHidden());
  EXPECT_EQ(gConfig->hotlist_shown, 0);
}

TEST(Menus, HelpTellsTheKeysAndTheVersion) {
  ShownWindow window;
  QTest::keyClick(window.list(), Qt::Key_F1);
  QDialog* reference = open_dialog("quickref");
  ASSERT_TRUE(reference);
  const QString text = reference->findChild<QTextBrowser*>()->toPlainText();
  for (const MenuEntry& entry : kMenuTable)
    EXPECT_TRUE(text.contains(QString::fromLatin1(entry.keys))) << "the page does not tell of " << entry.keys;
  QTest::keyClick(reference, Qt::Key_Escape);
  EXPECT_FALSE(open_dialog("quickref"));
  menu_item("help_about")->trigger();
  ASSERT_TRUE(open_dialog("about"));
  EXPECT_TRUE(open_dialog("about")
                  ->findChild<QLabel*>(QStringLiteral("about_version"))
                  ->text()
                  .contains(QStringLiteral(ZAN_VERSION)));
  close_dialog("about");
}

TEST(Menus, F2OpensThePropertiesOnTheName) {
  ShownWindow window({"name.txt"});
  window.select({"name.txt"});
  QTest::keyClick(window.list(), Qt::Key_F2);
  QDialog* dialog = open_dialog("property_dlg");
  ASSERT_TRUE(dialog);
  auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("pr_name"));
  EXPECT_EQ(name->selectedText(), QStringLiteral("name"));
  EXPECT_EQ(dialog->focusWidget(), name);
  close_dialog("property_dlg");
}

TEST(Menus, TheRegistrysHooksAreCalledWithTheListLinked) {
  static int called = 0;
  gKeybindHooks.actions = [] {
    ac_register("count", [](void*, void*, const KeyEvent*) { return ++called; });
  };
  gKeybindHooks.defaults = [] { kb_attach("count", "filelist", 4, 99); };
  ShownWindow window;
  gKeybindHooks = {};
  const KeyEvent key{true, false, true, 4, 99};
  EXPECT_EQ(kb_process(window.list(), nullptr, &key), 1);
  EXPECT_EQ(called, 1);
}
