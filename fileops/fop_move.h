// The destination check and the rename pass.
#pragma once

#include <string>

#include "fileops/fop.h"
#include "fileops/fop_path.h"

// Looks at the destination before anything else is done. 0 go on, -1 end. A delete passes unchecked.
int fop_check_dst(fop_request* request);

// Renames what can be renamed; the rest stays in the list for the copy pass. 0 go on, -1 end.
int fop_move_files(fop_request* request);

// Says that a directory cannot be copied or moved into itself, and takes back a destination made for it.
void fop_refuse_itself(fop_request* request);

// The directory in which the selection's items are made, opened, and the name of an item in it.
fop_fd fop_open_selection_dest(const fop_request& request);
std::string fop_selection_dest_name(const fop_request& request, const char* name);
