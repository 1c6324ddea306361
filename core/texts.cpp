#include "core/texts.h"

#include <cstring>

namespace {
struct Text {
  const char *key, *text;
};

constexpr Text sTexts[] = {
    {"txt_003", "Create New File"}, {"txt_004", "Create New Folder"}, {"txt_005", "File Name"},
    {"txt_006", "Folder Name"},     {"txt_016", "Select Pattern"},    {"txt_017", "Unselect Pattern"},
};
}  // namespace

const char* text_get(const char* key) {
  for (const Text& entry : sTexts) {
    if (strcmp(entry.key, key) == 0) return entry.text;
  }
  return "";
}
