// A temporary directory that is the one shown: it is the working directory, and gDir has its entries.
#pragma once

#include <algorithm>

#include "dirmodel/dir_record.h"
#include "tests/support/temp_dir.h"
#include "views/find.h"

// An entry that only the record knows of.
inline DirEntry* record_add(DirRecord* record, const std::string& name, int64_t size = 0,
                            mode_t mode = S_IFREG) {
  DirEntry* entry = dir_take_entry(record);
  snprintf(entry->name, sizeof entry->name, "%s", name.c_str());
  entry->st.st_size = size;
  entry->st.st_mode = mode;
  dir_store_entry(record, entry);
  return entry;
}

struct ShownDir : TempDir {
  ShownDir() {
    gDir = DirRecord();
    gDir.path = path();
    gDir.filespec = "*";
    (void)!chdir(path().c_str());
  }
  ~ShownDir() {
    dir_free(&gDir);
    gDir = DirRecord();
  }
  // Adds an entry in listing order: a name that ends in '/' makes a directory, any other an empty file.
  void add(const std::string& name) {
    const bool is_dir = name.ends_with('/');
    is_dir ? (void)mkdir((*this / name).c_str(), 0755) : write_file(*this / name, "");
    record_add(&gDir, name.substr(0, name.size() - is_dir), 0, is_dir ? S_IFDIR : S_IFREG);
  }
  // Selects exactly these.
  void select(const std::vector<std::string>& names) {
    gDir.sel_count = gDir.sel_dir_count = 0;
    for (int32_t i = 0; i < gDir.count; ++i) {
      DirEntry* entry = gDir.entries[i];
      const bool selected = std::find(names.begin(), names.end(), entry->name) != names.end();
      entry->flags = selected ? ENTRY_SELECTED : 0;
      gDir.sel_count += selected;
      gDir.sel_dir_count += selected && dir_entry_is_directory(*entry);
    }
  }
  void make_current(const std::string& name) { gDir.current = find_name(name.c_str()); }
};
