// The terminal emulators that may be there, and how each takes the command to run.
#pragma once

#include "companions/common_part.h"

// The command lines that open a terminal with command in it (empty: with a shell), the user's own first.
std::vector<Words> terminal_commands(const Words& command);
