// The one directory that the main window shows, and its entries.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>

enum : uint8_t {
  ENTRY_CURRENT = 1,  // the list's cursor
  ENTRY_SELECTED = 2,
  ENTRY_INFO = 4,     // info holds a text for the link column
  ENTRY_UNREAD = 16,  // the status could not be fully read
};

struct DirEntry {
  struct stat64 st;  // of a link: its target's, once that could be read; unreadable: 0, owner and group -1
  char name[256];    // raw bytes as the directory returned them
  uint8_t flags;
  void* item;  // for the view's own use
  char* info;  // owned: link target (at most 1023 bytes) or an error text
};

struct DirRecord {
  DirEntry** entries = nullptr;  // count live ones, then spare recycled ones
  std::string path;              // absolute; empty: unset
  std::string filespec;          // filter for names of non-directories; empty: all
  uint64_t total_size = 0;
  int32_t count = 0;
  int32_t dir_count = 0;  // entries whose st says directory
  int32_t sel_count = 0;  // entries with ENTRY_SELECTED
  int32_t sel_dir_count = 0;
  int32_t capacity = 0;
  int32_t current = -1;  // index of the current entry; -1 none (or the ".." row)
  int32_t spare = 0;
};

extern DirRecord gDir;

inline bool dir_entry_is_directory(const DirEntry& entry) {
  return S_ISDIR(entry.st.st_mode);
}

// Writes the characters of one part of the permission text: 1 owner, 2 group, 3 others (three each, no
// terminator), 4 sticky (one), 0 type code (one); others write nothing.
void dir_get_permissions(mode_t mode, char* out, int part);

// --- keeping the array: live entries, then spare ones ---------------------------------------------------

// Turns all live entries into spare ones and zeroes the sums.
void dir_recycle_all(DirRecord* dir);
// An entry to fill: the last spare one with name and flags cleared, or a new one. Without memory the program
// ends with status 1, as in dir_store_entry.
DirEntry* dir_take_entry(DirRecord* dir);
// Stores a filled entry behind the live ones and counts it.
void dir_store_entry(DirRecord* dir, DirEntry* entry);
void dir_free_entry(DirEntry* entry);
// Frees everything; the record is as new, its path and filter kept.
void dir_free(DirRecord* dir);
// Makes info a copy of text.
void dir_set_info(DirEntry* entry, const char* text);
