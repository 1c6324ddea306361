// What the files of the hotlist pane share among themselves.
#pragma once

#include <QByteArray>
#include <QPersistentModelIndex>
#include <vector>

#include "views/ui/tree_pane.h"

class QTreeWidget;
class QTreeWidgetItem;

enum : int {
  TREE_TEXT = 0x100,  // QByteArray: the item's text as it is
  TREE_PROBE,         // int: one of the next
};
enum : int { TREE_UNPROBED = 0, TREE_PROBING, TREE_PROBED };
enum : int { IMAGE_CLOSED_FOLDER, IMAGE_OPEN_FOLDER, IMAGE_INVALID_FOLDER, IMAGE_FILE };

// Makes an item that stands in no tree yet. encoded: whether its path can be told to the file system.
QTreeWidgetItem* tree_new_item(const std::string& text, bool encoded);
// Shows one of the four images.
void tree_show_image(QTreeWidgetItem* item, int image);
// SUBDIR_DOT when dot-directories are shown.
int tree_probe_flags();

// Looks, soon, at the items on the screen that were not looked at yet.
void tree_probe_soon(QTreeWidget* tree);

// Handles the pane's own keys, presses, drags and drops: an event filter on tree's viewport.
void tree_watch_input(QTreeWidget* tree);
// The item that a drag would move; invalid: none.
QPersistentModelIndex& tree_dnd_index();
QPersistentModelIndex& tree_menu_index();
// Asks for the context menu of item.
void tree_open_menu(QTreeWidgetItem* item, const QPoint& where);

// Shows the item's directory in the file list.
void tree_choose(QTreeWidget* tree, QTreeWidgetItem* item);
// Moves a top-level item before or behind another one, and gTree's paths with it.
void tree_move_item(QTreeWidget* tree, QTreeWidgetItem* item, QTreeWidgetItem* target, bool behind);
