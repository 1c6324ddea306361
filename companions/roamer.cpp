// Shows a page in the user's web browser.
#include <sys/stat.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <sstream>

#include "companions/handover_part.h"

namespace {
const char kHelp[] =
    "Usage: roamer [-u] ADDRESS\n"
    "Shows a page in $BROWSER, the desktop's web browser, or the first well-known one found.\n"
    "The path behind \"file://\" is a plain path, taken as it stands.\n";

bool exists(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0;
}

std::string one_blank_each(const std::string& text) {
  std::istringstream stream(text);
  std::string result;
  for (std::string word; stream >> word;) result += (result.empty() ? "" : " ") + word;
  return result;
}

// A shell that wrote "file://$PWD/name" split it where the directory's name has blanks: put together again,
// by the current directory.
std::string whole_path(std::string path) {
  path = companion_file(path);
  if (exists(path)) return path;
  const std::string here = companion_file_path("");
  const std::string split = one_blank_each(here);
  if (!path.starts_with(split)) return path;
  const std::string other = companion_file(here + path.substr(split.size()));
  return exists(other) ? other : path;
}

std::string percent_encoded(const std::string& path) {
  std::string text;
  char code[4];
  for (const unsigned char c : path) {
    if (isalnum(c) || std::strchr("/-._~", c)) {
      text += static_cast<char>(c);
    } else {
      std::snprintf(code, sizeof code, "%%%02X", c);
      text += code;
    }
  }
  return text;
}

std::string page_address(const std::string& text) {
  const std::string scheme = "file://";
  const bool is_file = text.starts_with(scheme);
  if (!is_file && text.find("://") != std::string::npos) return text;
  const std::string path = is_file ? whole_path(text.substr(scheme.size())) : companion_file_path(text);
  return is_file && !exists(path) ? text : scheme + percent_encoded(path);
}
}  // namespace

int main(int argc, char** argv) {
  companion_start(argc, argv, kHelp);
  const int first = argc > 2 && std::strcmp(argv[1], "-u") == 0 ? 2 : 1;
  if (argc <= first) return std::fputs(kHelp, stderr), 2;
  std::string text = argv[first];
  for (int i = first + 1; i < argc; ++i) text += std::string(" ") + argv[i];
  const std::string address = page_address(text);
  const char* own = getenv("BROWSER");
  if (own && companion_base_name(own) != "roamer" && !companion_find(own).empty()) {
    companion_detach();
    companion_exec({own, address});
  }
  handover_address(address,
                   {"x-www-browser", "firefox", "firefox-esr", "chromium", "google-chrome", "brave-browser",
                    "falkon", "konqueror", "epiphany", "midori", "dillo", "netsurf"},
                   "web browser");
}
