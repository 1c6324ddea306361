// Any bytes as a history file: at most 20 entries of one line each, and saving keeps them.
#include <unistd.h>

#include <cstdlib>
#include <cstring>
#include <fstream>

#include "core/history.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static char dir[] = "/dev/shm/zan-fuzz-XXXXXX";
  static const char* made = mkdtemp(dir);
  static const int removed = std::atexit([] {
    unlink((std::string(dir) + "/h").c_str());
    rmdir(dir);
  });
  (void)removed;
  std::ofstream(std::string(made) + "/h", std::ios::binary).write(reinterpret_cast<const char*>(data), size);
  History* history = cl_read(made, "h");
  if (history->count < 0 || history->count > 20) std::abort();
  std::string first = history->count > 0 ? cl_get(history, 1) : "";
  for (int n = 1; n <= history->count; ++n)
    if (std::strlen(cl_get(history, n)) > 1022 || std::strchr(cl_get(history, n), '\n')) std::abort();
  cl_save(history, made, "h");
  History* again = cl_read(made, "h");
  if (again->count != history->count) std::abort();
  for (int n = 1; n <= history->count; ++n)
    if (std::strcmp(cl_get(history, n), cl_get(again, n)) != 0) std::abort();
  cl_find_pattern(history, first.c_str());
  cl_add(history, first.c_str());
  cl_add(history, "another");
  if (std::strcmp(cl_get(history, 1), "another") != 0) std::abort();
  cl_destroy(history);
  cl_destroy(again);
  return 0;
}
