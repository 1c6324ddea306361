// The sort orders of the file list.
#pragma once

#include "dirmodel/dir_record.h"

using dir_compare = int (*)(const DirEntry&, const DirEntry&);

extern dir_compare sSortFunction;  // the column chosen by the user
extern int sSortOrder;             // non-zero: ascending

int dir_cmp_name(const DirEntry& a, const DirEntry& b);
int dir_cmp_size(const DirEntry& a, const DirEntry& b);
int dir_cmp_date(const DirEntry& a, const DirEntry& b);
int dir_cmp_user(const DirEntry& a, const DirEntry& b);
int dir_cmp_group(const DirEntry& a, const DirEntry& b);
int dir_cmp_permissions(const DirEntry& a, const DirEntry& b);
int dir_cmp_link(const DirEntry& a, const DirEntry& b);
int dir_cmp_dir(const DirEntry& a, const DirEntry& b);

// Names made only of digits compare as numbers of any length, all others by bytes.
int dir_compare_names(const char* a, const char* b);

// Sorts the live entries; directories first in both directions when the settings say so. A null compare
// does nothing. Keeps current pointing at its entry.
void dir_sort(DirRecord* dir, dir_compare compare, int ascending);
