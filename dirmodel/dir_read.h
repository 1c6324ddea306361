// Reading a directory into its record, with every call that can hang on a reader thread.
#pragma once

#include "dirmodel/dir_record.h"
#include "dirmodel/dir_sort.h"
#include "dirmodel/id_names.h"

// Re-reads dir->path (which becomes the working directory) and sorts. Events run between batches. 0; -1 when
// the path is unset, cannot be entered or opened, its names cannot be read to the end, or the reading was
// given up (dir_read_cancel, or a reading of the same record that began meanwhile). What was read until then
// stays in the record.
int dir_read(DirRecord* dir, dir_compare compare, int ascending);

// Gives up the reading that is under way, if any. Interface thread, from an event that runs meanwhile.
void dir_read_cancel();

// Bound on one call of the file system: 10 s, unless a test makes it shorter.
void dir_read_set_timeout_ms(int milliseconds);
