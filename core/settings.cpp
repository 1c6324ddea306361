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

// The bits of one preference belong together.
constexpr uint32_t kFlagGroups[] = {
    SET_HIDE_DOT,
    SET_OVERWRITE,
    SET_RM1_PROMPT | SET_RM1_PROMPT_NOWR | SET_RM1_NO_PROMPT,
    SET_SYM_PROMPT | SET_SYM_SYMLINKS | SET_SYM_FILES,
    SET_RM_PROMPT | SET_RM_NO_PROMPT,
    SET_RM_I_PROMPT | SET_RM_I_PROMPT_NOWR | SET_RM_I_NO_PROMPT,
    SET_ENC_MASK,
    SET_OWNER_ASSUME_IGNORE,
};

Settings sLoaded;  // as it was read

template <class T>
void take_over(T& mine, const T& before, const T& theirs) {
  if (std::memcmp(&mine, &before, sizeof(T)) == 0) std::memcpy(&mine, &theirs, sizeof(T));
}

bool settings_read(Settings* record, const char* dir, const char* name) {
  std::string bytes;
  if (!load_file(dir, name, sizeof *record, &bytes) || bytes.size() != sizeof *record) return false;
  std::memcpy(record, bytes.data(), sizeof *record);
  end_all_texts(record);
  return true;
}

// Brings the flag word into today's form. The result is settings_load's.
bool settings_migrate(Settings* record) {
  if ((record->flags & SET_FORMAT_MARK) == SET_FORMAT_MARK) return true;
  const bool none = record->flags == 0;
  record->flags = none ? kDefaultFlags : kDefaultFlags | SET_HIDE_DOT;
  return !none;
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
  if (!settings_read(record, dir, name)) settings_defaults(record);
  const bool apply_charset = settings_migrate(record);
  if (record->flags & SET_HIDE_DOT) gOptions &= ~OPT_DOT_PAIR;
  sLoaded = *record;
  return apply_charset;
}

void settings_take_over(Settings* record, const char* dir, const char* name) {
  Settings theirs;
  if (!settings_read(&theirs, dir, name)) return;
  settings_migrate(&theirs);
  const auto each = [&](auto... field) { (take_over(record->*field, sLoaded.*field, theirs.*field), ...); };
  each(&Settings::cdirs, &Settings::editor, &Settings::print, &Settings::terminal, &Settings::tree_font,
       &Settings::list_font, &Settings::hotlist_width, &Settings::window_height, &Settings::window_width,
       &Settings::type_ahead_ms, &Settings::hotlist_shown, &Settings::encoding);
  for (int i = 0; i < 6; ++i)
    take_over(record->column_width[i], sLoaded.column_width[i], theirs.column_width[i]);
  for (const uint32_t bits : kFlagGroups)
    if (((record->flags ^ sLoaded.flags) & bits) == 0)
      record->flags = (record->flags & ~bits) | (theirs.flags & bits);
}

int init_save_config(Settings* record, const char* dir, const char* name) {
  record->flags |= SET_FORMAT_MARK;
  return save_file(dir, name, std::string_view(reinterpret_cast<const char*>(record), sizeof *record));
}
