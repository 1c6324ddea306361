#include "views/status_line.h"

#include "dirmodel/dir_record.h"
#include "dirmodel/text.h"

namespace {
std::string counted_items(int32_t n, const char* what, uint64_t size) {
  return std::to_string(n) + what + (n >= 2 ? "s, " : ", ") +
         ll2str(static_cast<int32_t>(size >> 32), static_cast<uint32_t>(size));
}
}  // namespace

std::string status_directory_text(const DirRecord& dir) {
  return counted_items(dir.count, " item", dir.total_size);
}

std::string status_selection_text(const DirRecord& dir) {
  if (dir.sel_count == 0) return {};
  int64_t total = 0;
  // Each size counts with its low 32 bits as a signed number, as it always has.
  for (int32_t i = 0; i < dir.count; ++i)
    if (dir.entries[i]->flags & ENTRY_SELECTED)
      total += static_cast<int32_t>(static_cast<uint32_t>(dir.entries[i]->st.st_size));
  return counted_items(dir.sel_count, " selected item", static_cast<uint64_t>(total));
}
