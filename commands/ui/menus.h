// The menu bar's menus: one table of all items.
#pragma once

class QAction;
class QMenu;
class QMainWindow;

// Fills the window's menu bar. The menus and items bear the system's identifiers as object names; a menu of
// that name that stands in the bar already is filled, any other is made.
void menus_create(QMainWindow* window);

// The item of that identifier ("em_cut"); null when there is none.
QAction* menu_item(const char* identifier);
