// Handing files over to the desktop's handler for their type, or to a well-known program.
#pragma once

#include "companions/common_part.h"

// Opens the files (names as the caller gave them) detached from the terminal: with the desktop's handler, or
// with the first of the programs that is there. what says what is missing when nothing is: "image viewer".
[[noreturn]] void handover_files(const Words& files, const std::vector<const char*>& programs,
                                 const std::string& what);
// The same for one address.
[[noreturn]] void handover_address(const std::string& address, const std::vector<const char*>& programs,
                                   const std::string& what);
// All that a companion does which hands over the files it was started with. Without any: its help, and 2.
int handover_main(int argc, char** argv, const char* help, const std::vector<const char*>& programs,
                  const std::string& what);
