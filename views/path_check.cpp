#include "views/path_check.h"

#include <dirent.h>

#include <filesystem>
#include <memory>

#include "dirmodel/fs_probe.h"
#include "dirmodel/text.h"
#include "views/fname.h"

static bool directory_opens(const std::string& path) {
  auto opened = std::make_shared<bool>(false);
  const bool ended = fs_bounded_look(path, [path, opened] {
    DIR* stream = opendir(path.c_str());
    *opened = stream != nullptr;
    if (stream) closedir(stream);
  });
  return ended && *opened;
}

std::string path_seen_from(const std::string& current, const std::string& path) {
  if (path.empty() || path[0] == '/' || current.empty()) return path;
  std::string whole = (std::filesystem::path(current) / path).lexically_normal().native();
  es_strip_pathname(&whole);
  return whole;
}

std::string x_check_path(const char* text, const std::string& current, std::string* message) {
  message->clear();
  std::string path = text ? text : "";
  es_strip_pathname(&path);
  const std::string shown = fname_decode(path.c_str());
  path = path_seen_from(current, path);
  if (path == current) return {};
  const int links = fs_path_is_directory(path.c_str());
  if (links < 0)
    *message = "Directory '" + shown + "', not found";
  else if (links == 0)
    *message = "Path '" + shown + "' not found";
  else if (!directory_opens(path))
    *message = "Cannot access directory '" + shown + "'";
  return message->empty() ? path : std::string();
}
