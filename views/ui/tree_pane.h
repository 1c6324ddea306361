// The hotlist pane "tree": gTree's paths as top-level items that expand into their subdirectories.
#pragma once

#include <string>

class QTreeWidget;
class QTreeWidgetItem;

// Makes tree the pane that shows gTree, images and all. What gTree holds and will hold (tree_load) appears in
// it. Items are looked at on the file system only once they are shown, and never on this thread.
void tree_setup(QTreeWidget* tree);

// The item under the last menu-button press; null when there was none or it is gone.
QTreeWidgetItem* tree_menu_item();

// Adds the current path to the hotlist; removes the path of tree_menu_item from it and forgets the item. Both
// update the navigation toolbar.
void tree_add_cb();
void tree_delete_cb();

// Adds an item under parent (null: top level): in byte order with sorted, where an equal text or one that
// cannot be encoded adds nothing; else at the end. Returns the item, or null.
QTreeWidgetItem* x_add_item(QTreeWidget* tree, QTreeWidgetItem* parent, const std::string& text, bool sorted);

// Fills item with its subdirectories. Events run meanwhile, the main window's input is blocked. False when
// its path cannot be encoded (a message was shown).
bool x_tree_expand(QTreeWidget* tree, QTreeWidgetItem* item);

// The text of an item: a path component, or the whole path for a top-level item. Raw bytes.
std::string tree_item_text(const QTreeWidgetItem* item);
// The path of an item, in display form. Returns its length.
int x_get_fullpath(const QTreeWidgetItem* item, std::string* out);
// 1 when the top-level item of the item's branch has the text "..", else 0.
int x_branch_contains_double_dot(const QTreeWidgetItem* item);

// Puts item (not in the tree at the moment) at the top level, immediately before ref.
void tree_insert_before(QTreeWidget* tree, QTreeWidgetItem* item, QTreeWidgetItem* ref);
