// Finding an entry of gDir by name.
#pragma once

#include <functional>

enum : unsigned { FIND_EXACT = 1, FIND_NO_DIRS = 2, FIND_BACKWARD = 4, FIND_PREFIX = 8 };

// Scans from entry 0 (start is not used). -2 for no text or no match, -1 for "..", else the first match; with
// a callback it is called with every match and the last one is returned. The pattern test applies whenever
// the others fail.
int x_find(const char* text, int start, unsigned flags, const std::function<void(int)>& callback = {});

// The entry of that very name, never a pattern; -2 when there is none.
int find_name(const char* name);
