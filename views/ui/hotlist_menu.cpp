#include "views/ui/hotlist_menu.h"

#include <QMenu>
#include <cstdlib>

#include "dirmodel/dir_record.h"
#include "views/fname.h"
#include "views/hotlist.h"
#include "views/ui/navigation.h"
#include "views/ui/path_bar.h"

namespace {
const char sEntryMark[] = "hotlist_entry";

std::string current_shown_path() {
  return fname_decode(gDir.path.c_str());
}

void set_item(QMenu* menu, const char* name, bool enabled) {
  for (QAction* action : menu->actions())
    if (action->objectName() == QLatin1String(name)) action->setEnabled(enabled);
}

// The path on disk where it can be had. It is also the label, unless it is no text that can be shown.
void add_hotlist_item(QMenu* menu, const std::string& path) {
  const char* encoded = fname_encode(path.c_str());
  const QByteArray target(encoded ? encoded : path.c_str());
  QString label = QString::fromUtf8(target);
  if (label.toUtf8() != target) label = QString::fromUtf8(path.c_str());
  label.replace(QLatin1Char('&'), QStringLiteral("&&"));
  QAction* action = menu->addAction(label);
  action->setProperty(sEntryMark, true);
  QObject::connect(action, &QAction::triggered, action, [target] { fl_newpath(target.constData()); });
}
}  // namespace

void hm_add() {
  tree_add(&gTree, current_shown_path().c_str());
  tb_update();
}

void hm_remove() {
  tree_remove(&gTree, current_shown_path().c_str());
  tb_update();
}

void hm_populate(QMenu* menu) {
  for (QAction* action : menu->actions())
    if (action->property(sEntryMark).toBool()) delete action;
  if (gTree.paths.empty()) return;
  menu->addSeparator()->setProperty(sEntryMark, true);
  for (const std::string& path : gTree.paths) add_hotlist_item(menu, path);
}

void hm_setup(QMenu* menu) {
  const bool known = tree_lookup(current_shown_path().c_str()) != 0;
  set_item(menu, "hm_add", !known);
  set_item(menu, "hm_delete", known);
}

void gm_setup(QMenu* menu) {
  const char* home = getenv("HOME");
  set_item(menu, "gm_back", fl_get_back_count() > 0);
  set_item(menu, "gm_forward", fl_get_forward_count() > 0);
  set_item(menu, "gm_up", gDir.path != "/");
  set_item(menu, "gm_home", !home || gDir.path != home);
}
