// Files on the desktop clipboard, and the program's view of what is cut at the moment. Interface thread.
#pragma once

#include <string>
#include <vector>

#include "fileops/ui/files_mime.h"

// The two entries. At most one of them holds anything.
inline constexpr char kClipFiles[] = "files";        // copied
inline constexpr char kClipMoveFiles[] = "mvfiles";  // cut

// Puts the list on the clipboard as cut (the entry "mvfiles") or copied ("files"), together with the forms
// that other file managers read.
void clipboard_put(TransferList list, bool cut);

// The files on the clipboard, whoever put them there.
OfferedFiles clipboard_get();

// 1 when the clipboard holds a non-empty entry of the type ("files" or "mvfiles"; null: either). What another
// program put there counts as the entry that it means. group is not used: this desktop has one clipboard.
int em_check_clipboard_for_type(int group, const char* type);

// Takes the cut list anew from the clipboard's "mvfiles" entry.
void file_get_cut_files();
bool file_has_cut_files();
// 1 when name in dir is in the cut list.
int file_is_cut(const char* dir, const char* name);

// Forgets cut items that were moved or deleted, in the cut list and on the clipboard; a clipboard that holds
// another list by now is left as it is. 1 when at least one was in the cut list, else 0.
int file_uncut(const std::string& dir, const std::vector<std::string>& names);
int file_uncut(const char* dir, const char* name);
