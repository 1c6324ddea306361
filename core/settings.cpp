#include "core/settings.h"

#include <cstring>
#include <string_view>

#include "core/save_file.h"
#include "core/state.h"

namespace {
constexpr uint32_t kDefaultFlags = SET_RM1_PROMPT | SET_SYM_PROMPT | SET_RM_PROMPT | SET_RM_I_PROMPT_NOWR;
static_assert(kDefaultFlags == 0x924);

template <size_t N>
void set_text(char (&field)[N], const char* text) {
  std::strncpy(field, text, N - 1);
}

template <size_t N>
void end_text(char (&field)[N]) {
  field[N - 1] = '\0';
}

// A damaged file may hold texts without an end.
void end_all_texts(Settings* record) {
  end_text(record->editor);
  end_text(record->print);
  end_text(record->terminal);
  end_text(record->tree_font);
  end_text(record->list_font);
  record->encoding_end = '\0';
}
}  // namespace

void settings_defaults(Settings* record) {
  std::memset(record, 0, sizeof *record);
  record->word0 = 1;
  set_text(record->editor, "kored @");
  set_text(record->print, "lpr @");
  set_text(record->terminal, "conwin");
  set_text(record->tree_font, "TextFont08");
  set_text(record->list_font, "TextFont08");
  const int32_t widths[6] = {125, 50, 105, 53, 53, 75};
  std::memcpy(record->column_width, widths, sizeof widths);
  record->hotlist_width = 190;
  record->window_height = 410;
  record->window_width = 600;
  record->type_ahead_ms = 1500;
  record->flags = kDefaultFlags;
  record->save_on_exit = 1;
  record->hotlist_shown = 1;
}

bool settings_load(Settings* record, const char* dir, const char* name) {
  std::string bytes;
  if (load_file(dir, name, sizeof *record, &bytes) && bytes.size() == sizeof *record)
    std::memcpy(record, bytes.data(), sizeof *record);
  else
    settings_defaults(record);
  end_all_texts(record);

  if ((record->flags & SET_FORMAT_MARK) == SET_FORMAT_MARK) {
    if (record->flags & SET_HIDE_DOT) gOptions &= ~OPT_DOT_PAIR;
    return true;
  }
  if (record->flags == 0) {
    record->flags = kDefaultFlags;
    return false;
  }
  record->flags = kDefaultFlags | SET_HIDE_DOT;
  gOptions &= ~OPT_DOT_PAIR;
  return true;
}

int init_save_config(Settings* record, const char* dir, const char* name) {
  record->flags |= SET_FORMAT_MARK;
  return save_file(dir, name, std::string_view(reinterpret_cast<const char*>(record), sizeof *record));
}
