#include <cstdint>
#include <cstdlib>

#include "fileops/transfer_codec.h"

// Whatever is accepted must be exactly what packing it writes.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  TransferList list;
  if (!transfer_unpack(bytes, &list)) return 0;
  TransferList again;
  if (!transfer_unpack(transfer_pack(list), &again)) abort();
  if (again.dir != list.dir || again.names != list.names || again.one_dir_packed != list.one_dir_packed)
    abort();
  return 0;
}
