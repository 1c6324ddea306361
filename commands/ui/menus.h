// The menu bar's menus, made from the table in menu_table.h.
#pragma once

class QAction;
class QMainWindow;
class QMenu;

// Fills the window's menu bar. The menus and items bear the system's identifiers as object names; a menu of
// that name that stands in the bar already is filled, any other is made. Call once the window's file list
// exists: keys that mean something else elsewhere work in it only.
void menus_create(QMainWindow* window);

// The item of that identifier ("em_cut"); null when there is none.
QAction* menu_item(const char* identifier);
