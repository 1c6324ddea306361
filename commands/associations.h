// The association table: which command opens, views or edits a file of which name. Interface thread.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

struct Association {
  std::string pattern;  // alternatives separated by '|', a leading '^' ignores case
  std::string open_cmd;
  std::string edit_cmd;
  std::string view_cmd;
};

enum : int32_t { AS_OPEN = 0, AS_VIEW = 1, AS_EDIT = 2 };

extern std::vector<std::unique_ptr<Association>> apat;  // apat_max slots; those from apat_ctr on are empty
extern int32_t apat_ctr, apat_max;

// Fills the table from dir/name, or with the defaults when that cannot be opened (dir may be null). A faulty
// line is shown in a message box and ends the program with status 1.
void init_read_associations(const char* dir, const char* name);

// Splits at separator into at most n fields of a static buffer (1023 bytes of source); missing ones are
// empty. The number of separators consumed. Valid until the next call.
int _split_str(const char* source, char separator, const char** fields, int n);

// The first record whose pattern matches the file name (not its path); -1 when none does.
int _get_pat_idx(const char* name);
// That record's command for a selector (AS_OPEN, ...); null when there is none, or a blank one.
const char* _get_pat_cmd(const char* name, int32_t selector);
// 1 when the text is empty or holds only white space.
int isempty(const char* text);

// One line of the table as the file and the editor have it, without the newline: pattern, open, view, edit.
std::string as_line(const Association& association);
// The record of such a line; missing fields are empty.
Association as_parse_line(const char* line);
// Makes lines the table.
void as_replace(const std::vector<std::string>& lines);
// Writes the table to dir/name (over a temporary file beside it). 0; -1 when that fails, or dir is null.
int as_write(const char* dir, const char* name);

// Opens a file of the current directory: runs the open command of every record that matches; with none, runs
// the file itself when its owner may execute it, between block(1) and block(0). The number of records that
// matched.
int as_open(const char* name, mode_t mode, const std::function<void(int)>& block = {});

// What kind of file this is, in one line (what the `file` program printed keeps its newline). 1; 0, and *out
// unchanged, when nothing is known. Takes 3 s at most.
int as_get_filetype(const char* path, mode_t mode, std::string* out);
