// Any pattern against any name: "^" only ignores case, and "|" only adds alternatives.
#include <cstdint>
#include <cstdlib>
#include <string>

#include "dirmodel/text.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const std::string pattern = text.substr(0, text.find('\0'));
  const std::string name = pattern.size() < text.size() ? text.substr(pattern.size() + 1).c_str() : pattern;
  const bool matches = _fnmatch(pattern.c_str(), name.c_str()) == 0;
  if (pattern.empty() && matches != name.empty()) std::abort();
  if (_fnmatch((pattern + "|*").c_str(), name.c_str()) != 0) std::abort();
  _fnmatch(("^" + pattern).c_str(), name.c_str());
  if (es_strcmp(name.c_str(), pattern.c_str()) == 0 && !matches) std::abort();
  return 0;
}
