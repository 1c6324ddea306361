// The path and filter fields and the navigation toolbar's state.
#pragma once

#include "core/history.h"

class QComboBox;

// Makes the two combo boxes the fields, filled from their histories, the filter "*".
void path_bar_setup(QComboBox* curpath, QComboBox* filespec);

// Shows a path (as it is on disk) in the field.
void tb_curpath_set_text(const char* path);
// Draws a web address in blue, any other text in the default colour.
void tb_curpath_update_appearance();
// Enables tb_up, tb_home, tb_add by the current path, and the two ways back by their stacks.
void tb_update();
// Refills the combo box's list when the history changed.
void cl_apply(History* history, QComboBox* combo);
// Selects the n-th item (from 1) of the combo box's list; never the last one.
void cl_text_select(QComboBox* combo, int n);
