// A scan is shared by its thread and its owner on the interface thread. The thread writes only the two marks
// and hands everything else over in posted calls; each posted call looks at the cancel word, which only the
// interface thread sets, before it tells the owner. So the owner may go at any time, and a thread in a hung
// system call keeps nothing but itself.
#include "fileops/dir_scan.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <cstring>
#include <new>
#include <utility>

#include "dirmodel/dir_sort.h"
#include "dirmodel/hung_places.h"
#include "platform/desktop.h"
#include "platform/detached.h"

namespace {
using Scan = std::shared_ptr<DirScan>;
constexpr size_t LOOK_BATCH = 256;
constexpr auto LOOK_INTERVAL = std::chrono::milliseconds(50);

struct DirCloser {
  void operator()(DIR* dir) const { closedir(dir); }
};
using OpenDir = std::unique_ptr<DIR, DirCloser>;

// fn gets a copy of the owner's calls: what it calls may cancel the scan and so forget them.
template <class Fn>
void tell(const Scan& scan, Fn fn) {
  desk_post([scan, fn] {
    if (scan->cancel) return;
    const DirScanCalls calls = scan->calls;
    fn(*scan, calls);
  });
}

OpenDir open_subdirectory(int base, const char* name) {
  const int fd = openat(base, name, O_RDONLY | O_DIRECTORY | O_NONBLOCK | O_CLOEXEC);
  if (fd < 0) return nullptr;
  OpenDir dir(fdopendir(fd));
  if (!dir) close(fd);
  return dir;
}

bool is_dot_or_double_dot(const char* name) {
  return name[0] == '.' && (name[1] == '\0' || (name[1] == '.' && name[2] == '\0'));
}

// Whether an entry is a directory that the menu shows. A link is what it leads to.
bool scan_takes(DIR* dir, const dirent& entry, unsigned flags) {
  const char* name = entry.d_name;
  if (is_dot_or_double_dot(name)) return false;
  if (name[0] == '.' && (flags & DIR_SCAN_HIDE_DOT)) return false;
  if (entry.d_type == DT_DIR) return true;
  if (entry.d_type != DT_LNK && entry.d_type != DT_UNKNOWN) return false;
  struct stat st;
  return fstatat(dirfd(dir), name, &st, 0) == 0 && S_ISDIR(st.st_mode);
}

int compare_listed(const void* a, const void* b) {
  const char* const x = *static_cast<const char* const*>(a);
  const char* const y = *static_cast<const char* const*>(b);
  const int order = _list_cmp(x, y);
  return order != 0 ? order : std::strcmp(x, y);
}

int compare_bytes(const void* a, const void* b) {
  return std::strcmp(*static_cast<const char* const*>(a), *static_cast<const char* const*>(b));
}

// By qsort: the order of numbers among other names has cycles, which a library sort must not be given.
DirNames sort_listed(const DirNames& names, unsigned flags) {
  if (names.empty()) return {};
  std::vector<const char*> order;
  order.reserve(names.size());
  for (const std::string& name : names) order.push_back(name.c_str());
  qsort(order.data(), order.size(), sizeof(char*),
        flags & DIR_SCAN_BYTE_ORDER ? compare_bytes : compare_listed);
  return DirNames(order.begin(), order.end());
}

DirNames read_names(DIR* dir, DirScan* scan) {
  DirNames names;
  names.reserve(100);
  while (const dirent* entry = scan->cancel ? nullptr : readdir(dir)) {
    if (scan_takes(dir, *entry, scan->flags)) names.emplace_back(entry->d_name);
    if (!is_dot_or_double_dot(entry->d_name)) ++scan->read;
  }
  return scan->flags & DIR_SCAN_UNSORTED ? names : sort_listed(names, scan->flags);
}

int look_in(int base, const char* name, unsigned flags, const std::atomic<int>& cancel) {
  const OpenDir dir = open_subdirectory(base, name);
  if (!dir) return -1;
  while (const dirent* entry = cancel ? nullptr : readdir(dir.get()))
    if (scan_takes(dir.get(), *entry, flags)) return 1;
  return 0;
}

void look_at_names(DIR* dir, const Scan& scan, const DirNames& names) {
  std::vector<char> has;
  auto told = std::chrono::steady_clock::now();
  for (size_t i = 0; i < names.size() && !scan->cancel; ++i) {
    has.push_back(look_in(dirfd(dir), names[i].c_str(), scan->flags, scan->cancel) > 0 ? 1 : 0);
    ++scan->read;
    const auto now = std::chrono::steady_clock::now();
    if (i + 1 < names.size() && has.size() < LOOK_BATCH && now - told < LOOK_INTERVAL) continue;
    told = now;
    tell(scan,
         [first = i + 1 - has.size(), batch = std::exchange(has, {})](DirScan&, const DirScanCalls& calls) {
           if (calls.looked) calls.looked(first, batch);
         });
  }
}

void tell_end(const Scan& scan) {
  scan->finished = 1;
  tell(scan, [](DirScan& owner, const DirScanCalls& calls) {
    owner.calls = {};
    if (calls.ended) calls.ended();
  });
}

void scan_directory(const Scan& scan) {
  const OpenDir dir = open_subdirectory(AT_FDCWD, scan->path.c_str());
  const auto names = std::make_shared<const DirNames>(dir ? read_names(dir.get(), scan.get()) : DirNames());
  tell(scan, [names](DirScan& owner, const DirScanCalls& calls) {
    owner.count = static_cast<int32_t>(names->size());
    if (calls.listed) calls.listed(*names);
  });
  if (dir && !(scan->flags & DIR_SCAN_NAMES)) look_at_names(dir.get(), scan, *names);
}

void dtm_scanning_thread(const Scan& scan) {
  scan->started = 1;
  try {
    if (!scan->cancel) scan_directory(scan);
  } catch (const std::bad_alloc&) {
    tell(scan, [](DirScan&, const DirScanCalls& calls) {
      if (calls.failed) calls.failed();
    });
  }
  tell_end(scan);
}
}  // namespace

std::shared_ptr<DirScan> dir_scan_start(const std::string& path, unsigned flags, DirScanCalls calls) {
  auto scan = std::make_shared<DirScan>();
  scan->path = path;
  scan->flags = flags;
  scan->calls = std::move(calls);
  if (hung_full(path)) {
    tell(scan, [](DirScan&, const DirScanCalls& told) {
      if (told.listed) told.listed({});
    });
    tell_end(scan);
    return scan;
  }
  scan->hung = std::make_shared<HungNote>();
  scan->thread = detached_start([scan, hung = scan->hung] { dtm_scanning_thread(scan); });
  return scan->thread ? scan : nullptr;
}

void dir_scan_cancel(const std::shared_ptr<DirScan>& scan) {
  if (!scan) return;
  scan->cancel = 1;
  scan->calls = {};
  detached_interrupt(scan->thread);
  scan->thread = nullptr;
  // As far as anyone can tell, it hangs. The note goes with the thread, which alone keeps it now.
  if (!scan->finished && scan->hung) *std::exchange(scan->hung, nullptr) = hung_note(scan->path);
}

int dir_scan_look(const char* path, int flags) {
  return look_in(AT_FDCWD, path, static_cast<unsigned>(flags), std::atomic<int>(0));
}

int _list_cmp(const char* a, const char* b) {
  return dir_compare_names(a, b);
}
