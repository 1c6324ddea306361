#include "commands/typed_name.h"

#include <atomic>
#include <cerrno>
#include <cstdarg>
#include <cstdio>
#include <memory>

#include "core/state.h"
#include "dirmodel/fs_probe.h"
#include "views/fname.h"

bool typed_name_encode(const std::string& typed, std::string* on_disk, std::string* message) {
  if (const char* converted = fname_encode(typed.c_str())) {
    *on_disk = converted;
    return true;
  }
  *message = text_format("Unable to translate '%s' into '%s' encoding.", typed.c_str(), gConfig->encoding);
  return false;
}

std::string typed_name_below(const std::string& dir, const std::string& name) {
  if (!name.empty() && name[0] == '/') return name;
  return !dir.empty() && dir.back() == '/' ? dir + name : dir + "/" + name;
}

int bounded_errno(const std::string& path, std::function<int()> call) {
  const auto result = std::make_shared<std::atomic<int>>(ETIMEDOUT);
  if (!fs_bounded(path, [result, call = std::move(call)] { *result = call(); })) return ETIMEDOUT;
  return *result;
}

std::string text_format(const char* format, ...) {
  va_list arguments, again;
  va_start(arguments, format);
  va_copy(again, arguments);
  const int length = vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  std::string text(length > 0 ? length : 0, '\0');
  vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}
