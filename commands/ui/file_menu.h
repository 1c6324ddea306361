// The File menu's commands. Each takes the selected entries of gDir; all return 0. fm_exit is the main
// window's.
#pragma once

class QMenu;

int fm_open();
int fm_open_another();
int fm_view();
int fm_edit();
int fm_open_with();  // opens the dialog
int fm_open_conwin();
int fm_new_window();
int fm_refresh();
int fm_print();
int fm_print_directory();
int fm_inspect();
int fm_new_file();
int fm_new_folder();
int fm_symlink();

// Enables the items of the menu (by the object names of its actions, submenus included) for the selection:
// when it is about to show.
int fm_setup(QMenu* menu);
