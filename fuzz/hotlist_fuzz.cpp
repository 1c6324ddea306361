// A hotlist file of any bytes: what is taken over is a list of distinct absolute paths that survives being
// written and read again.
#include <cstdint>
#include <cstdlib>
#include <set>

#include "views/hotlist.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::vector<std::string> paths = tree_parse(text);
  std::string again;
  std::set<std::string> seen;
  for (const std::string& path : paths) {
    const bool fits = !path.empty() && path[0] == '/' && path.size() <= 1023;
    if (!fits || path.find('\n') != std::string::npos || !seen.insert(path).second) std::abort();
    again += path + "\n";
  }
  if (tree_parse(again) != paths) std::abort();
  return 0;
}
