#include "tests/support/shown_dir.h"

#include <algorithm>

DirEntry* record_add(DirRecord* record, const std::string& name, int64_t size, mode_t mode) {
  DirEntry* entry = dir_take_entry(record);
  snprintf(entry->name, sizeof entry->name, "%s", name.c_str());
  entry->st.st_size = size;
  entry->st.st_mode = mode;
  dir_store_entry(record, entry);
  return entry;
}

ShownDir::ShownDir() {
  gDir = DirRecord();
  gDir.path = path();
  gDir.filespec = "*";
  (void)!chdir(path().c_str());
}

ShownDir::~ShownDir() {
  dir_free(&gDir);
  gDir = DirRecord();
}

void ShownDir::add(const std::string& name) {
  const bool is_dir = name.ends_with('/');
  if (is_dir)
    ASSERT_EQ(mkdir((*this / name).c_str(), 0755), 0) << name;
  else
    write_file(*this / name, "");
  record_add(&gDir, name.substr(0, name.size() - is_dir), 0, is_dir ? S_IFDIR : S_IFREG);
}

void ShownDir::select(const std::vector<std::string>& names) {
  gDir.sel_count = gDir.sel_dir_count = 0;
  for (int32_t i = 0; i < gDir.count; ++i) {
    DirEntry* entry = gDir.entries[i];
    const bool selected = std::find(names.begin(), names.end(), entry->name) != names.end();
    entry->flags = selected ? ENTRY_SELECTED : 0;
    gDir.sel_count += selected;
    gDir.sel_dir_count += selected && dir_entry_is_directory(*entry);
  }
}

void ShownDir::make_current(const std::string& name) {
  for (int32_t i = 0; i < gDir.count; ++i)
    if (name == gDir.entries[i]->name) gDir.current = i;
}
