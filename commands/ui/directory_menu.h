// Menus of directories whose levels are built in the background: at most 100 a level.
#pragma once

#include <functional>
#include <string>

class QMenu;
class QWidget;

using ca_action = std::function<void(QWidget* base, const char* path)>;

// Fills menu, once, with a separator and a directory button for each of the first 100 hotlist paths. Choosing
// one calls action with the main window and the button's full path.
void ca_populate_menu(QMenu* menu, ca_action action);
