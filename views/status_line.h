// The texts of the status line.
#pragma once

#include <string>

struct DirRecord;

// "3 items, 1.0KB": what the right pane says of a directory.
std::string status_directory_text(const DirRecord& dir);
// "1 selected item, 1.0KB": what the left pane says while something is selected; empty when nothing is.
std::string status_selection_text(const DirRecord& dir);
