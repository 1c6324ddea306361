// The top-level items stand in the order of gTree.paths, always: the watch keeps the pane with the list, a
// drag rebuilds the list from the pane. Items carry their text as bytes beside what is shown, so that a path
// that is not valid UTF-8 survives. An item looks like a closed folder until it was probed, which happens
// only once it is on the screen.
#include "views/ui/tree_pane.h"

#include <QIcon>
#include <QPointer>
#include <QScrollBar>
#include <QTimer>
#include <QTreeWidget>

#include "commands/ui/context_menus.h"
#include "core/state.h"
#include "core/toolkit/header.h"
#include "core/toolkit/icons.h"
#include "dirmodel/dir_record.h"
#include "dirmodel/text.h"
#include "fileops/subdir_probe.h"
#include "views/fname.h"
#include "views/hotlist.h"
#include "views/ui/navigation.h"
#include "views/ui/path_bar.h"
#include "views/ui/tree_pane_parts.h"

namespace {
QPointer<QTreeWidget> sPane;
QIcon sTreeImages[4];
bool sTreeRestoring = false;  // items are expanded that still have their children

int tree_position(const QTreeWidgetItem* parent, const std::string& text, bool sorted) {
  const int count = parent->childCount();
  if (!sorted || text == "..") return count;
  int at = count > 0 && tree_item_text(parent->child(0)) == ".." ? 1 : 0;
  for (; at < count; ++at) {
    const int order = tree_item_text(parent->child(at)).compare(text);
    if (order == 0) return -1;
    if (order > 0) break;
  }
  return at;
}

void show_all_paths() {
  if (!sPane) return;
  sPane->clear();
  QList<QTreeWidgetItem*> items;
  for (const std::string& path : gTree.paths)
    items.append(tree_new_item(path, fname_encode(path.c_str()) != nullptr));
  sPane->addTopLevelItems(items);
  tree_probe_soon(sPane);
}

void remove_path_item(size_t index) {
  if (sPane) delete sPane->takeTopLevelItem(static_cast<int>(index));
}

void tree_state_cb(QTreeWidgetItem* item, bool expanded) {
  if (sTreeRestoring) return;
  if (expanded && item->childCount() == 0) {
    const QPersistentModelIndex index(sPane->indexFromItem(item));
    if (!x_tree_expand(sPane, item) && index.isValid()) item->setExpanded(false);
    if (!sPane || !index.isValid()) return;
  } else if (!expanded) {
    qDeleteAll(item->takeChildren());
  }
  if (item->data(0, TREE_PROBE).toInt() != TREE_PROBED ||
      item->childIndicatorPolicy() == QTreeWidgetItem::ShowIndicator)
    tree_show_image(item, item->isExpanded() ? IMAGE_OPEN_FOLDER : IMAGE_CLOSED_FOLDER);
  tree_probe_soon(sPane);
}

void collect_expanded(QTreeWidgetItem* item, std::vector<QTreeWidgetItem*>* expanded) {
  if (item->isExpanded()) expanded->push_back(item);
  for (int i = 0; i < item->childCount(); ++i) collect_expanded(item->child(i), expanded);
}

void connect_pane(QTreeWidget* tree) {
  QObject::connect(tree, &QTreeWidget::itemExpanded, tree,
                   [](QTreeWidgetItem* i) { tree_state_cb(i, true); });
  QObject::connect(tree, &QTreeWidget::itemCollapsed, tree,
                   [](QTreeWidgetItem* i) { tree_state_cb(i, false); });
  QObject::connect(tree, &QTreeWidget::itemClicked, tree,
                   [tree](QTreeWidgetItem* i) { tree_choose(tree, i); });
  QObject::connect(tree, &QTreeWidget::itemActivated, tree,
                   [tree](QTreeWidgetItem* i) { tree_choose(tree, i); });
  QObject::connect(tree, &QTreeWidget::itemSelectionChanged, tree, [tree] {
    const auto selected = tree->selectedItems();
    if (!selected.isEmpty()) tree_choose(tree, selected.first());
  });
  const auto look = [tree] { tree_probe_soon(tree); };
  QObject::connect(tree->verticalScrollBar(), &QScrollBar::valueChanged, tree, look);
  QObject::connect(tree->verticalScrollBar(), &QScrollBar::rangeChanged, tree, look);
}
}  // namespace

void tree_setup(QTreeWidget* tree) {
  const char* const names[] = {"closed_folder", "open_folder", "invalid_folder", "file"};
  for (int i = 0; i < 4; ++i) sTreeImages[i] = icon_get(names[i]);
  sPane = tree;
  tree->setHeader(new PlainHeader(tree));
  tree->setHeaderHidden(true);
  tree->setUniformRowHeights(true);
  // Long paths are scrolled to, not cut.
  tree->header()->setStretchLastSection(false);
  tree->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  // A choice is a click or Enter; arrows only move, so that the keyboard can pass over slow directories.
  tree->setSelectionMode(QAbstractItemView::NoSelection);
  tree->setContextMenuPolicy(Qt::DefaultContextMenu);
  connect_pane(tree);
  tree_watch_input(tree);
  tree_watch({[](size_t index) {
                if (sPane) x_add_item(sPane, nullptr, gTree.paths[index], false);
              },
              remove_path_item, show_all_paths});
  show_all_paths();
}

