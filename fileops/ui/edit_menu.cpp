#include "fileops/ui/edit_menu.h"

#include <QApplication>
#include <QHash>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QPointer>

#include "commands/ui/associate_dlg.h"
#include "commands/ui/pattern_dlg.h"
#include "commands/ui/property_dlg.h"
#include "core/settings.h"
#include "core/state.h"
#include "core/toolkit/message.h"
#include "core/ui/config_dlg.h"
#include "dirmodel/dir_record.h"
#include "fileops/start.h"
#include "fileops/ui/clipboard.h"
#include "fileops/ui/dir_menus.h"
#include "views/fname.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"
#include "views/ui/status_bar.h"

namespace {
int must_be_moved = 0;  // a cut is in progress

// The question before a delete; empty when the settings want none.
QString delete_question(const TransferList& list) {
  const bool many = gConfig->flags & SET_RM_PROMPT;
  if (list.names.size() > 1)
    return many ? QString::asprintf("Do you wish to delete these %d files?\n",
                                    static_cast<int>(list.names.size()))
                : QString();
  if (!(gConfig->flags & SET_RM1_PROMPT) && !(list.one_dir_packed && many)) return {};
  return QStringLiteral("Do you wish to delete '%1'?\n")
      .arg(QString::fromUtf8(fname_decode(list.names.front().c_str())));
}

void selection_changed() {
  status_bar_update();
  wfocus(base_find_widget("filelist"));
}

// The cascades of a menu's last opening.
QHash<QMenu*, QList<QPointer<QAction>>> sCascades;

void delete_cascades(QMenu* menu) {
  for (const QPointer<QAction>& action : sCascades.value(menu)) {
    if (!action) continue;
    if (action->menu())
      action->menu()->deleteLater();
    else
      action->deleteLater();
  }
}

void forget_cascades(QMenu* menu) {
  for (const QPointer<QAction>& action : sCascades.take(menu))
    if (action) menu->removeAction(action);
}
}  // namespace

void em_cut() {
  must_be_moved = 1;
  em_copy();
}

void em_copy() {
  const bool cut = must_be_moved;
  must_be_moved = 0;
  if (gDir.sel_count == 0) return;
  clipboard_put(fl_pack_transf(), cut);
  if (cut) fl_unselect_all();
  if (cut || file_has_cut_files()) fl_update();
}

void em_paste() {
  const OfferedFiles offered = clipboard_get();
  const std::string destination = gDir.path;
  size_t left = offered.lists.size();
  for (const TransferList& list : offered.lists) {
    if (list.dir != destination && _file_op(offered.cut ? FOP_MOVE : FOP_COPY, list, destination) != 0) break;
    --left;
  }
  if (left > 0 && offered.lists.size() > 1)
    wreport(base_window(), "Error",
            "Too many operations are running.\nThe files of %d directories were not pasted.\n",
            static_cast<int>(left));
}

void em_delete() {
  if (gDir.sel_count == 0) return;
  const TransferList list = fl_pack_transf();
  const QString question = delete_question(list);
  if (!question.isEmpty() &&
      walert(base_window(), QStringLiteral("Delete"), question, "@&Delete|#&Cancel") != 1)
    return;
  _file_op(FOP_DELETE, list, "");
}

void em_rename() {
  property_dlg_open();
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (window->objectName() != QLatin1String("property_dlg")) continue;
    if (auto* name = window->findChild<QLineEdit*>(QStringLiteral("pr_name"))) {
      const qsizetype dot = name->text().lastIndexOf(QLatin1Char('.'));
      name->setFocus();
      if (dot > 0)
        name->setSelection(0, static_cast<int>(dot));  // the suffix mostly stays
      else
        name->selectAll();
    }
  }
}

void em_select_all() {
  fl_select_all();
  selection_changed();
}

void em_unselect_all() {
  fl_unselect_all();
  selection_changed();
}

void em_invert_selection() {
  fl_invert_all();
  selection_changed();
}

void em_select_pattern() {
  fl_unselect_all();
  pattern_dlg_open(0);
}

void em_unselect_pattern() {
  if (gDir.sel_count > 0) pattern_dlg_open(1);
}

void em_edit_preferences() {
  config_dlg_open();
}

void em_edit_associations() {
  associate_dlg_open();
}

void em_setup(QMenu* menu) {
  static const char* const kNeedSelection[] = {
      "em_cut", "em_copy", "em_delete", "em_rename", "em_unselect", "em_unselect_all", "em_unselect_pattern",
  };
  for (QAction* action : menu->actions()) action->setEnabled(true);
  const bool selected = gDir.sel_count > 0;
  for (const char* name : kNeedSelection)
    if (auto* action = menu->findChild<QAction*>(QString::fromLatin1(name))) action->setEnabled(selected);
  if (auto* paste = menu->findChild<QAction*>(QStringLiteral("em_paste")))
    paste->setEnabled(em_check_clipboard_for_type(-1, nullptr));
}

void em_populate(QMenu* menu) {
  delete_cascades(menu);
  forget_cascades(menu);
  const QList<QAction*> before = menu->actions();
  QAction* separator = menu->addSeparator();
  mgen_work_insert(menu);
  const QList<QAction*> after = menu->actions();
  if (after.size() == before.size() + 1) {
    delete separator;
    return;
  }
  QList<QPointer<QAction>>& added = sCascades[menu];
  for (QAction* action : after)
    if (!before.contains(action)) added.push_back(action);
  // The choice of a cascade is still to be dealt with when the menu hides; deleteLater waits for that.
  QObject::connect(
      menu, &QMenu::aboutToHide, menu, [menu] { delete_cascades(menu); }, Qt::SingleShotConnection);
}
