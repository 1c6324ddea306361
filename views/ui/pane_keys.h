// Keys for what the panes otherwise leave to the pointer.
#pragma once

class QMainWindow;
class QSplitter;
class QTreeWidget;

// Ctrl+1 to Ctrl+7 sort by that column, as a click on its header does. Alt+Shift+Left and Right move the
// divider between the panes; with the hotlist's keyboard focus Alt+Shift+Up and Down move its current entry.
// Shift+F10 opens the context menu of what has the keyboard focus, as the menu key does.
void pane_keys_setup(QMainWindow* window, QSplitter* splitter, QTreeWidget* hotlist);
