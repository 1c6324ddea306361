#include "commands/ui/context_menus.h"

#include <QMainWindow>
#include <QMenu>
#include <QPointer>

#include "commands/enabling.h"
#include "commands/ui/file_menu.h"
#include "dirmodel/dir_record.h"
#include "fileops/ui/clipboard.h"
#include "fileops/ui/edit_menu.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"
#include "views/ui/tree_pane.h"

namespace {
QPointer<QMenu> sListMenu, sHotlistMenu;

// What was added for one opening, and is taken away before the next.
constexpr char kForOneOpening[] = "lcm_added";

QAction* cmenu_add(QMenu* menu, const char* label, void (*run)()) {
  QAction* action = menu->addAction(QString::fromUtf8(label));
  QObject::connect(action, &QAction::triggered, menu, [run] { run(); });
  return action;
}

void lcm_add(QMenu* menu, const char* label, void (*run)()) {
  cmenu_add(menu, label, run)->setProperty(kForOneOpening, true);
}

void lcm_add_separator(QMenu* menu) {
  menu->addSeparator()->setProperty(kForOneOpening, true);
}

template <int (*command)()>
void lcm_run() {
  command();
}

QMenu* list_menu() {
  if (sListMenu) return sListMenu;
  sListMenu = new QMenu(base_window());
  sListMenu->setObjectName(QStringLiteral("list_cmenu"));
  QMenu* fresh = sListMenu->addMenu(QStringLiteral("&New"));
  fresh->menuAction()->setObjectName(QStringLiteral("lcm_new"));
  cmenu_add(fresh, "F&older", lcm_run<fm_new_folder>)->setObjectName(QStringLiteral("lcm_new_folder"));
  cmenu_add(fresh, "F&ile", lcm_run<fm_new_file>)->setObjectName(QStringLiteral("lcm_new_file"));
  QObject::connect(sListMenu, &QMenu::aboutToShow, sListMenu, [] { lcm_setup(sListMenu); });
  return sListMenu;
}

QMenu* hotlist_menu() {
  if (sHotlistMenu) return sHotlistMenu;
  sHotlistMenu = new QMenu(base_window());
  sHotlistMenu->setObjectName(QStringLiteral("hotlist_cmenu"));
  const struct {
    const char *id, *label, *keys;
    void (*run)();
  } items[] = {{"hcm_add", "Add", "Ctrl+D", tree_add_cb}, {"hcm_delete", "Remove", "Ctrl+R", tree_delete_cb}};
  for (const auto& item : items) {
    QAction* action = cmenu_add(sHotlistMenu, item.label, item.run);
    action->setObjectName(QString::fromLatin1(item.id));
    action->setShortcut(QKeySequence(QString::fromLatin1(item.keys)));
    action->setShortcutVisibleInContextMenu(true);
  }
  return sHotlistMenu;
}

void lcm_add_file_items(QMenu* menu) {
  if (gDir.sel_dir_count > 0) {
    lcm_add(menu, "Open", lcm_run<fm_open>);
    lcm_add(menu, "Open In Window", lcm_run<fm_open_another>);
  } else {
    const SelectionCommands commands = selection_commands();
    if (commands.open) lcm_add(menu, "Open", lcm_run<fm_open>);
    if (commands.view) lcm_add(menu, "View", lcm_run<fm_view>);
    if (commands.edit) lcm_add(menu, "Edit", lcm_run<fm_edit>);
    lcm_add(menu, "Open With", lcm_run<fm_open_with>);
    lcm_add(menu, "Print", lcm_run<fm_print>);
  }
  lcm_add_separator(menu);
  lcm_add(menu, "Cut", em_cut);
  lcm_add(menu, "Copy", em_copy);
}
}  // namespace

void lcm_setup(QMenu* menu) {
  for (QAction* action : menu->actions())
    if (action->property(kForOneOpening).toBool()) delete action;
  const bool selected = gDir.sel_count > 0, paste = em_check_clipboard_for_type(-1, nullptr);
  if (selected || paste) lcm_add_separator(menu);
  if (selected) lcm_add_file_items(menu);
  if (paste) lcm_add(menu, "Paste", em_paste);
  if (selected) lcm_add(menu, "Delete", em_delete);
  if (gDir.sel_count == 1) {
    lcm_add(menu, "Rename", em_rename);
    lcm_add(menu, "Symlink", lcm_run<fm_symlink>);
  }
  if (selected) lcm_add(menu, "Inspect", lcm_run<fm_inspect>);
  em_populate(menu);
}

void list_cmenu_open(const QPoint& global) {
  fl_select_pointed();
  list_menu()->popup(global);
}

void hotlist_cmenu_open(const QPoint& global) {
  hotlist_menu()->popup(global);
}
