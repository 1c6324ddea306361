// Whether a path can be shown.
#pragma once

#include <string>

// The cleaned path, a relative one seen from current; empty when it cannot be shown, with the message for the
// error box in *message. Empty without a message when it is current, the path shown now. Bounded.
std::string x_check_path(const char* text, const std::string& current, std::string* message);

// What is typed without a leading slash is meant from current, the directory shown: kept as it is, it would
// name another place after every change of directory. Without "." and "..", nor a slash at the end.
std::string path_seen_from(const std::string& current, const std::string& path);
