// Any bytes as "config.003": the record's texts end inside their fields, and what is saved loads as it was.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

#include "core/settings.h"

static const char* fuzz_directory() {
  static char path[] = "/dev/shm/zan-fuzz-XXXXXX";
  static const char* made = mkdtemp(path);
  static const int removed = std::atexit([] {
    for (const char* name : {"/config.003", "/again"}) unlink((std::string(path) + name).c_str());
    rmdir(path);
  });
  (void)removed;
  return made;
}

template <size_t N>
static void check_text(const char (&field)[N]) {
  if (strnlen(field, N) == N) std::abort();
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string dir = fuzz_directory();
  std::string bytes(reinterpret_cast<const char*>(data), size);
  // Most inputs are short: those stand for a record's end too, where flags and texts meet.
  if (size > 0 && size % 2 == 0 && size < sizeof(Settings))
    bytes = std::string(sizeof(Settings) - size, 'A') + bytes;
  std::ofstream(dir + "/config.003", std::ios::binary) << bytes;
  Settings record, again;
  settings_load(&record, dir.c_str(), "config.003");
  check_text(record.editor);
  check_text(record.print);
  check_text(record.terminal);
  check_text(record.tree_font);
  check_text(record.list_font);
  if (record.encoding_end != 0) std::abort();
  if (init_save_config(&record, dir.c_str(), "again") != 0) std::abort();
  settings_load(&again, dir.c_str(), "again");
  if (std::memcmp(&record, &again, sizeof record) != 0) std::abort();
  return 0;
}
