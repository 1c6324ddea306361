// The texts of the file list's rows.
#pragma once

#include <string>

struct DirEntry;

enum { FL_COLUMNS = 7 };

// One column's text: 0 the name as it is shown, 1 size, 2 date, 3 owner, 4 group, 5 permissions, 6 link.
// Empty for any other, and for the link column of an entry without a link text.
std::string fl_column_text(const DirEntry& entry, int column);

// One row's text, its columns separated by tabs: seven of them for an entry with a link text, else six.
std::string fl_row_text(const DirEntry& entry);
