#include "fileops/uri_list.h"

#include <strings.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <unordered_map>
#include <unordered_set>

namespace {
constexpr std::string_view kPlainInUri =
    "abcdefghijklmnopqrstuvwxyzABCDEFGHIJKLMNOPQRSTUVWXYZ0123456789-._~!$&'()*+,;=:@/";

constexpr std::array<bool, 256> make_plain_table() {
  std::array<bool, 256> table{};
  for (char c : kPlainInUri) table[static_cast<uint8_t>(c)] = true;
  return table;
}
constexpr std::array<bool, 256> kPlain = make_plain_table();

void append_escaped(std::string* out, std::string_view bytes) {
  static constexpr char kHex[] = "0123456789ABCDEF";
  for (char c : bytes) {
    const auto byte = static_cast<uint8_t>(c);
    if (kPlain[byte]) {
      out->push_back(c);
    } else {
      out->push_back('%');
      out->push_back(kHex[byte >> 4]);
      out->push_back(kHex[byte & 15]);
    }
  }
}

std::string uri_dir_path(const TransferList& list) {
  return list.dir.ends_with('/') ? list.dir : list.dir + "/";
}

// "file://" and the escaped directory: what all URIs of a list begin with.
std::string uri_prefix(const TransferList& list) {
  std::string prefix = "file://";
  append_escaped(&prefix, uri_dir_path(list));
  return prefix;
}

int uri_hex_digit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  return c >= 'A' && c <= 'F' ? c - 'A' + 10 : -1;
}

// False for a broken escape or one that stands for NUL.
bool uri_unescape(std::string_view in, std::string* out) {
  out->clear();
  for (;;) {
    const size_t escape = in.find('%');
    out->append(in.substr(0, escape));
    if (escape == std::string_view::npos) return true;
    in.remove_prefix(escape);
    if (in.size() < 3) return false;
    const int high = uri_hex_digit(in[1]), low = uri_hex_digit(in[2]);
    if (high < 0 || low < 0 || (high == 0 && low == 0)) return false;
    out->push_back(static_cast<char>(high * 16 + low));
    in.remove_prefix(3);
  }
}

bool starts_with_nocase(std::string_view text, std::string_view prefix) {
  return text.size() >= prefix.size() && strncasecmp(text.data(), prefix.data(), prefix.size()) == 0;
}

bool names_this_machine(std::string_view host) {
  if (host.empty() || (host.size() == 9 && starts_with_nocase(host, "localhost"))) return true;
  char own[256] = "";
  gethostname(own, sizeof own - 1);
  return host.size() == std::strlen(own) && starts_with_nocase(host, own);
}

// The path of a local file's URI, still escaped; empty for any other text.
std::string_view uri_local_path(std::string_view uri) {
  if (!starts_with_nocase(uri, "file:/")) return {};
  uri.remove_prefix(5);
  if (!uri.starts_with("//")) return uri;  // file:/p
  uri.remove_prefix(2);
  const std::string_view host = uri.substr(0, uri.find('/'));
  if (host.size() == uri.size() || !names_this_machine(host)) return {};
  uri.remove_prefix(host.size());
  return uri;
}

// Splits a path into its directory and last component, without doubled or trailing slashes. False for the
// root itself and for a path through "." or "..", which would name the file only by what the links on the way
// say.
bool uri_split_path(std::string_view path, std::string* dir, std::string* name) {
  dir->clear();
  name->clear();
  for (size_t at = 0; at < path.size();) {
    const size_t end = std::min(path.find('/', at), path.size());
    const std::string_view part = path.substr(at, end - at);
    at = end + 1;
    if (part.empty()) continue;
    if (part == "." || part == "..") return false;
    if (!name->empty()) dir->append("/").append(*name);
    name->assign(part);
  }
  if (dir->empty()) dir->assign("/");
  return !name->empty();
}

bool is_line_end(char c) {
  return c == '\n' || c == '\r' || c == '\0';
}

// Takes the next line off *rest; blank ones are passed over. Some programs end lines with CR, or the whole
// with a NUL.
std::string_view uri_next_line(std::string_view* rest) {
  const char* start = rest->data();
  const char* const limit = start + rest->size();
  while (start < limit && is_line_end(*start)) ++start;
  const char* end = start;
  while (end < limit && !is_line_end(*end)) ++end;
  *rest = {end, static_cast<size_t>(limit - end)};
  return {start, static_cast<size_t>(end - start)};
}

struct SortedByDirectory {
  struct Share {
    size_t list;
    std::unordered_set<std::string> seen;  // a file named twice is one file
  };
  std::vector<TransferList> lists;
  std::unordered_map<std::string, Share> shares;

  void add(const std::string& dir, const std::string& name) {
    auto [found, added] = shares.try_emplace(dir, Share{lists.size(), {}});
    if (added) {
      lists.emplace_back();
      lists.back().dir = dir;
    }
    if (found->second.seen.insert(name).second) lists[found->second.list].names.push_back(name);
  }
};
}  // namespace

std::string uri_list_encode(const TransferList& list) {
  const std::string prefix = uri_prefix(list);
  std::string out;
  for (const std::string& name : list.names) {
    if (name.empty()) continue;
    out.append(prefix);
    append_escaped(&out, name);
    out.append("\r\n");
  }
  return out;
}

std::vector<TransferList> uri_list_decode(std::string_view bytes) {
  SortedByDirectory sorted;
  std::string path, dir, name;
  for (std::string_view line = uri_next_line(&bytes); !line.empty(); line = uri_next_line(&bytes)) {
    if (line.starts_with('#')) continue;
    const std::string_view escaped = uri_local_path(line);
    if (escaped.empty() || !uri_unescape(escaped, &path) || !uri_split_path(path, &dir, &name)) continue;
    sorted.add(dir, name);
  }
  return std::move(sorted.lists);
}

bool uri_names_root(std::string_view uri) {
  const std::string_view path = uri_local_path(uri);
  return !path.empty() && path.find_first_not_of('/') == std::string_view::npos;
}

std::string gnome_files_encode(const TransferList& list, bool cut) {
  const std::string prefix = uri_prefix(list);
  std::string out = cut ? "cut" : "copy";
  for (const std::string& name : list.names) {
    if (name.empty()) continue;
    out.append("\n").append(prefix);
    append_escaped(&out, name);
  }
  return out;
}

bool gnome_files_decode(std::string_view bytes, bool* cut, std::vector<TransferList>* lists) {
  const std::string_view word = uri_next_line(&bytes);
  if (word != "cut" && word != "copy") return false;
  std::vector<TransferList> read = uri_list_decode(bytes);
  if (read.empty()) return false;
  *cut = word == "cut";
  *lists = std::move(read);
  return true;
}

std::string plain_paths_encode(const TransferList& list) {
  const std::string prefix = uri_dir_path(list);
  std::string out;
  for (const std::string& name : list.names) {
    if (name.empty()) continue;
    if (!out.empty()) out.append("\n");
    out.append(prefix).append(name);
  }
  return out;
}

bool kde_cut_decode(std::string_view bytes) {
  return bytes.starts_with('1');
}
