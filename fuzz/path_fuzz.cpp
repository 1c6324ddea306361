// Any text as a path: the helpers never lengthen it, and what they cut stays a beginning of it.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "dirmodel/text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text = std::string(reinterpret_cast<const char*>(data), size).c_str();
  std::string cleaned = text;
  es_strip_pathname(&cleaned);
  if (cleaned.size() > text.size()) std::abort();
  if (cleaned.size() > 1 && cleaned.back() == '/') std::abort();
  std::string parent = text;
  es_remove_subdirectory(&parent);
  if (parent.size() > text.size() || text.compare(0, parent.size(), parent) != 0) std::abort();
  const size_t half = text.size() / 2;
  const std::string dir = text.substr(0, half), name = text.substr(half);
  if (es_construct_fullpath(dir.c_str(), name.c_str()).size() > text.size() + 1) std::abort();
  std::string quoted;
  if (add_name(&quoted, text.c_str()) != static_cast<int>(quoted.size())) std::abort();
  if (!text.empty() && add_name(nullptr, text.c_str()) != static_cast<int>(quoted.size())) std::abort();
  misc_all_digits(text.c_str());
  return 0;
}
