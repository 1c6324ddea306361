#include "fileops/transfer.h"

#include "dirmodel/dir_record.h"

TransferList fl_pack_transf() {
  TransferList list;
  list.dir = gDir.path;
  list.names.reserve(static_cast<size_t>(gDir.sel_count));
  for (int i = 0; i < gDir.count; ++i) {
    const DirEntry& entry = *gDir.entries[i];
    if (!(entry.flags & ENTRY_SELECTED)) continue;
    list.names.emplace_back(entry.name);
    list.one_dir_packed = dir_entry_is_directory(entry);
  }
  if (list.names.size() != 1) list.one_dir_packed = false;
  return list;
}
