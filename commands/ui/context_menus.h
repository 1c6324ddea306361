// The context menus of the file list and of the hotlist.
#pragma once

class QMenu;
class QPoint;

// Opens list_cmenu for the selection at a place on the screen.
void list_cmenu_open(const QPoint& global);
// Opens hotlist_cmenu for the item under the last menu-button press.
void hotlist_cmenu_open(const QPoint& global);

// Builds the part of list_cmenu that depends on the selection and the clipboard.
void lcm_setup(QMenu* menu);
