// What the files of the file list share among themselves.
#pragma once

#include <vector>

#include "views/ui/file_list.h"
#include "views/ui/file_list_model.h"
#include "views/ui/file_list_view.h"

// Makes view the list. Once, before any other function of the list.
void fl_setup(FileListView* view);
// Forgets it (the window ends).
void fl_destroy();
FileListView* fl_view();
FileListModel* fl_model();

// Whether the row is shown selected.
bool fl_row_selected(int row);
// The first entry that is shown selected, or -2.
int fl_first_shown_selected();
// Puts the keyboard's place on the row (or the last one), and leaves selection and current entry alone.
void fl_cursor_at(int row);

enum FlChoice {
  FL_CHOOSE_ONLY,    // the rows from..to alone
  FL_CHOOSE_ADD,     // those too
  FL_CHOOSE_TOGGLE,  // those the other way round
};
// The user's choice of rows (from and to in any order), as one change. row becomes current.
void fl_choose_rows(int from, int to, FlChoice choice, int current_row);
// The user's choice by a band: exactly the rows from from to the last, and those that kept tells by row.
void fl_choose_band(int from, const std::vector<bool>& kept, int current_row);
// The user's choice of no row.
void fl_choose_none();
// The menu button on a row (-1: on none).
void fl_menu_press(int row);

// The current mark moved to entry i by the user: -1 is the ".." row.
void fl_set_current(int i);

// A click on a header: another column, or the same one the other way round.
void fl_sort_cb(int column);
void show_sort_method();

// Runs fn, whose waiting for the file system lets events run, as a part of reading a directory: the main
// window takes no input but what gives it up. False when that came.
bool fl_as_reading(const std::function<void()>& fn);
// True while dir_read runs (its events may call anything).
bool fl_reading();
// Runs fn once the reading under way has ended, and gives that reading up. A later call replaces an earlier.
void fl_after_reading(std::function<void()> fn);
// The list's rows while a reading goes on: the old picture stands, and after a while none at all.
void fl_show_reading(bool long_one);
// In a long reading: those that have come by now.
void fl_show_rows_read();
