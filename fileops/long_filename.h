// A name that the destination's file system finds too long.
#pragma once

#include <string>

// Asks for a shorter name. 0: the file is skipped. Otherwise the chosen name (at most 47 bytes) has replaced
// the whole destination path: the file is then made in the working directory.
int FilenameTooLong(const std::string& source, std::string* dest);
