// Images and expandable marks: only of the items on the screen, as the answers come in.
#include <QTimer>
#include <QTreeWidget>

#include "fileops/subdir_probe.h"
#include "views/fname.h"
#include "views/ui/tree_pane_parts.h"

namespace {
void show_probe_result(QTreeWidgetItem* item, int result) {
  item->setData(0, TREE_PROBE, TREE_PROBED);
  item->setChildIndicatorPolicy(result > 0 || item->childCount() > 0 ? QTreeWidgetItem::ShowIndicator
                                                                     : QTreeWidgetItem::DontShowIndicator);
  tree_show_image(item, result < 0           ? IMAGE_FILE
                        : item->isExpanded() ? IMAGE_OPEN_FOLDER
                                             : IMAGE_CLOSED_FOLDER);
}

void probe_item(QTreeWidget* tree, QTreeWidgetItem* item) {
  std::string path;
  x_get_fullpath(item, &path);
  const char* encoded = fname_encode(path.c_str());
  if (!encoded) {
    item->setData(0, TREE_PROBE, TREE_PROBED);
    tree_show_image(item, IMAGE_INVALID_FOLDER);
    return;
  }
  item->setData(0, TREE_PROBE, TREE_PROBING);
  const QPersistentModelIndex index(tree->indexFromItem(item));
  // The index loses its validity with the item, and with the whole tree.
  subdir_probe(encoded, tree_probe_flags(), [tree, index](int result) {
    if (index.isValid()) show_probe_result(tree->itemFromIndex(index), result);
  });
}

void probe_shown_items(QTreeWidget* tree) {
  if (!tree->isVisible()) return;
  const int bottom = tree->viewport()->height();
  for (QTreeWidgetItem* item = tree->itemAt(0, 0); item; item = tree->itemBelow(item)) {
    if (tree->visualItemRect(item).top() > bottom) return;
    if (item->data(0, TREE_PROBE).toInt() == TREE_UNPROBED) probe_item(tree, item);
  }
}
}  // namespace

void tree_probe_soon(QTreeWidget* tree) {
  const QString name = QStringLiteral("probe_timer");
  auto* timer = tree->findChild<QTimer*>(name, Qt::FindDirectChildrenOnly);
  if (!timer) {
    timer = new QTimer(tree);
    timer->setObjectName(name);
    timer->setSingleShot(true);
    QObject::connect(timer, &QTimer::timeout, tree, [tree] { probe_shown_items(tree); });
  }
  if (!timer->isActive()) timer->start(0);
}
