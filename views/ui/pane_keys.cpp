#include "views/ui/pane_keys.h"

#include <QApplication>
#include <QContextMenuEvent>
#include <QMainWindow>
#include <QShortcut>
#include <QSplitter>
#include <QTreeWidget>

#include "views/ui/file_list_model.h"
#include "views/ui/file_list_parts.h"
#include "views/ui/tree_pane_parts.h"

namespace {

constexpr int kDividerStep = 20;  // pixels

void move_divider(QSplitter* splitter, int by) {
  QList<int> sizes = splitter->sizes();
  if (sizes.size() != 2 || sizes[0] == 0) return;
  splitter->setSizes({std::max(sizes[0] + by, 1), std::max(sizes[1] - by, 1)});
}

void move_entry(QTreeWidget* hotlist, int by) {
  QTreeWidgetItem* item = hotlist->currentItem();
  if (!item || item->parent()) return;
  QTreeWidgetItem* target = hotlist->topLevelItem(hotlist->indexOfTopLevelItem(item) + by);
  if (!target) return;
  tree_move_item(hotlist, item, target, by > 0);
  hotlist->setCurrentItem(item);
}

// Not every keyboard has a menu key, and some commands stand in the context menu alone.
void ask_for_menu() {
  QWidget* focus = QApplication::focusWidget();
  if (!focus) return;
  const QPoint place = focus->rect().center();
  QContextMenuEvent event(QContextMenuEvent::Keyboard, place, focus->mapToGlobal(place));
  QApplication::sendEvent(focus, &event);
}

}  // namespace

void pane_keys_setup(QMainWindow* window, QSplitter* splitter, QTreeWidget* hotlist) {
  auto* menu = new QShortcut(QKeySequence(Qt::SHIFT | Qt::Key_F10), window);
  QObject::connect(menu, &QShortcut::activated, window, ask_for_menu);
  for (int column = 0; column < FL_COLUMNS; ++column) {
    auto* sort = new QShortcut(QKeySequence(int(Qt::CTRL) | (Qt::Key_1 + column)), window);
    QObject::connect(sort, &QShortcut::activated, window, [column] { fl_sort_cb(column); });
  }
  const struct {
    Qt::Key key;
    bool entry;
    int by;
  } moves[] = {{Qt::Key_Left, false, -kDividerStep},
               {Qt::Key_Right, false, kDividerStep},
               {Qt::Key_Up, true, -1},
               {Qt::Key_Down, true, 1}};
  for (const auto& move : moves) {
    const QKeySequence keys(Qt::ALT | Qt::SHIFT | move.key);
    auto* shortcut = new QShortcut(keys, move.entry ? static_cast<QWidget*>(hotlist) : window);
    if (move.entry) shortcut->setContext(Qt::WidgetShortcut);
    QObject::connect(shortcut, &QShortcut::activated, window, [=, by = move.by, entry = move.entry] {
      entry ? move_entry(hotlist, by) : move_divider(splitter, by);
    });
  }
}
