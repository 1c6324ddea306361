// The work list: everything below the selection, grouped by directory, breadth first.
#pragma once

#include "fileops/fop.h"

// Appends a group for every directory met and sums up the totals. 0 complete, -1 aborted, cancelled, refused
// or out of memory.
int fop_build_filelist(fop_request* request);
