#include "fileops/long_filename.h"

#include "platform/desktop.h"
#include "views/fname.h"

static constexpr size_t kNameMax = 47;

// The first bytes of a name, cut before a character that does not fit whole.
static std::string cut_name(const std::string& name) {
  if (name.size() <= kNameMax) return name;
  size_t end = kNameMax;
  while (end > kNameMax - 4 && (name[end] & 0xC0) == 0x80) --end;
  if ((name[end] & 0xC0) == 0x80) end = kNameMax;  // not UTF-8
  return name.substr(0, end);
}

static std::string base_name(const std::string& path) {
  return path.substr(path.rfind('/') + 1);
}

int FilenameTooLong(const std::string& source, std::string* dest) {
  const std::string proposal = cut_name(base_name(*dest));
  const std::string old_shown = fname_decode(base_name(source).c_str());
  const std::string shown = fname_decode(proposal.c_str());
  std::string answer = shown;
  if (!desk_long_name(old_shown, &answer)) return 0;
  if (answer.empty() || answer == shown) {
    *dest = proposal;
    return 1;
  }
  const char* encoded = fname_encode(answer.c_str());
  *dest = cut_name(encoded ? encoded : answer);
  return 1;
}
