#include "fileops/transfer_codec.h"

#include <algorithm>
#include <cstdint>

namespace {
constexpr std::string_view kMagic = "ZANt";
constexpr uint32_t kVersion = 1;
constexpr uint32_t kOneDirectory = 1;

void put_number(std::string* out, size_t value) {
  for (int shift = 0; shift < 32; shift += 8) out->push_back(static_cast<char>(value >> shift & 0xff));
}

void put_text(std::string* out, const std::string& text) {
  put_number(out, text.size());
  out->append(text);
}

bool take_number(std::string_view* in, uint32_t* value) {
  if (in->size() < 4) return false;
  *value = 0;
  for (size_t i = 0; i < 4; ++i) *value |= static_cast<uint32_t>(static_cast<uint8_t>((*in)[i])) << (8 * i);
  in->remove_prefix(4);
  return true;
}

bool take_text(std::string_view* in, std::string* text) {
  uint32_t length = 0;
  if (!take_number(in, &length) || length > in->size()) return false;
  text->assign(in->substr(0, length));
  in->remove_prefix(length);
  return true;
}

bool is_component(const std::string& name) {
  return name != "." && name != ".." && name.find('/') == std::string::npos &&
         name.find('\0') == std::string::npos;
}
}  // namespace

std::string transfer_pack(const TransferList& list) {
  size_t size = kMagic.size() + 16 + list.dir.size();
  for (const std::string& name : list.names) size += 4 + name.size();
  std::string out;
  out.reserve(size);
  out.append(kMagic);
  put_number(&out, kVersion);
  put_number(&out, list.one_dir_packed ? kOneDirectory : 0);
  put_number(&out, list.names.size());
  put_text(&out, list.dir);
  for (const std::string& name : list.names) put_text(&out, name);
  return out;
}

bool transfer_unpack(std::string_view bytes, TransferList* list) {
  if (!bytes.starts_with(kMagic)) return false;
  bytes.remove_prefix(kMagic.size());
  uint32_t version = 0, flags = 0, count = 0;
  if (!take_number(&bytes, &version) || version != kVersion) return false;
  if (!take_number(&bytes, &flags) || flags > kOneDirectory || !take_number(&bytes, &count)) return false;
  TransferList read;
  if (!take_text(&bytes, &read.dir)) return false;
  if (!read.dir.starts_with('/') || read.dir.find('\0') != std::string::npos) return false;
  if (count > bytes.size() / 4) return false;  // each name takes at least its length: no huge reservation
  read.names.resize(count);
  for (std::string& name : read.names)
    if (!take_text(&bytes, &name) || !is_component(name)) return false;
  if (!bytes.empty()) return false;
  read.one_dir_packed = flags & kOneDirectory && count == 1;
  *list = std::move(read);
  return true;
}
