// The file list "filelist": rows of gDir, selection, refresh, open.
#pragma once

#include <functional>
#include <string>

// Rebuilds the rows from gDir (after a sort or a reading).
void fl_update();
// Re-reads the directory, keeping the first selected entry current, or the place where it was. 0, or -1 when
// the reading failed.
int fl_refresh();

// An entry that was gone to is shown selected, so a command that is now given means it: selects it.
void fl_select_pointed();
void fl_select_index(int i);
void fl_unselect_index(int i);
void fl_invert_index(int i);
void fl_select_all();
void fl_unselect_all();
void fl_invert_all();
// Selects (or unselects) every entry whose name matches the pattern; directories only with include_dirs.
void fl_select_pattern(const char* pattern, bool include_dirs);
void fl_unselect_pattern(const char* pattern, bool include_dirs);

// Clears the selection and makes entry i current (-1: the first row), scrolled to and selected in the widget.
void fl_goto_index(int i);
// x_find, then fl_goto_index. The index made current.
int fl_goto(const char* text, int start, unsigned flags);

// Opens entry i: -1 goes up, a directory is entered, a file goes to the associations. -1 for i = -2.
int fl_open(int i);
std::string fl_get_fullpath(int i);

// The type-ahead timer: armed with the settings' time-out; when it fires the interpreter is cleared.
void fl_timer_set();
void fl_timer_disable();

int fl_get_column_width(int n);  // n from 1 to 7, else -1
void fl_set_column_width(int n, int width);

// Called after every rebuild.
void fl_set_notify_cb(std::function<void()> fn);
