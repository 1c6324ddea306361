// Creating an empty file or a folder in the directory shown.
#pragma once

#include <cstdint>
#include <string>

extern int32_t gNew_op;  // the kind the dialog was opened for: 1 a file, anything else a folder

struct NewItemResult {
  std::string message;   // to show; empty: none
  std::string name;      // as on disk; set when the list is to be read again and this entry shown
  bool created = false;  // false with an empty message: nothing was typed
};

// Creates typed below dir (on-disk form): a file (kind 1) or a folder. Never touches what stands already.
NewItemResult new_item_create(int32_t kind, const std::string& dir, const std::string& typed);
