#include "fileops/fop_progress.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>

#include "platform/desktop.h"
#include "views/fname.h"

// A few milliseconds are exact enough here, and the coarse clock costs next to nothing for every item.
static timespec clock_now() {
  timespec now;
  clock_gettime(CLOCK_MONOTONIC_COARSE, &now);
  return now;
}

static double seconds_since(const timespec& start, const timespec& now) {
  return static_cast<double>(now.tv_sec - start.tv_sec) +
         static_cast<double>(now.tv_nsec - start.tv_nsec) / 1e9;
}

template <size_t N>
static void store_text(char (&field)[N], const char* text) {
  if (!text) return;
  const size_t length = strnlen(text, N - 1);
  std::memcpy(field, text, length);
  field[length] = '\0';
}

// The slot is not told more often than this.
static bool refresh_due(const fop_request& request, const timespec& now) {
  return seconds_since(request.last_update, now) >= 0.1;
}

int fop_update_info(fop_request* request, const char* header, const char* from_label, const char* from_name,
                    const char* to_label, const char* to_name, int percent, int time_left) {
  const int error = errno;
  fop_info& info = request->info;
  store_text(info.header, header);
  store_text(info.from_label, from_label);
  store_text(info.from_name, from_name);
  store_text(info.to_label, to_label);
  store_text(info.to_name, to_name);
  if (percent != FOP_PERCENT_KEEP) info.percent = percent == FOP_PERCENT_ZERO ? 0 : percent;
  if (time_left != FOP_TIME_KEEP) info.time_left = time_left;
  if (percent >= 0 && request->control->watch) request->control->watch(percent);
  const timespec now = clock_now();
  if (percent == FOP_PERCENT_KEEP || time_left == 0 || refresh_due(*request, now)) {
    info.item = std::min(request->done_items + 1, request->total_items);
    info.total_items = request->total_items;
    desk_slot_refresh(info);
    request->last_update = now;
  }
  errno = error;
  return 0;
}

void fop_show_progress(fop_request* request, int64_t done, int64_t total, const char* header,
                       const char* from_label, const char* from_name, const char* to_label,
                       const char* to_name) {
  const int time_left = fop_calc_time_left(request, done, total);
  const double part = total > 0 ? std::min(static_cast<double>(done) / static_cast<double>(total), 1.0) : 0;
  fop_update_info(request, header, from_label, from_name, to_label, to_name, static_cast<int>(part * 100),
                  time_left);
}

bool fop_progress_due(const fop_request& request) {
  return request.control->watch || request.start_time.tv_sec == 0 || refresh_due(request, clock_now());
}

int fop_calc_time_left(fop_request* request, int64_t done, int64_t total) {
  const timespec now = clock_now();
  if (request->start_time.tv_sec == 0 && request->start_time.tv_nsec == 0) {
    request->start_time = now;
    return -1;
  }
  const double elapsed = seconds_since(request->start_time, now);
  if (elapsed <= 0.001) return -2;
  const double rate = static_cast<double>(done) / elapsed;
  const double left = done >= total ? 1.0 : static_cast<double>(total - done) / rate + 1.0;
  return left >= INT32_MAX ? INT32_MAX : static_cast<int>(left);
}

static std::string formatted_message(const char* format, va_list arguments) {
  va_list again;
  va_copy(again, arguments);
  const int length = std::vsnprintf(nullptr, 0, format, arguments);
  std::string text(std::max(length, 0), '\0');
  if (length > 0) std::vsnprintf(text.data(), text.size() + 1, format, again);
  va_end(again);
  return text;
}

int fop_alert(fop_request* request, const char* title, const char* buttons, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string message = formatted_message(format, arguments);
  va_end(arguments);
  const int error = errno;
  fop_tell_done(request);
  fop_update_info(request, nullptr, nullptr, nullptr, nullptr, nullptr, FOP_PERCENT_KEEP, FOP_TIME_KEEP);
  const int answer = desk_alert(title, message, buttons);
  errno = error;
  return answer;
}

void fop_errinfo(const char* title, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const std::string message = formatted_message(format, arguments);
  va_end(arguments);
  desk_notice(title, message);
}

void fop_ENOMEM() {
  fop_errinfo("Memory Allocation", "Out of memory!");
}

int fop_pause_trap(fop_request* request) {
  fop_control& control = *request->control;
  if (!control.pause.load(std::memory_order_relaxed)) return 0;
  fop_tell_done(request);
  fop_update_info(request, nullptr, nullptr, nullptr, nullptr, nullptr, FOP_PERCENT_KEEP, FOP_TIME_KEEP);
  for (;;) {
    if (control.cancel) return 1;
    usleep(10 * 1000);  // with what follows, a cancel is answered within 50 ms on a busy machine, too
    if (!control.pause) return 0;
  }
}

bool fop_cancelled(fop_request* request) {
  fop_pause_trap(request);
  return request->control->cancel.load(std::memory_order_relaxed) != 0;
}

void fop_item_done(fop_request* request, const char* dir, const char* name) {
  if (!request->on_item_done) return;
  auto& batch = request->done_batch;
  if (batch.empty() || batch.back().first != dir) batch.emplace_back(dir, std::vector<std::string>());
  batch.back().second.emplace_back(name);
  const timespec now = clock_now();
  if (++request->done_waiting >= 1000 || seconds_since(request->done_told, now) >= 0.25)
    fop_tell_done(request);
}

void fop_tell_done(fop_request* request) {
  if (request->done_batch.empty()) return;
  desk_call([request] {
    for (const auto& [dir, names] : request->done_batch) request->on_item_done(dir, names);
  });
  request->done_batch.clear();
  request->done_waiting = 0;
  request->done_told = clock_now();
}

char* fop_shorten_line(char* line) {
  constexpr size_t kLong = 61, kRoom = 54;
  const size_t length = std::strlen(line);
  if (length < kLong) return line;
  const char* colon = std::strchr(line, ':');
  const size_t search = colon ? static_cast<size_t>(colon - line) + 2 : 2;
  char* first = search < length ? std::strchr(line + search, '/') : nullptr;
  if (!first) return line;
  char* rest = first;
  while (rest && std::strlen(rest) >= kRoom) rest = std::strchr(rest + 1, '/');
  if (!rest) return line;
  std::memmove(first + 2, rest, std::strlen(rest) + 1);
  first[1] = '*';
  return line;
}

static std::string display_line(const char* label, const char* name) {
  char line[128 + 1025 + 2];
  std::snprintf(line, sizeof line, "%s%s", label, name);
  return fname_decode(fop_shorten_line(line));
}

std::string fop_from_line(const fop_info& info) {
  return display_line(info.from_label, info.from_name);
}

std::string fop_to_line(const fop_info& info) {
  return display_line(info.to_label, info.to_name);
}

std::string fop_count_text(const fop_info& info) {
  return std::to_string(info.item) + " of " + std::to_string(info.total_items);
}

std::string fop_time_text(int seconds) {
  char text[64];
  if (seconds < 1) return " ";
  if (seconds < 60)
    std::snprintf(text, sizeof text, "%d seconds", seconds);
  else if (seconds < 3600)
    std::snprintf(text, sizeof text, "%d:%02d minutes", seconds / 60, seconds % 60);
  else
    std::snprintf(text, sizeof text, "%d:%02d hours", seconds / 3600, seconds % 3600 / 60);
  return text;
}
