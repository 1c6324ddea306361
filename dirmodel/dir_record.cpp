#include "dirmodel/dir_record.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>

DirRecord gDir;

namespace {
constexpr int32_t kGrowth = 128;  // slots
constexpr size_t kSlot = sizeof(void*);

[[noreturn]] void out_of_memory() {
  std::fputs("ZAN error: out of memory\n", stderr);
  std::exit(1);
}

void grow_entries(DirRecord* dir) {
  const int32_t capacity = dir->capacity + kGrowth;
  void* grown = std::realloc(dir->entries, kSlot * static_cast<size_t>(capacity));
  if (!grown) out_of_memory();
  dir->entries = static_cast<DirEntry**>(grown);
  std::memset(dir->entries + dir->capacity, 0, kSlot * kGrowth);
  dir->capacity = capacity;
}

void triplet(mode_t mode, char* out, int shift, mode_t special, char with_execute, char without) {
  out[0] = mode & (4u << shift) ? 'r' : '-';
  out[1] = mode & (2u << shift) ? 'w' : '-';
  const bool execute = mode & (1u << shift);
  if (mode & special)
    out[2] = execute ? with_execute : without;
  else
    out[2] = execute ? 'x' : '-';
}

char type_code(mode_t mode) {
  switch (mode & S_IFMT) {
    case S_IFDIR:
      return 'd';
    case S_IFLNK:
      return 'l';
    case S_IFCHR:
      return 'c';
    case S_IFBLK:
      return 'b';
    case S_IFIFO:
      return 'p';
    case S_IFSOCK:
      return 's';
    default:
      return '-';
  }
}
}  // namespace

void dir_get_permissions(mode_t mode, char* out, int part) {
  switch (part) {
    case 0:
      *out = type_code(mode);
      break;
    case 1:
      triplet(mode, out, 6, S_ISUID, 's', 'S');
      break;
    case 2:
      triplet(mode, out, 3, S_ISGID, 's', 'S');
      break;
    case 3:
      triplet(mode, out, 0, S_ISVTX, 't', 't');
      break;
    case 4:
      *out = mode & S_ISVTX ? 's' : '-';
      break;
    default:
      break;
  }
}

void dir_recycle_all(DirRecord* dir) {
  dir->spare += dir->count;
  dir->count = 0;
  dir->total_size = 0;
  dir->dir_count = dir->sel_count = dir->sel_dir_count = 0;
  dir->current = -1;
}

DirEntry* dir_take_entry(DirRecord* dir) {
  if (dir->spare > 0) {
    DirEntry*& slot = dir->entries[dir->count + --dir->spare];
    DirEntry* entry = slot;
    slot = nullptr;
    entry->name[0] = '\0';
    entry->flags = 0;
    entry->item = nullptr;
    return entry;
  }
  void* fresh = std::calloc(1, sizeof(DirEntry));
  if (!fresh) out_of_memory();
  return static_cast<DirEntry*>(fresh);
}

void dir_store_entry(DirRecord* dir, DirEntry* entry) {
  if (dir->capacity <= dir->count + dir->spare) grow_entries(dir);
  // The spare one that stood here moves behind its fellows.
  dir->entries[dir->count + dir->spare] = dir->entries[dir->count];
  dir->entries[dir->count] = entry;
  ++dir->count;
  if (dir_entry_is_directory(*entry)) ++dir->dir_count;
  dir->total_size += static_cast<uint64_t>(entry->st.st_size);
}

void dir_free_entry(DirEntry* entry) {
  if (!entry) return;
  std::free(entry->info);
  std::free(entry);
}

void dir_free(DirRecord* dir) {
  dir_recycle_all(dir);
  for (int32_t i = 0; i < dir->spare; ++i) dir_free_entry(dir->entries[i]);
  std::free(dir->entries);
  dir->entries = nullptr;
  dir->spare = dir->capacity = 0;
}

void dir_set_info(DirEntry* entry, const char* text) {
  std::free(entry->info);
  entry->info = strdup(text);  // without memory there is no text
}
