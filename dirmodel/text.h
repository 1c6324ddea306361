// Text helpers: pattern matching, path clean-up and joining, size and time texts, shell quoting.
#pragma once

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>

// 0 when name matches pattern: '|' separates fnmatch alternatives, a leading '^' ignores case in all of them.
int es_strcmp(const char* name, const char* pattern);
int _fnmatch(const char* pattern, const char* name);

// Cleans path in place: runs of '/' (with the one-pass rule kept as it is), trailing slashes.
void es_strip_pathname(char* path);
void es_strip_pathname(std::string* path);

// Cuts the last component in place. Returns the new length.
int es_remove_subdirectory(char* path);
void es_remove_subdirectory(std::string* path);

// Joins dir and name (either may be null) with one '/'.
std::string es_construct_fullpath(const char* dir, const char* name);

// Size text of the properties dialog: "%ld.%1ldKB" and its kin, the remainder raw.
std::string es_generate_byte_string(int32_t n);

// Size text of the status line, from the two halves of a 64-bit size. A shared static buffer.
const char* ll2str(int32_t high, uint32_t low);

// Size with "," every three digits. A shared static buffer.
const char* cvt2c(uint64_t size);

// Time text in local time, at most 99 bytes; mode 2: the date column's, 1: today/yesterday, 0: age. Any other
// mode leaves *out as it is. Returns the length.
int es_generate_time_string(std::string* out, time_t t, int mode);

// Appends name in single quotes and a blank; "'" becomes \047. Returns the number of characters added (an
// empty name adds none). With buf null: the number that would be added, 3 for an empty name.
int add_name(std::string* buf, const char* name);

// 1 when every character is a decimal digit (also for an empty text).
int misc_all_digits(const char* text);
