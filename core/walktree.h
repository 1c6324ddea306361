// Walking a directory tree.
#pragma once

#include <sys/stat.h>

#include <functional>

// Told the path (at most 1023 bytes) and its lstat data; -1 ends the walk.
using walk_visit = std::function<int(const char* path, const struct stat64& status)>;

// Visits everything below directory, and directories themselves before (dirs_first) or after what they hold.
// Links are visited as files. Entries that cannot be read, or whose path would be longer, are passed over. 0;
// -1 when directory is none or cannot be opened, or a visit gave -1.
int misc_walktree(const char* directory, const walk_visit& visit, int dirs_first);
