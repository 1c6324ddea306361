#include <cstdint>
#include <cstdlib>

#include "fileops/transfer_codec.h"
#include "fileops/uri_list.h"

// Whatever is accepted must be whole (an absolute directory, single components) and survive a round trip.
static void check(const std::vector<TransferList>& lists) {
  for (const TransferList& list : lists) {
    TransferList packed;
    if (!transfer_unpack(transfer_pack(list), &packed) || packed.names.empty()) abort();
    const std::vector<TransferList> again = uri_list_decode(uri_list_encode(list));
    if (again.size() != 1 || again[0].dir != list.dir || again[0].names != list.names) abort();
  }
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  check(uri_list_decode(bytes));
  bool cut = false;
  std::vector<TransferList> lists;
  if (gnome_files_decode(bytes, &cut, &lists)) check(lists);
  return 0;
}
