#include "dirmodel/text.h"

#include <fnmatch.h>

#include <algorithm>
#include <cctype>
#include <cstdarg>
#include <cstdio>
#include <cstring>
#include <string_view>

namespace {
// "*.c", "*.[ch]", "[Mm]akefile": nearly all patterns are of this kind, and a large selection is matched
// against all of them before a menu opens. No character set has "." in the middle of a character, so bytes
// decide, from the start of the name or from its end.
enum class Plain { other_kind, differs, matches };

// The end of the one character or plain set of characters that pattern begins with; null for anything else.
const char* plain_element_end(const char* pattern) {
  const auto plain = [](char c) { return c > 0 && !std::strchr("*?[]\\", c); };
  if (*pattern != '[') return plain(*pattern) ? pattern + 1 : nullptr;
  const char* end = pattern + 1;
  while (std::isalnum(static_cast<unsigned char>(*end)) && *end > 0) ++end;
  return *end == ']' && end > pattern + 1 ? end + 1 : nullptr;
}

Plain match_plain(const char* pattern, std::string_view name) {
  const bool whole = pattern[0] != '*';
  if (!whole && *++pattern != '.') return Plain::other_kind;
  size_t length = 0;
  for (const char* p = pattern; *p; ++length)
    if (!(p = plain_element_end(p))) return Plain::other_kind;
  if (whole ? name.size() != length : name.size() < length) return Plain::differs;
  const char* c = name.data() + name.size() - length;
  for (const char *p = pattern, *end; *p; p = end, ++c) {
    end = plain_element_end(p);
    const int bracket = *p == '[';
    if (std::find(p + bracket, end - bracket, *c) == end - bracket) return Plain::differs;
  }
  return Plain::matches;
}

// One alternative against the whole name. A name or pattern that is no text in the locale's character set
// is matched byte by byte.
int match_one(const char* pattern, const char* name) {
  switch (match_plain(pattern, name)) {
    case Plain::matches:
      return 0;
    case Plain::differs:
      return FNM_NOMATCH;
    case Plain::other_kind:
      break;
  }
  return fnmatch(pattern, name, 0);
}

int match_alternatives(std::string_view pattern, const char* name) {
  std::string one;
  for (;;) {
    const size_t bar = pattern.find('|');
    one.assign(pattern.substr(0, bar));
    const int result = match_one(one.c_str(), name);
    if (result == 0 || bar == std::string_view::npos) return result;
    pattern.remove_prefix(bar + 1);
  }
}

std::string lower_case(const char* text) {
  std::string lower = text;
  for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
  return lower;
}

std::string format_text(const char* format, ...) __attribute__((format(printf, 1, 2)));
std::string format_text(const char* format, ...) {
  char text[128];
  va_list arguments;
  va_start(arguments, format);
  std::vsnprintf(text, sizeof text, format, arguments);  // NOLINT(clang-analyzer-valist.Uninitialized)
  va_end(arguments);
  return text;
}

std::string local_time_text(const char* format, time_t t) {
  struct tm local;
  char text[100];
  if (!localtime_r(&t, &local) || strftime(text, sizeof text, format, &local) == 0) return {};
  return text;
}

int local_hour(time_t t) {
  struct tm local;
  return localtime_r(&t, &local) ? local.tm_hour : 0;
}

// Today or yesterday, a weekday, or a date.
std::string recent_time_text(time_t t, int64_t elapsed) {
  if (elapsed > 518400) return local_time_text(" %m/%d/%Y", t);
  if (elapsed > 172800) return local_time_text(" %I:%M %p %A", t);
  const bool yesterday = elapsed / 360 + local_hour(t) > 23;  // 360 is kept as it always was
  return local_time_text(" %I:%M %p ", t) + (yesterday ? "yesterday" : "today");
}

std::string age_text(time_t t, int64_t elapsed) {
  const auto count = [](int64_t n, const char* unit) {
    return format_text(" %lu %s", static_cast<unsigned long>(n), unit);
  };
  const int64_t minutes = elapsed / 60, hours = minutes / 60, days = hours / 24;
  if (elapsed <= 119) return count(elapsed, "seconds");
  if (minutes <= 119) return count(minutes, "minutes");
  if (hours <= 47) return count(hours, "hours");
  if (days <= 59) return count(days, "days");
  if (days > 355) return local_time_text(" %m/%d/%Y", t);
  return count(days / 30, "months");
}
}  // namespace

