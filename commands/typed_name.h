// What the dialogs do with a name that the user typed, and calls on it that must not hang the window.
#pragma once

#include <functional>
#include <string>

// Converts a typed name (UTF-8) to its form on disk. False, with the message to show, when it has none in the
// character set of the settings.
bool typed_name_encode(const std::string& typed, std::string* on_disk, std::string* message);

// An absolute path as it stands; any other one below dir.
std::string typed_name_below(const std::string& dir, const std::string& name);

// Runs call, which is about path (empty: no file), returns 0 or an errno value and owns all that it touches,
// within the time that a file system is given. Its result, or ETIMEDOUT when it is left behind.
int bounded_errno(const std::string& path, std::function<int()> call);

// printf into a std::string.
std::string text_format(const char* format, ...) __attribute__((format(printf, 1, 2)));
