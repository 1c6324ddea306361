#include "views/ui/status_bar.h"

#include <cstdint>
#include <string>

#include "dirmodel/dir_record.h"
#include "dirmodel/text.h"
#include "platform/desktop.h"

namespace {

const char* plural(int n) {
  return n >= 2 ? "s" : "";
}

std::string size_text(uint64_t size) {
  return ll2str(int32_t(size >> 32), uint32_t(size));
}

// Each size counts with its low 32 bits as a signed number, as it always has.
uint64_t selected_size() {
  int64_t total = 0;
  for (int i = 0; i < gDir.count; ++i)
    if (gDir.entries[i]->flags & ENTRY_SELECTED) total += int32_t(uint32_t(gDir.entries[i]->st.st_size));
  return uint64_t(total);
}

}  // namespace

void status_bar_update() {
  if (gDir.sel_count == 0) {
    desk_status(1, "");
    desk_status(
        2, std::to_string(gDir.count) + " item" + plural(gDir.count) + ", " + size_text(gDir.total_size));
    return;
  }
  desk_status(1, std::to_string(gDir.sel_count) + " selected item" + plural(gDir.sel_count) + ", " +
                     size_text(selected_size()));
}
