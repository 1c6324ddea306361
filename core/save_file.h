// Whole small files of the settings directory, in and out.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Reads at most max bytes of the regular file dir/name. False (text emptied) when dir is null or the file
// cannot be opened or read; what is not a regular file is never waited for.
bool load_file(const char* dir, const char* name, size_t max, std::string* text);

// Writes dir/name over a temporary file beside it, so that a full disk or a kill leaves the old one whole. A
// symbolic link stays one: the file that it leads to is replaced. 0; -1 when dir is null, what stands there
// is read-only or no regular file, or anything failed.
int save_file(const char* dir, const char* name, std::string_view text);
