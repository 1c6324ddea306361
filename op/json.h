// Texts as JSON.
#pragma once

#include <string>
#include <string_view>

// text in quotes; bytes that are not UTF-8 become U+FFFD.
std::string json_quote(std::string_view text);
