// What the rooms above and beside the views hang into the main window.
#pragma once

class FileListView;
class QMainWindow;
class QTreeWidget;

void base_wire_tree(QTreeWidget* tree);
void base_wire_list(FileListView* list);
void base_wire_menus(QMainWindow* window);
