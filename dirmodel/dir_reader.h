// The thread behind dir_read: it opens the directory, reads the names and makes every call on them.
//
// One reader thread works at a time. It fills batches and puts them into a short queue; the interface thread
// takes them out, turns them into entries and gives the empty batches back. Each call that can hang is
// announced in one atomic word (odd while the call lasts). The interface thread watches that word: when it
// stands still for too long the thread gets the alarm signal, and when that does not free it the interface
// thread moves the word on itself, notes the time-out and starts another thread on what comes next. The
// thread left behind finds the word moved, touches nothing any more and ends; until then it keeps the whole
// reader alive. So whatever is not guarded by the mutex belongs to the thread whose turn it is by that word.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

enum : uint8_t {
  READ_LINK = 1,          // a symbolic link; link is its target
  READ_UNREAD = 2,        // own status (then st is 0, owner and group -1) or the target's could not be read
  READ_TIMEOUT = 4,       // own status: because the call took too long
  READ_NO_LINK_TEXT = 8,  // the link's target could not be read
};

struct ReadItem {
  struct stat64 st;
  uint32_t name;  // offset into the batch's text, NUL-terminated
  uint32_t link;  // the same for a link's target
  uint32_t hash;  // of the name
  uint8_t state;  // READ_ bits
};

struct ReadBatch {
  std::vector<ReadItem> items;
  std::string text;
};

enum class ReadStep {
  opened,  // the directory can be entered: enter_fd is to be made the working directory
  batch,   // *batch holds the next entries
  slow,    // nothing yet
  ended,   // every name was read
  failed,  // it cannot be entered or opened, or its names cannot be read on
};

struct DirReader;

// Starts the reader of path. hide_dot leaves out names that begin with '.'. Null without a thread.
std::shared_ptr<DirReader> dir_reader_start(const std::string& path, bool hide_dot, int timeout_ms);

// What has come next, waiting at most wait_ms for it. batch hands the last one back, when there is one. With
// wake set the desktop is woken when something comes after "slow". Interface thread, as are the others.
ReadStep dir_reader_next(const std::shared_ptr<DirReader>& reader, int wait_ms, bool wake,
                         std::unique_ptr<ReadBatch>* batch);

// The directory to enter, after ReadStep::opened.
int dir_reader_enter_fd(const DirReader& reader);

// Ends it: whatever the thread is at, it is not waited for.
void dir_reader_cancel(const std::shared_ptr<DirReader>& reader);
