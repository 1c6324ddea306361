#include "views/find.h"

#include <cstring>

#include "dirmodel/dir_record.h"
#include "dirmodel/text.h"

static bool find_matches(const DirEntry& entry, const char* text, size_t length, unsigned flags) {
  if ((flags & FIND_NO_DIRS) && dir_entry_is_directory(entry)) return false;
  if ((flags & FIND_EXACT) && std::strcmp(entry.name, text) == 0) return true;
  if ((flags & FIND_PREFIX) && std::strncmp(entry.name, text, length) == 0) return true;
  return es_strcmp(entry.name, text) == 0;
}

int x_find(const char* text, int, unsigned flags, const std::function<void(int)>& callback) {
  if (!text || !*text) return -2;
  if (std::strcmp(text, "..") == 0) return -1;
  const size_t length = std::strlen(text);
  const int step = flags & FIND_BACKWARD ? -1 : 1;
  int found = -2;
  for (int i = 0; i >= 0 && i < gDir.count; i += step) {
    if (!find_matches(*gDir.entries[i], text, length, flags)) continue;
    found = i;
    if (!callback) break;
    callback(i);
  }
  return found;
}

int find_name(const char* name) {
  for (int i = 0; i < gDir.count; ++i)
    if (std::strcmp(gDir.entries[i]->name, name) == 0) return i;
  return -2;
}