void tree_open_menu(QTreeWidgetItem* item, const QPoint& where) {
  const QModelIndex index = item->treeWidget()->indexFromItem(item);
  tree_menu_index() = index;
  if (!item->parent()) tree_dnd_index() = index;
  hotlist_cmenu_open(where);
}

QPersistentModelIndex& tree_menu_index() {
  static QPersistentModelIndex index;
  return index;
}

QTreeWidgetItem* tree_menu_item() {
  const QPersistentModelIndex& index = tree_menu_index();
  return sPane && index.isValid() ? sPane->itemFromIndex(index) : nullptr;
}

void tree_add_cb() {
  tree_add(&gTree, std::string(fname_decode(gDir.path.c_str())).c_str());
  tb_update();
}

void tree_delete_cb() {
  if (const QTreeWidgetItem* item = tree_menu_item()) {
    std::string path;
    x_get_fullpath(item, &path);
    tree_remove(&gTree, path.c_str());
  }
  tree_menu_index() = QPersistentModelIndex();
  tb_update();
}

QTreeWidgetItem* tree_new_item(const std::string& text, bool encoded) {
  auto* item = new QTreeWidgetItem;
  item->setText(0, QString::fromUtf8(text.c_str()));
  item->setData(0, TREE_TEXT, QByteArray(text.data(), static_cast<qsizetype>(text.size())));
  item->setData(0, TREE_PROBE, encoded ? TREE_UNPROBED : TREE_PROBED);
  item->setChildIndicatorPolicy(QTreeWidgetItem::DontShowIndicator);
  tree_show_image(item, encoded ? IMAGE_CLOSED_FOLDER : IMAGE_INVALID_FOLDER);
  return item;
}

void tree_show_image(QTreeWidgetItem* item, int image) {
  item->setIcon(0, sTreeImages[image]);
}

int tree_probe_flags() {
  return (gOptions & (OPT_TREE_DOT | OPT_DOT_TREE)) ? SUBDIR_DOT : 0;
}

QTreeWidgetItem* x_add_item(QTreeWidget* tree, QTreeWidgetItem* parent, const std::string& text,
                            bool sorted) {
  QTreeWidgetItem* under = parent ? parent : tree->invisibleRootItem();
  const int position = tree_position(under, text, sorted);
  if (position < 0) return nullptr;
  std::string path;
  if (parent) x_get_fullpath(parent, &path);
  path = es_construct_fullpath(parent ? path.c_str() : nullptr, text.c_str());
  const bool encoded = fname_encode(path.c_str()) != nullptr;
  if (!encoded && sorted) return nullptr;
  QTreeWidgetItem* item = tree_new_item(text, encoded);
  under->insertChild(position, item);
  tree_probe_soon(tree);
  return item;
}

std::string tree_item_text(const QTreeWidgetItem* item) {
  return item->data(0, TREE_TEXT).toByteArray().toStdString();
}

int x_get_fullpath(const QTreeWidgetItem* item, std::string* out) {
  std::vector<std::string> texts;
  for (; item; item = item->parent()) texts.push_back(tree_item_text(item));
  out->clear();
  for (auto text = texts.rbegin(); text != texts.rend(); ++text) {
    if (*text == "..") {
      es_remove_subdirectory(out);
      continue;
    }
    if (!out->empty() && out->back() != '/') *out += '/';
    *out += *text;
  }
  return static_cast<int>(out->size());
}

int x_branch_contains_double_dot(const QTreeWidgetItem* item) {
  while (item->parent()) item = item->parent();
  return tree_item_text(item) == ".." ? 1 : 0;
}

void tree_choose(QTreeWidget* tree, QTreeWidgetItem* item) {
  const QPointer<QTreeWidget> pane(tree);
  tree->scrollToItem(item);
  std::string path;
  x_get_fullpath(item, &path);
  if (const char* encoded = fname_encode(path.c_str())) {
    const std::string directory = encoded;
    if (directory != gDir.path) fl_newpath(directory.c_str());
  }
  if (pane) pane->clearSelection();
}

void tree_insert_before(QTreeWidget* tree, QTreeWidgetItem* item, QTreeWidgetItem* ref) {
  tree->insertTopLevelItem(tree->indexOfTopLevelItem(ref), item);
}

void tree_move_item(QTreeWidget* tree, QTreeWidgetItem* item, QTreeWidgetItem* target, bool behind) {
  std::vector<QTreeWidgetItem*> expanded;
  collect_expanded(item, &expanded);
  tree->takeTopLevelItem(tree->indexOfTopLevelItem(item));
  if (behind)
    tree->insertTopLevelItem(tree->indexOfTopLevelItem(target) + 1, item);
  else
    tree_insert_before(tree, item, target);
  sTreeRestoring = true;
  for (QTreeWidgetItem* branch : expanded) branch->setExpanded(true);
  sTreeRestoring = false;
  // An answer on its way cannot find the item any more.
  if (item->data(0, TREE_PROBE).toInt() == TREE_PROBING) item->setData(0, TREE_PROBE, TREE_UNPROBED);
  gTree.paths.clear();
  for (int i = 0; i < tree->topLevelItemCount(); ++i)
    gTree.paths.push_back(tree_item_text(tree->topLevelItem(i)));
  tree_menu_index() = QPersistentModelIndex();
  tree->scrollToItem(item);
  tree_probe_soon(tree);
}
