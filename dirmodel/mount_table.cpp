#include "dirmodel/mount_table.h"

#include <cstdio>
#include <filesystem>
#include <fstream>

namespace {
// A blank, tab, newline or backslash stands in the table as a backslash and three octal digits.
std::string without_escapes(std::string_view text) {
  std::string plain;
  for (size_t i = 0; i < text.size(); ++i) {
    const auto octal = [&](size_t at) { return text[at] >= '0' && text[at] <= '7'; };
    if (text[i] == '\\' && i + 3 < text.size() && octal(i + 1) && octal(i + 2) && octal(i + 3)) {
      plain += static_cast<char>((text[i + 1] - '0') * 64 + (text[i + 2] - '0') * 8 + text[i + 3] - '0');
      i += 3;
    } else {
      plain += text[i];
    }
  }
  return plain;
}

bool lies_below(std::string_view path, std::string_view mount_point) {
  if (mount_point == "/") return true;
  if (path.substr(0, mount_point.size()) != mount_point) return false;
  return path.size() == mount_point.size() || path[mount_point.size()] == '/';
}
}  // namespace

std::vector<std::string> mount_table_read() {
  std::vector<std::string> mount_points;
  std::ifstream table("/proc/self/mountinfo");
  for (std::string line; std::getline(table, line);) {
    size_t begin = 0;
    for (int field = 0; field < 4 && begin != std::string::npos; ++field) {
      begin = line.find(' ', begin);
      if (begin != std::string::npos) ++begin;
    }
    if (begin == std::string::npos) continue;
    mount_points.push_back(
        without_escapes(std::string_view(line).substr(begin, line.find(' ', begin) - begin)));
  }
  return mount_points;
}

std::string mount_point_of(std::string_view path, const std::vector<std::string>& mount_points) {
  const std::string plain = std::filesystem::path(path).lexically_normal().string();
  std::string found = "/";
  for (const std::string& mount_point : mount_points)
    if (mount_point.size() >= found.size() && lies_below(plain, mount_point)) found = mount_point;
  return found;
}
