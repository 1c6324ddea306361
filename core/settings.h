// The settings record: what "config.003" holds, byte for byte, in the machine's own byte order.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

struct Settings {
  int32_t word0;      // no reader; 1 in a default record
  int32_t cdirs;      // "Folders First": non-zero sorts directories before files
  char editor[2048];  // command templates
  char print[1024];
  char terminal[1024];  // a program's name, not split into words
  char tree_font[255];
  char list_font[255];
  char pad1[2];
  int32_t column_width[6];  // file list columns 1..6, pixels
  int32_t hotlist_width;    // pixels, as are the next two
  int32_t window_height;
  int32_t window_width;
  int32_t type_ahead_ms;
  uint32_t flags;  // SET_ bits
  int32_t save_on_exit;
  uint8_t hotlist_shown;
  char encoding[1024];  // character set of names that are not UTF-8; empty: none
  char encoding_end;    // always 0
  char pad2[2];
};
static_assert(sizeof(Settings) == 5692);
static_assert(offsetof(Settings, tree_font) == 4104 && offsetof(Settings, column_width) == 4616);
static_assert(offsetof(Settings, flags) == 4656 && offsetof(Settings, encoding) == 4665);

enum : uint32_t {
  SET_HIDE_DOT = 0x1,
  SET_OVERWRITE = 0x2,
  SET_RM1_PROMPT = 0x4,
  SET_RM1_PROMPT_NOWR = 0x8,
  SET_RM1_NO_PROMPT = 0x10,
  SET_SYM_PROMPT = 0x20,
  SET_SYM_SYMLINKS = 0x40,
  SET_SYM_FILES = 0x80,
  SET_RM_PROMPT = 0x100,
  SET_RM_NO_PROMPT = 0x200,
  SET_RM_I_PROMPT = 0x400,
  SET_RM_I_PROMPT_NOWR = 0x800,
  SET_RM_I_NO_PROMPT = 0x1000,
  SET_ENC_UTF8_ALTERNATE = 0x2000,
  SET_ENC_ALTERNATE = 0x4000,
  SET_ENC_MASK = 0x6000,
  SET_OWNER_ASSUME_IGNORE = 0x8000,
  SET_FORMAT_MARK = 0xff000000u,
};

// Fills in the default record: every field of the table, all other bytes 0.
void settings_defaults(Settings* record);

// Loads dir/name (dir may be null: the open then fails) or the defaults, and migrates the flag word. Sets
// gOptions' dot bits. Returns true when the record's character set is to be applied (false only where the
// flag word was exactly 0).
bool settings_load(Settings* record, const char* dir, const char* name);

// Takes over from dir/name what another window has stored there since settings_load, but for the fields that
// this one has changed itself. Without a readable record there the given one stays as it is.
void settings_take_over(Settings* record, const char* dir, const char* name);

// Sets the format mark and writes the record to dir/name, over a temporary file beside it. 0, or -1.
int init_save_config(Settings* record, const char* dir, const char* name);
