#include "views/ui/status_bar.h"

#include "dirmodel/dir_record.h"
#include "platform/desktop.h"
#include "views/status_line.h"

void status_bar_update() {
  desk_status(1, status_selection_text(gDir));
  if (gDir.sel_count == 0) desk_status(2, status_directory_text(gDir));
}
