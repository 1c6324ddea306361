// The dialog that selects or unselects entries by a pattern.
#pragma once

#include <cstdint>

extern int32_t gPattern_op;  // 0: select, else unselect

// op 0: select, anything else: unselect. The main window's input is blocked until it closes.
void pattern_dlg_open(int op);
