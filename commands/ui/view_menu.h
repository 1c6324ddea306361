// The View menu: what of the main window is shown.
#pragma once

class QMenu;

// Shows or hides the hotlist pane, which the settings keep.
void vm_hotlist_toggle();
// Shows or hides the clipboard toolbar; not kept.
void vm_clip_tb_toggle();
// The other items exist, and do nothing.
int vm_inert();

// Marks the items whose part of the window is shown.
void vm_setup(QMenu* menu);
