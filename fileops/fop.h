// Operation requests: each copy, move or delete runs on a worker thread of its own.
//
// The interface thread fills a display record, calls fop() and keeps of the operation only its fop_control.
// The worker owns the request and frees it before it tells that its slot has ended; it reaches the interface
// through platform/desktop.h alone.
#pragma once

#include <sys/types.h>

#include <atomic>
#include <cstdint>
#include <ctime>
#include <functional>
#include <memory>
#include <string>
#include <unordered_set>
#include <utility>
#include <vector>

#include "fileops/start.h"

struct alloc_list;

enum : uint32_t {
  FOP_MKDEST = 0x0001,         // the destination directory itself must be made before the first item
  FOP_BUFSIZE = 0x00F0,        // copy buffer in units of 4096 bytes; 0: 32768 bytes
  FOP_DELETE_ALL = 0x0200,     // delete without asking
  FOP_CONFIRM_EACH = 0x0400,   // ask before deleting every file
  FOP_OVERWRITE_ALL = 0x1000,  // overwrite without asking
  FOP_FOLLOW_LINKS = 0x2000,   // copy what symbolic links point to
  FOP_COPY_LINKS = 0x4000,     // copy symbolic links as links
  FOP_IGNORE_OWNER = 0x8000,   // failures to set an owner are not reported
};

// What the interface and the worker share of a running operation. Both hold it, so that a button pressed
// while the operation ends finds it still there.
struct fop_control {
  std::atomic<int32_t> cancel{0};  // the interface sets 1; so does Abort on the no-space question
  std::atomic<int32_t> pause{0};   // non-zero while the slot's toggle is set
  // Written by the worker before it tells that the slot has ended.
  std::atomic<int32_t> aborted{0};  // 1: cancelled, aborted or refused
  std::atomic<int32_t> done_items{0};
  std::atomic<int64_t> done_bytes{0};
  // If set (before the start), told every percentage on the worker's thread, also those not shown.
  std::function<void(int percent)> watch;
};

// The display record of a slot. The slot makes one, each request works on a copy of it, and the copy is what
// desk_slot_refresh hands back to be drawn. Texts are raw bytes; fop_from_line and its kin (fop_progress.h)
// make the lines that are shown.
struct fop_info {
  void* slot = nullptr;                  // the slot's key, for desk_slot_refresh and desk_slot_ended
  std::shared_ptr<fop_control> control;  // made by the slot, or by fop() when there is none
  char header[128] = "";                 // "Scanning", "Copying", "Moving", "Deleting"
  char from_label[128] = "";             // "From: ", " Dir: ", "Done"
  char from_name[1025] = "";
  char to_label[128] = "";  // "  To: ", "File: "
  char to_name[1025] = "";
  int32_t percent = 0;
  int32_t time_left = 0;  // seconds; below 1: blank
  int32_t item = 0;       // "item of total_items"
  int32_t total_items = 0;
  int32_t linger_ms = 1000;  // how long "Done" is kept on display before the slot ends
};

// Identity of a file: what tells that a path still leads where it led.
struct fop_identity {
  dev_t dev = 0;
  ino_t ino = 0;
  bool operator==(const fop_identity&) const = default;
};

struct fop_identity_hash {
  size_t operator()(const fop_identity& identity) const {
    return std::hash<uint64_t>()(identity.ino * 31 + identity.dev);
  }
};

// What a source was when it was copied; a move removes only a source that still is that.
struct fop_mark {
  ino_t ino;
  int64_t size, mtime_ns;
};

// One directory's share of the work. Group 0 holds the selection; each further one a directory met by the
// scan, behind the group that lists it.
struct fop_group {
  char* dir;        // full path
  int32_t count;    // names
  char** names;     // an empty name is done with, skipped or refused
  uint8_t* types;   // DT_ of each name as far as the directory told it
  fop_mark* marks;  // of a move's copied items; null until its copy pass reaches the group
  int32_t parent;   // the group and the name in it that this directory is; -1 for the selection
  int32_t index;
  bool through_link;   // reached through a followed symbolic link: never emptied by a move
  bool kept;           // something in it or below was skipped or not reached
  int32_t dest_error;  // errno of its destination directory; 0 when that is ready
  fop_identity source, dest;
};

// Told of items moved or deleted, in order, in batches; runs on the interface thread.
using fop_items_done = std::function<void(const std::string& dir, const std::vector<std::string>& names)>;

struct fop_request {
  pthread_t tid{};
  std::shared_ptr<fop_control> control;
  int32_t kind = FOP_COPY;
  uint32_t flags = 0;
  char* dest = nullptr;  // "" for a delete
  uint32_t bufsize = 0;
  char* buf = nullptr;
  int32_t src_prefix_len = 0;  // characters of a full source path that dest replaces
  int32_t ngroups = 0, groups_capacity = 0;
  fop_group** groups = nullptr;
  int32_t total_items = 0;
  int64_t total_bytes = 0;
  int32_t done_items = 0;
  int64_t done_bytes = 0;
  timespec last_update{};  // of the display
  timespec start_time{};   // zero until the first estimate
  fop_info info;
  alloc_list* mem = nullptr;
  fop_items_done on_item_done;
  // Done items not told yet, by directory.
  std::vector<std::pair<std::string, std::vector<std::string>>> done_batch;
  int32_t done_waiting = 0;
  timespec done_told{};
  bool dest_is_item = false;             // the one item is copied as dest itself
  bool dest_made = false;                // the destination check made dest
  bool assume_ignore_owner = false;      // the setting, as it was at the start
  mode_t umask = 022;                    // of the process
  std::vector<fop_identity> dest_chain;  // dest's directory and all above it
  std::vector<std::pair<dev_t, int>>
      written_systems;  // file systems a move writes to: opened before the first write
  // What this operation put in place: none of its later items may replace it, or a move would lose it.
  std::unordered_set<fop_identity, fop_identity_hash> made;
  std::unordered_set<std::string> made_paths;  // in lower case, of a system that numbers its files anew
  // The device of the item noted last, and whether its system is such a one: asked once, not for each item.
  dev_t made_device = static_cast<dev_t>(-1);
  bool made_numbers_change = false;
};

// The operation flags that the settings' flag word (SET_ bits) asks for. several: more than one name, or
// exactly one that is a directory.
uint32_t fop_derive_flags(int kind, uint32_t settings_flags, bool several);

// Builds a request and starts its worker. info is copied. Returns what the caller keeps of the operation, or
// null (and nothing was started) with errno: EINVAL for no names, no source directory or no destination (""
// for a delete). on_item_done may be empty. Interface thread.
std::shared_ptr<fop_control> fop(int kind, const char* source_dir, const std::vector<std::string>& names,
                                 const char* destination, uint32_t flags, const fop_info& info,
                                 fop_items_done on_item_done);
