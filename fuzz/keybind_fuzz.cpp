#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "core/keybind.h"
#include "core/save_file.h"

// Any file loads; what was saved from it loads to the same bindings, so that saving it again gives as many
// lines.
static std::string scratch() {
  static char dir[] = "/tmp/keybind-fuzz-XXXXXX";
  static const bool made = mkdtemp(dir) != nullptr;
  if (!made) abort();
  return dir;
}

static std::string saved(const std::string& dir) {
  std::string text;
  if (kb_save(dir.c_str(), "out") != 0 || !load_file(dir.c_str(), "out", 1 << 24, &text)) abort();
  return text;
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string dir = scratch();
  gLinks.clear(), gSections.clear(), gActions.clear();
  save_file(dir.c_str(), "in", {reinterpret_cast<const char*>(data), size});
  if (kb_load(dir.c_str(), "in") != 0) abort();
  const std::string first = saved(dir);
  gSections.clear(), gActions.clear();
  if (kb_load(dir.c_str(), "out") != 0) abort();
  if (saved(dir).size() > first.size()) abort();
  return 0;
}
