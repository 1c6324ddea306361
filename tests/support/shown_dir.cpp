#include "tests/support/shown_dir.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <cstring>
#include <filesystem>

ShownDir::ShownDir() {
  gDir = DirRecord();
  gDir.path = dir_.path();
  gDir.filespec = "*";
  (void)!chdir(dir_.path().c_str());
}

ShownDir::~ShownDir() {
  gDir = DirRecord();
  for (DirEntry* entry : entries_) delete entry;
}

void ShownDir::add(const std::string& name, bool selected, bool executable) {
  ASSERT_EQ(std::filesystem::current_path().string(), dir_.path());
  const bool is_dir = name.ends_with('/');
  const std::string plain = name.substr(0, name.size() - is_dir);
  if (is_dir)
    ASSERT_EQ(mkdir(plain.c_str(), 0755), 0) << name;
  else
    write_file(plain, "", executable ? 0755 : 0644);
  auto* entry = new DirEntry();
  ASSERT_LT(plain.size(), sizeof entry->name);
  std::memcpy(entry->name, plain.c_str(), plain.size() + 1);
  ASSERT_EQ(lstat64(plain.c_str(), &entry->st), 0) << name;
  entry->flags = selected ? ENTRY_SELECTED : 0;
  entries_.push_back(entry);
  count();
}

void ShownDir::select(const std::vector<std::string>& names) {
  for (DirEntry* entry : entries_)
    entry->flags = std::find(names.begin(), names.end(), entry->name) != names.end() ? ENTRY_SELECTED : 0;
  count();
}

void ShownDir::make_current(const std::string& name) {
  for (size_t i = 0; i < entries_.size(); ++i)
    if (name == entries_[i]->name) gDir.current = static_cast<int32_t>(i);
}

void ShownDir::count() {
  gDir.entries = entries_.data();
  gDir.count = gDir.capacity = static_cast<int32_t>(entries_.size());
  gDir.dir_count = gDir.sel_count = gDir.sel_dir_count = 0;
  for (const DirEntry* entry : entries_) {
    const bool is_dir = dir_entry_is_directory(*entry), selected = entry->flags & ENTRY_SELECTED;
    gDir.dir_count += is_dir;
    gDir.sel_count += selected;
    gDir.sel_dir_count += is_dir && selected;
  }
}
