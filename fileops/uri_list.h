// The list forms that other file managers put on the clipboard and into drags. The writers take a list's
// names in order and leave out the empty ones. The readers take any bytes, pass over what names no local file
// (comments, other hosts and schemes, broken escapes), and give one list a directory in order of appearance.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "fileops/transfer.h"

inline constexpr char kMimeUriList[] = "text/uri-list";
inline constexpr char kMimeGnomeFiles[] = "x-special/gnome-copied-files";
inline constexpr char kMimeKdeCut[] = "application/x-kde-cutselection";
inline constexpr char kMimePlainText[] = "text/plain";

// "file:///p/a%20b" and CRLF for each file.
std::string uri_list_encode(const TransferList& list);
std::vector<TransferList> uri_list_decode(std::string_view bytes);

// True for a local file's URI that names "/", which is no name in any directory.
bool uri_names_root(std::string_view uri);

// "copy" or "cut", then LF and the URI for each file.
std::string gnome_files_encode(const TransferList& list, bool cut);
// False, writing nothing, when the first line is neither word or no file follows.
bool gnome_files_decode(std::string_view bytes, bool* cut, std::vector<TransferList>* lists);

// The paths as they are, LF between them.
std::string plain_paths_encode(const TransferList& list);

// True for a flag that begins with "1".
bool kde_cut_decode(std::string_view bytes);
