// The text form of an alert's buttons: "&Skip|@&Delete|#&Abort".
#pragma once

#include <string>
#include <string_view>
#include <vector>

struct ButtonList {
  std::vector<std::string> labels;  // '&' before the shortcut letter kept, '@' and '#' removed
  int default_button = 1;           // 1-based: the one marked '@', else the first
  int escape_button = 1;            // 1-based: the one marked '#', else the last
};

// Splits at every '|' or ','; empty labels are passed over. An empty list gives the one button "&Close".
ButtonList button_list_parse(std::string_view text);
