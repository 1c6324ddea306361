// What a worker shows and asks: its slot's display, the time left, alerts, notices and the pause trap.
#pragma once

#include <string>

#include "fileops/fop.h"

enum : int { FOP_PERCENT_ZERO = -100, FOP_PERCENT_KEEP = -1, FOP_TIME_KEEP = -2 };

// Stores every text that is not null, the percentage (FOP_PERCENT_ZERO sets 0) and the time left, and
// refreshes the slot: at most ten times a second where a percentage is reported, unless time_left is 0. Keeps
// errno.
int fop_update_info(fop_request* request, const char* header, const char* from_label, const char* from_name,
                    const char* to_label, const char* to_name, int percent, int time_left);

// Shows done of total as percentage and time left, with the texts unchanged where they are null.
void fop_show_progress(fop_request* request, int64_t done, int64_t total, const char* header = nullptr,
                       const char* from_label = nullptr, const char* from_name = nullptr,
                       const char* to_label = nullptr, const char* to_name = nullptr);

// Whether fop_show_progress would be seen now: by the slot, by who is told every percentage, or by the
// estimate that begins with it. An item that takes microseconds is not worth more than this look at the
// clock.
bool fop_progress_due(const fop_request& request);

// Seconds left; -1: the clock was started just now; -2: too early to tell.
int fop_calc_time_left(fop_request* request, int64_t done, int64_t total);

// A modal question; the number of the chosen button, from 1.
int fop_alert(fop_request* request, const char* title, const char* buttons, const char* format, ...)
    __attribute__((format(printf, 4, 5)));
// A modal notice with the one button "&Close".
void fop_errinfo(const char* title, const char* format, ...) __attribute__((format(printf, 2, 3)));
void fop_ENOMEM();

// 0 at once when not paused; otherwise waits: 0 resumed, 1 cancelled.
int fop_pause_trap(fop_request* request);
// The trap, then the look at cancel: true when the operation is to end.
bool fop_cancelled(fop_request* request);

// Notes an item that was moved or deleted, for on_item_done; told in batches.
void fop_item_done(fop_request* request, const char* dir, const char* name);
// Tells what was noted so far.
void fop_tell_done(fop_request* request);

// Shortens a line of a label and a path in place for display, and returns it. The buffer has room for two
// more bytes than the line.
char* fop_shorten_line(char* line);
// The texts of a slot's widgets, from its record: lines as UTF-8, shortened.
std::string fop_from_line(const fop_info& info);
std::string fop_to_line(const fop_info& info);
std::string fop_count_text(const fop_info& info);
// " " when blank, "%d seconds", "%d:%02d minutes", "%d:%02d hours".
std::string fop_time_text(int seconds);
