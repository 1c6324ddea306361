#include "views/fname.h"

#include <iconv.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <cstring>
#include <mutex>
#include <string>
#include <string_view>

#include "core/state.h"

namespace {
constexpr size_t kBuffer = 1024;  // one result, with its end and the place of the mark

// The character set chosen last. Workers convert names too, and a converter has a state: each thread keeps
// converters of its own and opens them anew when the generation has moved on.
std::mutex sCharsetMutex;
std::string sCharset;
std::atomic<unsigned> sCharsetGeneration{0};

const iconv_t kNoConverter = reinterpret_cast<iconv_t>(-1);

struct Converters {
  unsigned generation = 0;
  iconv_t to_display = kNoConverter, to_disk = kNoConverter;

  ~Converters() { close(); }
  void close() {
    for (iconv_t* converter : {&to_display, &to_disk}) {
      if (*converter != kNoConverter) iconv_close(*converter);
      *converter = kNoConverter;
    }
  }
  void follow_choice() {
    if (generation == sCharsetGeneration) return;
    std::lock_guard lock(sCharsetMutex);
    generation = sCharsetGeneration;
    close();
    if (sCharset.empty()) return;
    to_display = iconv_open("UTF-8", sCharset.c_str());
    to_disk = iconv_open(sCharset.c_str(), "UTF-8");
  }
};

Converters& thread_converters() {
  thread_local Converters converters;
  converters.follow_choice();
  return converters;
}

uint32_t encoding_mode() {
  return __atomic_load_n(&gConfig->flags, __ATOMIC_RELAXED) & SET_ENC_MASK;
}

// Length of the valid UTF-8 sequence at the start of text; 0 when there is none.
size_t utf8_sequence(std::string_view text) {
  const auto byte = [&](size_t i) { return static_cast<unsigned char>(text[i]); };
  const unsigned first = byte(0);
  if (first < 0x80) return 1;
  const size_t length = first >= 0xf0 ? 4 : first >= 0xe0 ? 3 : 2;
  if (first < 0xc2 || first > 0xf4 || text.size() < length) return 0;
  // The second byte's range keeps out overlong forms, surrogates and what lies beyond the last character.
  const unsigned low = first == 0xe0 ? 0xa0 : first == 0xf0 ? 0x90 : 0x80;
  const unsigned high = first == 0xed ? 0x9f : first == 0xf4 ? 0x8f : 0xbf;
  if (byte(1) < low || byte(1) > high) return 0;
  for (size_t i = 2; i < length; ++i)
    if ((byte(i) & 0xc0) != 0x80) return 0;
  return length;
}

bool utf8_valid(std::string_view text) {
  while (!text.empty()) {
    const size_t length = utf8_sequence(text);
    if (length == 0) return false;
    text.remove_prefix(length);
  }
  return true;
}

struct Conversion {
  size_t length = 0;  // bytes written, without the end
  bool clean = true;  // every byte of the input could be converted
  bool whole = true;  // the result had room
};

// Converts text into out (room for max bytes and the end). What cannot be converted becomes '/', a character
// that no name holds.
Conversion convert_text(iconv_t converter, std::string_view text, char* out, size_t max) {
  Conversion result;
  char* in = const_cast<char*>(text.data());
  size_t in_left = text.size(), out_left = max;
  char* to = out;
  iconv(converter, nullptr, nullptr, nullptr, nullptr);
  while (in_left > 0) {
    if (iconv(converter, &in, &in_left, &to, &out_left) != static_cast<size_t>(-1)) break;
    if (errno == E2BIG || out_left == 0) {
      result.whole = false;
      break;
    }
    result.clean = false;
    *to++ = '/';
    --out_left;
    ++in;
    --in_left;
  }
  if (iconv(converter, nullptr, nullptr, &to, &out_left) == static_cast<size_t>(-1)) result.whole = false;
  *to = '\0';
  result.length = static_cast<size_t>(to - out);
  return result;
}

// The name with every byte that begins no character replaced, behind the mark.
const char* repair_name(std::string_view name, char* buffer, int* replaced) {
  size_t used = 1;
  buffer[0] = '?';
  while (!name.empty()) {
    const size_t length = utf8_sequence(name);
    const size_t taken = std::max<size_t>(length, 1);
    if (used + taken > kBuffer - 1) break;
    if (length == 0) {
      buffer[used] = '?';
      ++*replaced;
    } else {
      std::memcpy(buffer + used, name.data(), taken);
    }
    used += taken;
    name.remove_prefix(taken);
  }
  buffer[used] = '\0';
  return buffer;
}
}  // namespace

void fname_set_translation(const char* charset) {
  std::lock_guard lock(sCharsetMutex);
  sCharset = charset ? charset : "";
  ++sCharsetGeneration;
}

bool fname_charset_opens(const char* charset) {
  for (const bool to_disk : {false, true}) {
    const iconv_t converter = to_disk ? iconv_open(charset, "UTF-8") : iconv_open("UTF-8", charset);
    if (converter == kNoConverter) return false;
    iconv_close(converter);
  }
  return true;
}

const char* fname_encode(const char* text) {
  thread_local char buffer[kBuffer];
  if (!(encoding_mode() & SET_ENC_ALTERNATE)) return text;
  const iconv_t converter = thread_converters().to_disk;
  if (converter == kNoConverter) return text;
  const Conversion result = convert_text(converter, text, buffer, kBuffer - 1);
  // Half a name, or one with an end inside, would be another file's.
  const bool faithful = result.clean && result.whole && std::strlen(buffer) == result.length;
  return faithful ? buffer : nullptr;
}

const char* fname_decode(const char* name, int* count) {
  thread_local char buffer[kBuffer];
  int replaced = 0;
  if (count) *count = 0;
  const uint32_t mode = encoding_mode();
  if (mode != SET_ENC_ALTERNATE && utf8_valid(name)) return name;
  if (mode == 0) {
    repair_name(name, buffer, &replaced);
    if (count) *count = replaced;
    return buffer;
  }
  const iconv_t converter = thread_converters().to_display;
  if (converter == kNoConverter) return name;
  const Conversion result = convert_text(converter, name, buffer + 1, kBuffer - 2);
  if (result.clean) return buffer + 1;
  for (char* c = buffer + 1; *c; ++c)
    if (*c == '/') *c = '?', ++replaced;
  buffer[0] = '?';
  if (count) *count = replaced;
  return buffer;
}
