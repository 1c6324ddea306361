// How the interface starts an operation.
#include "fileops/start.h"

#include <cstdio>

#include "core/state.h"
#include "fileops/fop.h"
#include "fileops/ui/clipboard.h"
#include "fileops/ui/slots.h"

namespace {
int fop_start_cmd(int kind, const TransferList& list, const std::string& destination) {
  fop_info* info = slot_add(kind, list.dir, list.names, destination);
  if (info == nullptr) return perror("failed to start operation!\n"), -1;
  file_get_cut_files();
  const uint32_t flags = fop_derive_flags(kind, gConfig->flags, list.names.size() > 1 || list.one_dir_packed);
  fop_items_done uncut;
  if (kind != FOP_COPY)
    uncut = [](const std::string& dir, const std::vector<std::string>& names) { file_uncut(dir, names); };
  if (fop(kind, list.dir.c_str(), list.names, destination.c_str(), flags, *info, std::move(uncut)) ==
      nullptr) {
    perror("failed to start operation!\n");
    slot_start_failed(info->slot);
    return -1;
  }
  return 0;
}
}  // namespace

int _file_op(int kind, const TransferList& list, const std::string& destination) {
  return fop_start_cmd(kind, list, destination);
}
