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
  take_over(record->cdirs, sLoaded.cdirs, theirs.cdirs);
  take_over(record->editor, sLoaded.editor, theirs.editor);
  take_over(record->print, sLoaded.print, theirs.print);
  take_over(record->terminal, sLoaded.terminal, theirs.terminal);
  take_over(record->tree_font, sLoaded.tree_font, theirs.tree_font);
  take_over(record->list_font, sLoaded.list_font, theirs.list_font);
  for (int i = 0; i < 6; ++i)
    take_over(record->column_width[i], sLoaded.column_width[i], theirs.column_width[i]);
  take_over(record->hotlist_width, sLoaded.hotlist_width, theirs.hotlist_width);
  take_over(record->window_height, sLoaded.window_height, theirs.window_height);
  take_over(record->window_width, sLoaded.window_width, theirs.window_width);
  take_over(record->type_ahead_ms, sLoaded.type_ahead_ms, theirs.type_ahead_ms);
  take_over(record->hotlist_shown, sLoaded.hotlist_shown, theirs.hotlist_shown);
  take_over(record->encoding, sLoaded.encoding, theirs.encoding);
  for (const uint32_t bits : kFlagGroups)
    if (((record->flags ^ sLoaded.flags) & bits) == 0)
      record->flags = (record->flags & ~bits) | (theirs.flags & bits);
}

int init_save_config(Settings* record, const char* dir, const char* name) {
  record->flags |= SET_FORMAT_MARK;
  return save_file(dir, name, std::string_view(reinterpret_cast<const char*>(record), sizeof *record));
}
