// The byte form in which a transfer list travels between instances of the program.
//
//   "ZANt"  version (1)  flags  count  dir  name...
//
// Numbers are 32-bit little-endian; dir and each name are a length and that many bytes, so any byte of a name
// survives. Bit 0 of flags: one directory. An empty name is an item that was dealt with.
#pragma once

#include <string>
#include <string_view>

#include "fileops/transfer.h"

std::string transfer_pack(const TransferList& list);

// False, with *list as it was, for anything that transfer_pack would not write: another version, a length
// that does not fit, bytes left over, a relative directory, a name that is not a single path component.
bool transfer_unpack(std::string_view bytes, TransferList* list);