int _fnmatch(const char* pattern, const char* name) {
  if (pattern[0] == '*' && !pattern[1]) return 0;
  if (pattern[0] != '^') return match_alternatives(pattern, name);
  return match_alternatives(lower_case(pattern + 1), lower_case(name).c_str());
}

int es_strcmp(const char* name, const char* pattern) {
  return _fnmatch(pattern, name);
}

void es_strip_pathname(char* path) {
  size_t length = std::strlen(path);
  if (length < 2) return;
  size_t run = 0;
  for (size_t i = 0; i < length; ++i) {
    if (path[i] == '/') {
      ++run;
      continue;
    }
    const size_t start = i - run, kept = start == 0 ? 2 : 1;
    if (run > kept) {
      const size_t removed = run - kept;
      std::memmove(path + i - removed, path + i, length - i + 1);
      length -= removed;
      // Behind a run inside the path the scan goes on from the old index: the moved text is partly skipped.
      if (start == 0) i -= removed;
    }
    run = 0;
  }
  while (length > 1 && path[length - 1] == '/') path[--length] = '\0';
}

void es_strip_pathname(std::string* path) {
  es_strip_pathname(path->data());
  path->resize(std::strlen(path->c_str()));
}

int es_remove_subdirectory(char* path) {
  const int length = static_cast<int>(std::strlen(path));
  for (int i = length - 2; i >= 1; --i)
    if (path[i] == '/') {
      path[i] = '\0';
      return i;
    }
  if (path[0] != '/') return length;
  path[1] = '\0';
  return 1;
}

void es_remove_subdirectory(std::string* path) {
  es_remove_subdirectory(path->data());
  path->resize(std::strlen(path->c_str()));
}

std::string es_construct_fullpath(const char* dir, const char* name) {
  if (!dir || !name) {
    const char* one = dir ? dir : name;
    return one ? one : "";
  }
  std::string path = dir;
  if ((path.empty() || path.back() != '/') && name[0] != '/') path += '/';
  path += name;
  size_t removable = path.size() >= 3 ? path.size() - 2 : 0;
  for (; removable > 0 && path.back() == '/'; --removable) path.pop_back();
  return path;
}

std::string es_generate_byte_string(int32_t n) {
  const long size = n;
  if (size > 1023999999) return format_text("%ld.%1ldGB", size / 1024000000, size % 1024000000);
  if (size > 1023999) return format_text("%ld.%1ldMB", size / 1024000, size % 1024000);
  if (size > 1023) return format_text("%ld.%1ldKB", size / 1024, size % 1024);
  return format_text("%ld byte_count", size);
}

const char* ll2str(int32_t high, uint32_t low) {
  static char text[64];
  const double value = static_cast<double>(high) * 4294967296.0 + low;
  if (high > 0 || (high == 0 && low > 1048575))
    std::snprintf(text, sizeof text, "%.1fMB", value / 1048576.0);
  else if (high == 0 && low > 1023)
    std::snprintf(text, sizeof text, "%.1fKB", value / 1024.0);
  else  // low as the signed word it was: what a negative sum leaves
    std::snprintf(text, sizeof text, "%ld bytes", static_cast<long>(static_cast<int32_t>(low)));
  return text;
}

const char* cvt2c(uint64_t size) {
  static char text[32];  // 20 digits, 6 commas
  char* out = text + sizeof text;
  *--out = '\0';
  int digits = 0;
  do {
    if (digits && digits % 3 == 0) *--out = ',';
    *--out = static_cast<char>('0' + size % 10);
    size /= 10;
    ++digits;
  } while (size);
  return out;
}

int es_generate_time_string(std::string* out, time_t t, int mode) {
  const int64_t elapsed = static_cast<int64_t>(time(nullptr)) - t;
  if (mode == 2) *out = local_time_text(" %m/%d/%Y %I:%M %p", t);
  if (mode == 1) *out = recent_time_text(t, elapsed);
  if (mode == 0) *out = age_text(t, elapsed);
  return static_cast<int>(out->size());
}

int add_name(std::string* buf, const char* name) {
  const std::string_view text = name ? name : "";
  if (buf && text.empty()) return 0;
  std::string quoted = "'";
  for (char c : text) {
    if (c == '\'')
      quoted += "\\047";
    else
      quoted += c;
  }
  quoted += "' ";
  if (buf) *buf += quoted;
  return static_cast<int>(quoted.size());
}

int misc_all_digits(const char* text) {
  return text[std::strspn(text, "0123456789")] == '\0';
}
