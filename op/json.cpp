#include "op/json.h"

#include <cstdio>

// The length of the UTF-8 sequence at the start of text, 0 when there is none.
static size_t sequence_length(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned char lead = byte(0);
  const size_t length = lead < 0x80                   ? 1
                        : lead >= 0xC2 && lead < 0xE0 ? 2
                        : (lead & 0xF0) == 0xE0       ? 3
                        : lead >= 0xF0 && lead < 0xF5 ? 4
                                                      : 0;
  if (length == 0 || length > text.size()) return 0;
  for (size_t i = 1; i < length; ++i)
    if ((byte(i) & 0xC0) != 0x80) return 0;
  if ((lead == 0xE0 && byte(1) < 0xA0) || (lead == 0xED && byte(1) > 0x9F)) return 0;
  if ((lead == 0xF0 && byte(1) < 0x90) || (lead == 0xF4 && byte(1) > 0x8F)) return 0;
  return length;
}

std::string json_quote(std::string_view text) {
  std::string out = "\"";
  while (!text.empty()) {
    const unsigned char c = text[0];
    size_t length = sequence_length(text);
    if (c == '"' || c == '\\') {
      out += {'\\', static_cast<char>(c)};
    } else if (c == '\n') {
      out += "\\n";
    } else if (c < 0x20) {
      char escape[8];
      std::snprintf(escape, sizeof escape, "\\u%04x", c);
      out += escape;
    } else if (length == 0) {
      out += "\xEF\xBF\xBD";
      length = 1;
    } else {
      out += text.substr(0, length);
    }
    text.remove_prefix(length);
  }
  return out + "\"";
}
