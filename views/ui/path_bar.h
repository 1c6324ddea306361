// The path and filter fields and the navigation toolbar's state.
#pragma once

#include "core/history.h"

class QComboBox;

void tb_curpath_set_text(const char* path);
// Enables tb_up, tb_home, tb_add by the current path.
void tb_update();
// Refills the combo box's list when the history changed.
void cl_apply(History* history, QComboBox* combo);
