// Changing the directory shown.
#pragma once

#include <string>

// The first directory of the window, which is shown already: wanted where it is one, else otherwise, else
// "/" (absolute paths, wanted may be empty). A file system that does not answer is waited for as in a
// reading.
void fl_show_first(const std::string& wanted, const std::string& otherwise);

// Validates (with its messages) and shows path; no history. 0, or -1 when it is the current one or fails.
int fl_setpath(const char* path);
// fl_setpath; on success the forward stack is emptied and the previous path pushed on the backward stack.
int fl_newpath(const char* path);
void fl_up();
void fl_down();
void fl_back();
void fl_forward();
int fl_get_back_count();
int fl_get_forward_count();
// Sets the filter (null or empty: "*"). -1 when unchanged, else 0.
int fl_setspec(const char* spec);

void gm_home();
void gm_back();
void gm_forward();
void gm_up();
