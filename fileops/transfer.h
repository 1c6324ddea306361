// The transfer list: the names of one directory that are copied, moved, deleted, cut or dragged together.
#pragma once

#include <string>
#include <vector>

struct TransferList {
  std::string dir;                 // source directory
  std::vector<std::string> names;  // as on disk; an empty name is one that was dealt with
  bool one_dir_packed = false;     // exactly one name, and it is a directory
};

// The selected entries of gDir in list order.
TransferList fl_pack_transf();
