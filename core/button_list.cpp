#include "core/button_list.h"

#include <algorithm>

ButtonList button_list_parse(std::string_view text) {
  ButtonList list;
  bool escape_marked = false;
  while (!text.empty()) {
    size_t end = text.find_first_of("|,");
    std::string_view label = text.substr(0, end);
    text = end == std::string_view::npos ? std::string_view() : text.substr(end + 1);
    const size_t marks = std::min(label.find_first_not_of("@#"), label.size());
    const std::string_view marked = label.substr(0, marks);
    label.remove_prefix(marks);
    if (label.empty()) continue;
    list.labels.emplace_back(label);
    const int number = static_cast<int>(list.labels.size());
    if (marked.find('@') != std::string_view::npos) list.default_button = number;
    if (marked.find('#') != std::string_view::npos) list.escape_button = number, escape_marked = true;
  }
  if (list.labels.empty()) list.labels.emplace_back("&Close");
  if (!escape_marked) list.escape_button = static_cast<int>(list.labels.size());
  return list;
}
