// The scanning thread of the directory menus: names first, then which of them have subdirectories.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <string>
#include <vector>

enum : unsigned {
  DIR_SCAN_HIDE_DOT = 0x1,    // pass over names beginning with "."
  DIR_SCAN_BYTE_ORDER = 0x2,  // sort by bytes alone
  DIR_SCAN_NAMES = 0x4,       // names only, no second pass
  DIR_SCAN_UNSORTED = 0x8,    // in the order in which the directory gives them
  DIR_SCAN_ROOT = 0x1000,     // the entry stands for a hotlist path; the scan does not care
};

using DirNames = std::vector<std::string>;

// What a scan tells, on the interface thread, never after dir_scan_cancel. Unset ones are not called.
struct DirScanCalls {
  // The names of the subdirectories (links to directories too), sorted; once. Empty: none, or unreadable.
  std::function<void(const DirNames& names)> listed;
  // has[i] tells of names[first + i]: 1 has a subdirectory, 0 has none. In order, a batch at a time.
  std::function<void(size_t first, const std::vector<char>& has)> looked;
  // Memory ran out; nothing more comes but ended.
  std::function<void()> failed;
  // The last word.
  std::function<void()> ended;
};

struct DirScan {
  std::string path;  // on disk
  unsigned flags = 0;
  std::atomic<int> cancel{0};
  std::atomic<int> started{0};   // the thread runs
  std::atomic<int> finished{0};  // the thread has ended, on whatever way
  std::atomic<int> read{0};      // entries and names looked at so far: while it grows, nothing hangs
  int32_t count = 0;             // subdirectories found; interface thread
  DirScanCalls calls;            // interface thread
  std::shared_ptr<struct Detached> thread;      // interface thread
  std::shared_ptr<std::shared_ptr<void>> hung;  // the thread's note, should it be left behind
};

// Starts scanning path. Null when no thread could be started. Where too many threads hang already, none is:
// the directory is told to be empty. Interface thread.
std::shared_ptr<DirScan> dir_scan_start(const std::string& path, unsigned flags, DirScanCalls calls);

// Stops a scan and forgets it without waiting: a thread that hangs is left behind with what it owns. Null and
// finished scans are fine. Interface thread.
void dir_scan_cancel(const std::shared_ptr<DirScan>& scan);

// The second pass for one directory: 1 when it has a subdirectory, 0 when not, -1 when it cannot be opened.
// For a thread that may hang.
int dir_scan_look(const char* path, int flags);

// The order of the names: two names of digits by their value, any other pair byte by byte.
int _list_cmp(const char* a, const char* b);
