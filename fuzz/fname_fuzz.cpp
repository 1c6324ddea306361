// Any bytes as a name, in every mode: what is shown fits its bound, is UTF-8 in the default mode, and where
// it carries no mark it comes back as the same bytes.
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "core/state.h"
#include "views/fname.h"

static void set_mode(uint32_t mode, const char* charset) {
  gConfig->flags = (gConfig->flags & ~SET_ENC_MASK) | mode;
  fname_set_translation(charset);
}

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  const std::string name = std::string(reinterpret_cast<const char*>(data), size).c_str();
  int count = 0;
  set_mode(0, "");
  const std::string shown = fname_decode(name.c_str(), &count);
  if (shown != name && (shown.size() > 1023 || shown[0] != '?' || count == 0)) std::abort();
  if (fname_decode(shown.c_str()) != shown) std::abort();  // what is shown is valid itself

  static const char* const kCharsets[] = {"ISO-8859-1", "SHIFT_JIS", "EUC-JP",
                                          "KOI8-R",     "UTF-16LE",  "ISO-2022-JP"};
  for (const char* charset : kCharsets)
    for (const uint32_t mode : {SET_ENC_UTF8_ALTERNATE, SET_ENC_ALTERNATE}) {
      set_mode(mode, charset);
      const std::string text = fname_decode(name.c_str(), &count);
      if (mode == SET_ENC_ALTERNATE && text.size() > 1023) std::abort();
      const char* back = fname_encode(text.c_str());
      const bool single_byte = std::strcmp(charset, "ISO-8859-1") == 0;
      if (mode == SET_ENC_ALTERNATE && single_byte && name.size() < 500 && (!back || name != back))
        std::abort();
      fname_encode(name.c_str());
    }
  return 0;
}
