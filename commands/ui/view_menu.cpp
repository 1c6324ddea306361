#include "commands/ui/view_menu.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>

#include "core/settings.h"
#include "core/state.h"
#include "views/ui/base.h"

namespace {
// Each toggle and the part of the window that it stands for; null: always so. There is neither a third
// toolbar nor an icon pane: those never show.
const struct {
  const char* item;
  const char* part;
} kViewParts[] = {
    {"vm_nav_tb", "nav_tb"},         {"vm_clip_tb", "clip_tb"}, {"vm_misc_tb", "misc_tb"},
    {"vm_hotlist_tb", "hotlist_tb"}, {"vm_path_tb", "path_tb"}, {"vm_filter_tb", "filter_tb"},
    {"vm_images_only", nullptr},     {"vm_icon", "icon_pane"},  {"vm_hotlist", "hotlist_panel"},
    {"vm_status", "status_pane"},
};

bool view_part_shown(const char* part) {
  const QWidget* widget = base_find_widget(part);
  return widget && !widget->isHidden();
}
}  // namespace

void vm_hotlist_toggle() {
  QWidget* panel = base_find_widget("hotlist_panel");
  if (!panel) return;
  const bool show = panel->isHidden();
  panel->setVisible(show);
  gConfig->hotlist_shown = show;
  if (auto* toggle = base_window()->findChild<QAction*>(QStringLiteral("tb_hotlist")))
    toggle->setChecked(show);
}

void vm_clip_tb_toggle() {
  if (QWidget* bar = base_find_widget("clip_tb")) bar->setVisible(bar->isHidden());
}

int vm_inert() {
  return 0;
}

void vm_setup(QMenu* menu) {
  for (const auto& row : kViewParts)
    if (auto* item = menu->findChild<QAction*>(QString::fromLatin1(row.item)))
      item->setChecked(!row.part || view_part_shown(row.part));
}
