// Copy To and Move To: menus of directories, filled level by level by scanning threads.
#pragma once

#include <functional>
#include <string>

class QAction;
class QMenu;

// Adds the cascades "Copy To" and "Move To" to a menu that is being built. Nothing with an empty selection.
void mgen_work_insert(QMenu* menu);

// Adds one directory entry: path on disk, label to show, flags: bit 0 hides dot-names in its submenu, 0x1000
// marks a root. on_choose is called with the path after the menus were closed. Null without a path.
QAction* dtm_add_item(QMenu* menu, const std::string& path, const std::string& label, unsigned flags,
                      void (*on_choose)(const char* path));

// Copies or moves the selection to destination, after a question; null asks for the destination instead.
void x_copy_to_dest(const char* destination);
void x_move_to_dest(const char* destination);
