// The delete pass, back to front over the work list.
#pragma once

#include "fileops/fop.h"

// with_progress: 1 for a delete request, 0 for the end of a move. 0 complete, -1 aborted or cancelled.
int fop_delete_files(fop_request* request, int with_progress);

// Makes sure that all copies of a move are on the disk. 0; -1 with the user told: every source is to stay.
int fop_sync_copies(fop_request* request);
