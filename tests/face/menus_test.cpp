#include "commands/ui/menus.h"

#include <map>

#include "commands/associations.h"
#include "commands/ui/context_menus.h"
#include "commands/ui/menu_table.h"
#include "fileops/ui/clipboard.h"
#include "tests/face/window_test.h"

namespace {

class Menus : public WindowTest {
 protected:
  static QMenu* menu(const char* name) { return base_window()->findChild<QMenu*>(QString::fromLatin1(name)); }
  // The identifiers of what is disabled while the menu is open, submenus included.
  static std::string disabled_in(const char* name) {
    menu(name)->popup(QPoint(0, 0));
    const auto actions = menu(name)->findChildren<QAction*>();
    std::string names;
    for (QAction* action : actions)
      if (!action->isEnabled()) names += action->objectName().toStdString() + " ";
    menu(name)->hide();
    for (QAction* action : menu(name)->findChildren<QAction*>())
      EXPECT_TRUE(action->isEnabled()) << "a closed menu must not hold back a key";
    return names;
  }
};

TEST_F(Menus, ItemsFollowTheSelectionAndTheClipboard) {
  as_replace({"*.txt\topen @\t\t "});
  show({"a.txt", "b.txt", "c.unknown", "d/", "e/"});
  const std::string rest = "em_delete em_rename em_unselect em_unselect_all em_unselect_pattern ";
  const std::string no_file = "fm_view fm_edit fm_open_with fm_print fm_print_directory ";
  const std::string only_dirs = "fm_open_another fm_view fm_edit fm_print_directory ";
  const std::string none = "fm_open fm_open_another " + no_file + "fm_inspect ", no_paste = "em_paste ";
  const std::string end = "Inspect, Copy To, Move To, ", one = "Delete, Rename, Symlink, " + end;
  const std::string with = "Open With, Print, Cut, Copy, ", in_window = "Open, Open In Window, Cut, Copy, ";
  // What is selected, whether files are on the clipboard, what is disabled in two menus, the context menu.
  const std::tuple<Texts, bool, std::string, std::string, std::string> rows[] = {
      {{}, false, none, "em_cut em_copy em_paste " + rest, ""},
      {{}, true, none, "em_cut em_copy " + rest, "Paste, "},
      {{"d"}, false, no_file, no_paste, in_window + one},
      {{"a.txt", "d"}, true, no_file, "", in_window + "Paste, Delete, " + end},
      {{"c.unknown"}, false, "fm_open " + only_dirs, no_paste, with + one},
      {{"b.txt"}, true, only_dirs, "", "Open, " + with + "Paste, " + one},
      {{"a.txt", "c.unknown"}, false, "fm_open " + only_dirs, no_paste, with + "Delete, " + end}};
  for (const auto& [selection, clipboard, file, edit, context] : rows) {
    QApplication::clipboard()->setMimeData(new QMimeData);
    if (clipboard) clipboard_put({"/d", {"x"}, false}, false);
    select(selection);
    EXPECT_EQ(disabled_in("file_menu"), file);
    EXPECT_EQ(disabled_in("edit_menu"), edit);
    list_cmenu_open(QPoint(10, 10));
    std::string offered;
    for (const std::string& label : labels(menu("list_cmenu")))
      if (!label.empty()) offered += label + ", ";
    EXPECT_EQ(offered, "&New, " + context);
    menu("list_cmenu")->hide();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
  EXPECT_EQ(disabled_in("go_menu"), "gm_back gm_forward ");
  EXPECT_EQ(disabled_in("hotlist_menu"), "hm_delete ");
  list_cmenu_open(QPoint(10, 10));  // an item acts on the selection
  for (QAction* action : menu("list_cmenu")->actions())
    if (action->text() == QStringLiteral("Copy")) menu("list_cmenu")->setActiveAction(action);
  press("Return", menu("list_cmenu"));
  EXPECT_EQ(clipboard_get().lists.at(0).names, (Texts{"a.txt", "c.unknown"}));
}

// The state when a menu was last open says nothing about the moment of a key.
TEST_F(Menus, AKeyIsJudgedByTheMomentItIsPressed) {
  show({"a", "b"});
  disabled_in("edit_menu");
  // What is then selected, on the clipboard and marked as cut.
  for (const auto& [keys, state] :
       steps("Ctrl+C = ||; Ctrl+A = a b||; Ctrl+X = |cut|ab; Home Down Ctrl+I = b|cut|ab; "
             "Ctrl+C = b|copied|; Ctrl+U = |copied|")) {
    key(keys);
    std::string now = selected() + "|";
    if (em_check_clipboard_for_type(-1, nullptr))
      now += em_check_clipboard_for_type(-1, kClipMoveFiles) ? "cut" : "copied";
    now += "|";
    for (const char* name : {"a", "b"})
      if (file_is_cut(dir_.path().c_str(), name)) now += name;
    EXPECT_EQ(now, state) << keys;
  }
}

TEST_F(Menus, TextFieldsKeepTheKeysThatEditText) {
  show({"a", "b"}, {"a", "b"});
  for (const char* name : {"tb_curpath", "tb_filespec"}) {
    QLineEdit* field = line(base_window(), name);
    field->setFocus();
    field->setText(QStringLiteral("wxyz"));
    for (const auto& [keys, text] :
         steps("Ctrl+A = wxyz; Ctrl+C = wxyz; End = wxyz; Backspace = wxy; Home = wxy; Del = xy; Ctrl+V = "
               "wxyzxy; Ctrl+A = wxyzxy; Ctrl+X = ; Ctrl+V = wxyzxy")) {
      press(keys, field);
      EXPECT_EQ(field->text().toStdString(), text) << name << ", " << keys;
    }
    EXPECT_FALSE(em_check_clipboard_for_type(-1, nullptr));
    EXPECT_EQ(selected() + gDir.path, "a b" + dir_.path());
  }
}

TEST_F(Menus, NoMnemonicInTheWindowTakesTheKeyOfAnItemOrOfAnother) {
  open();
  std::map<QString, QString> owner;  // of a key, which no two may share
  const auto claim = [&owner](const QKeySequence& keys, const QString& who) {
    EXPECT_TRUE(keys.isEmpty() || owner.emplace(keys.toString(), who).second)
        << who.toStdString() << " and " << owner[keys.toString()].toStdString();
  };
  for (const MenuTitle& title : kMenuBar)
    claim(QKeySequence::mnemonic(menu(title.id)->title()), menu(title.id)->title());
  for (const MenuEntry& entry : kMenuTable)
    if (const QAction* item = menu_item(entry.id))
      for (const QKeySequence& keys : item->shortcuts()) claim(keys, item->text());
  for (const QLabel* label : base_window()->findChildren<QLabel*>())
    if (label->buddy()) claim(QKeySequence::mnemonic(label->text()), label->text());
  EXPECT_TRUE(owner.count(QStringLiteral("Alt+V"))) << "the View command's key";
}

TEST_F(Menus, KeysWithoutModifiersBelongToTheList) {
  show({"a", "d/"}, {"d"});
  QWidget* tree = base_find_widget("tree");
  tree->setFocus();
  press("Del Return", tree);
  EXPECT_EQ(held(), "a:a d/ ");
  EXPECT_NE(gDir.path, dir_ / "d") << "Enter is the tree's";
  fl_setpath(dir_.path().c_str());
  fl_goto_index(index_of("d"));  // current, but not selected: the menu's Open is disabled
  fl_unselect_all();
  fl_view()->setFocus();
  for (const auto& [keys, path] : steps_here("Return = $/d; Backspace = $; Alt+Left = $/d")) {
    key(keys);
    EXPECT_EQ(gDir.path, path);
  }
}

}  // namespace
