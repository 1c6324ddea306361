#include "dirmodel/dir_read.h"

#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstring>
#include <memory>
#include <vector>

#include "core/state.h"
#include "dirmodel/dir_reader.h"
#include "dirmodel/text.h"
#include "platform/desktop.h"

namespace {
constexpr int kProgressInterval = 300;                  // ms
constexpr auto kSlice = std::chrono::milliseconds(10);  // of work between two looks at the events
constexpr int kSleep = 50;                              // ms at most without a look at the reader

int sTimeout = 10000;  // ms
int sProgressTimer = 0;

// The live entries' names by hash, for finding one that the directory returns twice.
class NameSet {
 public:
  // True when the name was not there. index is the place it will have among the live entries.
  bool add(const DirRecord& dir, const char* name, uint32_t hash, int32_t index) {
    if (hashes_.size() * 2 >= slots_.size()) grow();
    const size_t mask = slots_.size() - 1;
    for (size_t at = hash & mask;; at = (at + 1) & mask) {
      if (slots_[at] < 0) {
        slots_[at] = index;
        hashes_.push_back(hash);
        return true;
      }
      if (hashes_[slots_[at]] == hash && std::strcmp(dir.entries[slots_[at]]->name, name) == 0) return false;
    }
  }

 private:
  void grow() {
    slots_.assign(std::max<size_t>(1024, slots_.size() * 4), -1);
    const size_t mask = slots_.size() - 1;
    for (size_t i = 0; i < hashes_.size(); ++i) {
      size_t at = hashes_[i] & mask;
      while (slots_[at] >= 0) at = (at + 1) & mask;
      slots_[at] = static_cast<int32_t>(i);
    }
  }
  std::vector<int32_t> slots_;    // index of a live entry, -1 free
  std::vector<uint32_t> hashes_;  // of the live entries, by index
};

// One reading that is under way. Events run while it lasts, and one of them may begin another.
struct Reading {
  DirRecord* dir;
  std::shared_ptr<DirReader> reader;
  NameSet names;
  bool cancelled = false;   // given up: the record stays as it is
  bool superseded = false;  // the record belongs to a later reading
  std::chrono::steady_clock::time_point slice_end;

  bool stopped() const { return cancelled || superseded; }
};

std::vector<Reading*> sReadings;

void x_print_progress(DirRecord* dir) {
  desk_status(2, std::to_string(dir->count) + " read");
}

void stop_progress_timer() {
  if (sProgressTimer) desk_timer_stop(sProgressTimer);
  sProgressTimer = 0;
}

void fill_entry(DirEntry* entry, const ReadItem& item, const ReadBatch& batch) {
  entry->st = item.st;
  const char* name = batch.text.data() + item.name;
  std::memcpy(entry->name, name, std::min(std::strlen(name) + 1, sizeof entry->name));
  entry->name[sizeof entry->name - 1] = '\0';
  if (item.state & READ_UNREAD) entry->flags |= ENTRY_UNREAD;
  if (item.state & READ_LINK) {
    entry->flags |= ENTRY_INFO;
    const bool text = !(item.state & READ_NO_LINK_TEXT);
    dir_set_info(entry, text ? batch.text.data() + item.link : "(unable to read link info)");
  } else if (item.state & READ_UNREAD) {
    entry->flags |= ENTRY_INFO;
    dir_set_info(entry, item.state & READ_TIMEOUT ? "(unable to read - timeout)" : "(unable to read info)");
  }
}

void add_item(Reading& reading, const ReadItem& item, const ReadBatch& batch) {
  DirRecord* dir = reading.dir;
  const char* name = batch.text.data() + item.name;
  if (!S_ISDIR(item.st.st_mode) && !dir->filespec.empty() && es_strcmp(name, dir->filespec.c_str()) != 0)
    return;
  if (!reading.names.add(*dir, name, item.hash, dir->count)) return;
  DirEntry* entry = dir_take_entry(dir);
  fill_entry(entry, item, batch);
  dir_store_entry(dir, entry);
}

void run_events_after_slice(Reading& reading) {
  const auto now = std::chrono::steady_clock::now();
  if (now < reading.slice_end) return;
  desk_pending_events(0);
  reading.slice_end = std::chrono::steady_clock::now() + kSlice;
}

void add_batch(Reading& reading, const ReadBatch& batch) {
  size_t done = 0;
  for (const ReadItem& item : batch.items) {
    add_item(reading, item, batch);
    if (++done % 64 != 0) continue;
    run_events_after_slice(reading);
    if (reading.stopped()) return;
  }
}

// Takes what the reader finds until it ends. 0, or -1.
int read_entries(Reading& reading) {
  std::unique_ptr<ReadBatch> batch;
  bool slow = false;
  while (!reading.stopped()) {
    // The first wait is a short one without events: an ordinary directory is read in one go.
    switch (dir_reader_next(reading.reader, slow ? 0 : 10, true, &batch)) {
      case ReadStep::opened:
        if (fchdir(dir_reader_enter_fd(*reading.reader)) != 0) return -1;
        break;
      case ReadStep::batch:
        slow = false;
        add_batch(reading, *batch);
        break;
      case ReadStep::slow:
        desk_pending_events(slow ? std::min(kSleep, std::max(1, sTimeout / 4)) : 0);
        slow = true;
        break;
      case ReadStep::ended:
        return 0;
      case ReadStep::failed:
        return -1;
    }
  }
  return -1;
}
}  // namespace

void dir_read_set_timeout_ms(int milliseconds) {
  sTimeout = milliseconds;
}

void dir_read_cancel() {
  for (Reading* reading : sReadings) reading->cancelled = true;
  if (!sReadings.empty()) desk_wake();
}

int dir_read(DirRecord* dir, dir_compare compare, int ascending) {
  for (Reading* reading : sReadings)
    if (reading->dir == dir) reading->superseded = true;
  stop_progress_timer();
  desk_status(1, "Reading Directory");
  dir_recycle_all(dir);
  // Only gDir outlives every timer: with any other record the timer ends with this call.
  sProgressTimer = desk_timer_start(kProgressInterval, [dir] { x_print_progress(dir); });
  Reading reading{
      .dir = dir, .reader = nullptr, .names = {}, .slice_end = std::chrono::steady_clock::now() + kSlice};
  if (!dir->path.empty())
    reading.reader = dir_reader_start(dir->path, (gConfig->flags & SET_HIDE_DOT) != 0, sTimeout);
  int result = -1;
  if (reading.reader) {
    sReadings.push_back(&reading);
    result = read_entries(reading);
    sReadings.pop_back();
    dir_reader_cancel(reading.reader);
  }
  if (reading.superseded) return -1;
  if (dir->count > 0) dir_sort(dir, compare, ascending);
  // A directory that cannot be entered or opened leaves the pane as it is, and the timer on it.
  const bool refused = result != 0 && !reading.cancelled && dir->count == 0;
  if (!refused) x_print_progress(dir);
  if (!refused || dir != &gDir) stop_progress_timer();
  return result;
}
