// Reading a directory into its record, with every call that can hang on a reader thread.
#pragma once

#include "dirmodel/dir_record.h"
#include "dirmodel/dir_sort.h"

// Re-reads dir->path (which becomes the working directory) and sorts. Events run between batches. 0; -1 when
// the path is unset, cannot be entered or opened, or the reading was given up (dir_read_cancel).
int dir_read(DirRecord* dir, dir_compare compare, int ascending);

// Gives up the reading that is under way, if any. Interface thread, from an event that runs meanwhile.
void dir_read_cancel();

// Writes the characters of one part of the permission text: 1 owner, 2 group, 3 others (three each, no
// terminator), 4 sticky (one), 0 type code (one); others write nothing.
void dir_get_permissions(mode_t mode, char* out, int part);

// The name for an id, at most 15 bytes, from a cache; decimal when unknown. out holds at least 16 bytes.
void dir_get_username(uid_t uid, char* out);
void dir_get_groupname(gid_t gid, char* out);
