// The levels below a menu are prepared ahead of the pointer: the directory buttons of a queued menu are
// scanned one after the other, each on a scanning thread, so that a directory that hangs holds up nothing but
// its own turn, and that not for long.
#include "commands/ui/directory_menu.h"

#include <QApplication>
#include <QMainWindow>
#include <QMenu>
#include <QPointer>
#include <QTimer>
#include <deque>

#include "core/state.h"
#include "fileops/ui/dir_menu.h"
#include "views/fname.h"
#include "views/hotlist.h"
#include "views/ui/base.h"

namespace {
constexpr size_t DIRECTORIES_MOST = 100;
constexpr size_t QUEUED_MOST = 5;
constexpr int TURN_MS = 10000;

const char sPopulatedMark[] = "ca_populated", sScannedMark[] = "ca_scanned";
std::deque<QPointer<QMenu>> sMenusToScan;
QPointer<DirButton> sBeingPrepared;

void x_scan_for_submenus();

// Ends the turn of one button: by its answer, or by the clock.
void end_turn(const DirButton* button) {
  if (sBeingPrepared != button) return;
  sBeingPrepared = nullptr;
  QTimer::singleShot(0, qApp, x_scan_for_submenus);
}

DirButton* next_button(const QMenu* menu) {
  for (QAction* action : menu->actions()) {
    auto* button = dynamic_cast<DirButton*>(action);
    if (button && !button->scanned()) return button;
  }
  return nullptr;
}

void x_scan_for_submenus() {
  if (sBeingPrepared) return;
  while (!sMenusToScan.empty()) {
    const QPointer<QMenu> menu = sMenusToScan.front();
    if (DirButton* button = menu ? next_button(menu) : nullptr) {
      sBeingPrepared = button;
      QTimer::singleShot(TURN_MS, button, [button] { end_turn(button); });
      return button->prepare([button] { end_turn(button); });
    }
    if (menu) menu->setProperty(sScannedMark, true);
    sMenusToScan.pop_front();
  }
}

void queue_menu(QMenu* menu) {
  if (menu->property(sScannedMark).toBool() || sMenusToScan.size() >= QUEUED_MOST) return;
  for (const auto& queued : sMenusToScan)
    if (queued == menu) return;
  sMenusToScan.emplace_back(menu);
  QTimer::singleShot(0, qApp, x_scan_for_submenus);
}

void x_menu_unrealized_cb() {
  sMenusToScan.clear();
}

DirButton* x_construct_button(QMenu* menu, const std::string& label,
                              const std::shared_ptr<const DirMenuKind>& kind) {
  const char* encoded = fname_encode(label.c_str());
  auto* button = new DirButton(menu, encoded ? encoded : label, label, kind);
  menu->addAction(button);
  return button;
}
}  // namespace

void ca_populate_menu(QMenu* menu, ca_action action) {
  const auto* owner = qobject_cast<QMenu*>(menu->parentWidget());
  if (menu->property(sPopulatedMark).toBool() || (owner && !owner->isVisible())) return;
  menu->setProperty(sPopulatedMark, true);
  auto kind = std::make_shared<DirMenuKind>();
  kind->flags =
      DIR_SCAN_NAMES | DIR_SCAN_BYTE_ORDER | (gConfig->flags & SET_HIDE_DOT ? DIR_SCAN_HIDE_DOT : 0U);
  kind->on_choose = [action = std::move(action)](const char* path) { action(base_window(), path); };
  kind->most = DIRECTORIES_MOST;
  kind->greyed = false;
  kind->armed = queue_menu;
  menu->addSeparator();
  for (size_t i = 0; i < gTree.paths.size() && i < DIRECTORIES_MOST; ++i)
    x_construct_button(menu, gTree.paths[i], kind);
  QObject::connect(menu, &QMenu::aboutToHide, menu, x_menu_unrealized_cb);
  if (gOptions & OPT_MENU_SCAN) queue_menu(menu);
}
