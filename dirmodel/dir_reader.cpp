#include "dirmodel/dir_reader.h"

#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sched.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <deque>
#include <mutex>
#include <string_view>
#include <system_error>
#include <thread>
#include <unordered_set>
#include <utility>

#include "dirmodel/fs_probe.h"
#include "dirmodel/hung_places.h"
#include "dirmodel/id_names.h"
#include "dirmodel/mount_table.h"
#include "platform/desktop.h"

using ReadClock = std::chrono::steady_clock;

namespace {
constexpr size_t kFirstBatch = 8;   // names
constexpr size_t kBatch = 256;      // names at most
constexpr size_t kQueue = 32;       // batches that may wait for the interface thread
constexpr size_t kLinkText = 1023;  // bytes kept of a link's target
constexpr int kTimeoutsWaited = 2;  // in one reading; then a slow file system is not waited for again
constexpr int kLongestGrace = 200;  // ms that an interrupted call gets to come back
}  // namespace

enum class ReadStage { open, names, status, link, target, owner };

// The file systems on which calls of this reading have timed out.
struct ReadSlowPlaces {
  int timeouts = 0;
  std::string directory;  // the real path of the directory read
  std::vector<std::string> mount_points, slow;

  void add(const std::string& path) {
    if (mount_points.empty()) mount_points = mount_table_read();
    ++timeouts;
    slow.push_back(mount_point_of(path, mount_points));
  }
  bool hold(const std::string& path) const {
    if (timeouts < kTimeoutsWaited) return false;
    return std::find(slow.begin(), slow.end(), mount_point_of(path, mount_points)) != slow.end();
  }
  std::string path_of(std::string_view name) const {
    return name.substr(0, 1) == "/" ? std::string(name) : directory + "/" + std::string(name);
  }
};

struct DirReader {
  std::string path;
  bool hide_dot = false;
  int timeout_ms = 0;

  std::atomic<uint64_t> call{0};     // odd: a call lasts; each call begins with a number of its own
  std::atomic<uint64_t> alarmed{0};  // the call that got the alarm signal
  std::atomic<bool> cancelled{false};

  std::mutex mutex;
  std::condition_variable filled, room;
  std::deque<std::unique_ptr<ReadBatch>> ready;
  std::vector<std::unique_ptr<ReadBatch>> idle;
  bool opened = false, ended = false, failed = false;
  bool wake_desktop = false;
  bool thread_alive = false;
  pthread_t thread{};
  std::shared_ptr<HungNote> hung;  // the thread's own: filled when it is left behind

  // Of the thread whose turn it is.
  ReadStage stage = ReadStage::open;
  int enter_fd = -1, fd = -1;
  DIR* dir = nullptr;
  std::unique_ptr<ReadBatch> batch;
  size_t next = 0;   // item whose status is due
  size_t named = 0;  // item whose owner's name is due
  bool names_end = false;
  size_t batch_size = kFirstBatch;  // follows the file system's speed, so that entries of a slow one show too
  ReadClock::time_point batch_start;
  int names_error = 0;
  std::unordered_set<uint32_t> users, groups;  // ids whose names are in the cache by now
  uint32_t last_user = 0, last_group = 0;
  ReadSlowPlaces slow;

  // Of the interface thread.
  bool opened_told = false;
  uint64_t watched = 0;
  ReadClock::time_point watched_since;

  ~DirReader() {
    if (dir) closedir(dir);
    if (enter_fd >= 0) close(enter_fd);
  }
};

namespace {
// --- the reader thread -----------------------------------------------------------------------------------

// Makes one call that can hang: work returns an errno or 0. False when the thread was left behind meanwhile:
// it must touch nothing of the reader then. The alarm signal is for one call; any other is passed over.
template <class Work>
bool bounded_call(DirReader& reader, ReadStage stage, int* error, const Work& work) {
  reader.stage = stage;
  uint64_t number = reader.call.load(std::memory_order_relaxed) + 1;
  reader.call.store(number, std::memory_order_release);
  do *error = work();
  while (*error == EINTR && reader.alarmed.load() != number);
  return reader.call.compare_exchange_strong(number, number + 1, std::memory_order_acq_rel);
}

// To be called with the mutex held, so that no waking is under way any more once dir_reader_cancel returns.
void tell_interface(DirReader& reader) {
  reader.filled.notify_one();
  if (std::exchange(reader.wake_desktop, false)) desk_wake();
}

// Opens the directory, entering it in this thread's own view of the file system first: what that would wait
// for, the interface thread's fchdir need not wait for again.
int open_directory(const std::string& path, bool private_cwd, int* enter_fd, int* fd) {
  *enter_fd = open(path.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC);
  if (*enter_fd < 0) return errno;
  if (private_cwd && fchdir(*enter_fd) != 0) return errno;
  *fd = openat(*enter_fd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  return *fd < 0 ? errno : 0;
}

bool open_stage(DirReader& reader, bool private_cwd) {
  int error, enter_fd = -1, fd = -1;
  if (!bounded_call(reader, ReadStage::open, &error,
                    [&] { return open_directory(reader.path, private_cwd, &enter_fd, &fd); })) {
    if (enter_fd >= 0) close(enter_fd);
    if (fd >= 0) close(fd);
    return false;
  }
  reader.enter_fd = enter_fd;
  reader.fd = fd;
  if (fd >= 0 && !(reader.dir = fdopendir(fd))) close(fd);
  char real[PATH_MAX];
  const std::string link = "/proc/self/fd/" + std::to_string(enter_fd);
  const ssize_t length = enter_fd >= 0 ? readlink(link.c_str(), real, sizeof real) : -1;
  reader.slow.directory = length > 0 ? std::string(real, static_cast<size_t>(length)) : reader.path;
  std::lock_guard lock(reader.mutex);
  reader.opened = enter_fd >= 0;
  reader.failed = !reader.dir;
  tell_interface(reader);
  return true;
}

bool wanted_name(const char* name, bool hide_dot) {
  if (name[0] != '.') return true;
  if (!name[1] || (name[1] == '.' && !name[2])) return false;
  return !hide_dot;
}

std::unique_ptr<ReadBatch> empty_batch(DirReader& reader) {
  std::unique_ptr<ReadBatch> batch;
  {
    std::lock_guard lock(reader.mutex);
    if (!reader.idle.empty()) {
      batch = std::move(reader.idle.back());
      reader.idle.pop_back();
    }
  }
  if (!batch) batch = std::make_unique<ReadBatch>();
  batch->items.clear();
  batch->text.clear();
  return batch;
}

void add_name(ReadBatch* batch, std::string_view name) {
  ReadItem& item = batch->items.emplace_back();
  item.name = static_cast<uint32_t>(batch->text.size());
  item.hash = static_cast<uint32_t>(std::hash<std::string_view>()(name));
  item.state = 0;
  batch->text.append(name.data(), name.size() + 1);
}

// Reads names into a new batch until it is full or there are no more. False: left behind.
bool names_stage(DirReader& reader) {
  reader.batch = empty_batch(reader);
  reader.next = reader.named = 0;
  reader.batch_start = ReadClock::now();
  while (reader.batch->items.size() < reader.batch_size) {
    DIR* dir = reader.dir;
    const struct dirent64* entry = nullptr;
    int error;
    if (!bounded_call(reader, ReadStage::names, &error, [&] {
          errno = 0;
          entry = readdir64(dir);
          return entry ? 0 : errno;
        })) {
      closedir(dir);  // it went with this thread
      return false;
    }
    if (!entry) {
      reader.names_end = true;
      reader.names_error = error;
      break;
    }
    if (wanted_name(entry->d_name, reader.hide_dot)) add_name(reader.batch.get(), entry->d_name);
  }
  return true;
}

const char* name_of(const DirReader& reader, const ReadItem& item) {
  return reader.batch->text.data() + item.name;
}

void note_unread(ReadItem* item, bool timeout) {
  std::memset(&item->st, 0, sizeof item->st);
  item->st.st_uid = static_cast<uid_t>(-1);
  item->st.st_gid = static_cast<gid_t>(-1);
  item->state |= READ_UNREAD | (timeout ? READ_TIMEOUT : 0);
}

// A call on item took too long; what the stage would have found is noted as missing.
void note_timeout(DirReader& reader, ReadItem* item, ReadStage stage) {
  const std::string path = reader.slow.path_of(name_of(reader, *item));
  if (stage == ReadStage::status) note_unread(item, true);
  if (stage == ReadStage::link) item->state |= READ_UNREAD | READ_NO_LINK_TEXT;
  if (stage == ReadStage::target) item->state |= READ_UNREAD;
  if (stage == ReadStage::target)
    reader.slow.add(reader.slow.path_of(reader.batch->text.data() + item->link));
  else
    reader.slow.add(path);
}

// Reads the link's target and then the target's status, which replaces the link's own. False: left behind.
bool link_stages(DirReader& reader, ReadItem* item, const char* name) {
  char text[kLinkText + 1];
  ssize_t length = -1;
  int error;
  item->state |= READ_LINK;
  if (!bounded_call(reader, ReadStage::link, &error, [&, fd = reader.fd] {
        length = readlinkat(fd, name, text, kLinkText);
        return length < 0 ? errno : 0;
      }))
    return false;
  if (error) item->state |= READ_UNREAD | READ_NO_LINK_TEXT;
  if (error == EINTR) return reader.slow.add(reader.slow.path_of(name)), true;
  text[error ? 0 : length] = '\0';
  item->link = static_cast<uint32_t>(reader.batch->text.size());
  reader.batch->text.append(text, std::strlen(text) + 1);
  if (!error && reader.slow.hold(reader.slow.path_of(text))) {
    item->state |= READ_UNREAD;
    return true;
  }
  struct stat64 target;
  if (!bounded_call(reader, ReadStage::target, &error,
                    [&, fd = reader.fd] { return fstatat64(fd, name, &target, 0) == 0 ? 0 : errno; }))
    return false;
  if (error == EINTR)
    note_timeout(reader, item, ReadStage::target);
  else if (error)
    item->state |= READ_UNREAD;
  else
    item->st = target;
  return true;
}

bool status_stages(DirReader& reader, ReadItem* item) {
  char name[NAME_MAX + 1];  // the thread's own: the batch may go on without it
  const char* batch_name = name_of(reader, *item);
  std::memcpy(name, batch_name, std::min(std::strlen(batch_name), sizeof name - 1) + 1);
  name[NAME_MAX] = '\0';
  if (reader.slow.timeouts >= kTimeoutsWaited && reader.slow.hold(reader.slow.path_of(name))) {
    note_unread(item, true);
    return true;
  }
  struct stat64 status;
  int error;
  if (!bounded_call(reader, ReadStage::status, &error, [&, fd = reader.fd] {
        return fstatat64(fd, name, &status, AT_SYMLINK_NOFOLLOW) == 0 ? 0 : errno;
      }))
    return false;
  if (error == EINTR)
    note_timeout(reader, item, ReadStage::status);
  else if (error)
    note_unread(item, false);
  else
    item->st = status;
  return error || !S_ISLNK(item->st.st_mode) || link_stages(reader, item, name);
}

// Has the names of the owner and the group in the cache before the interface thread wants them.
bool owner_stage(DirReader& reader, const ReadItem& item) {
  if (item.state & READ_UNREAD && !(item.state & READ_LINK)) return true;
  const uint32_t user = item.st.st_uid, group = item.st.st_gid;
  const bool as_before = user == reader.last_user && group == reader.last_group && !reader.users.empty();
  if (as_before) return true;
  reader.last_user = user;
  reader.last_group = group;
  const bool new_user = reader.users.insert(user).second, new_group = reader.groups.insert(group).second;
  if (!new_user && !new_group) return true;
  int error;
  return bounded_call(reader, ReadStage::owner, &error, [&] {
    char text[16];
    if (new_user) dir_get_username(user, text);
    if (new_group) dir_get_groupname(group, text);
    return 0;
  });
}

void hand_over_batch(DirReader& reader) {
  const auto took = ReadClock::now() - reader.batch_start;
  if (took < std::chrono::milliseconds(20)) reader.batch_size = std::min(reader.batch_size * 2, kBatch);
  if (took > std::chrono::milliseconds(200)) reader.batch_size = std::max<size_t>(reader.batch_size / 4, 1);
  std::unique_lock lock(reader.mutex);
  reader.room.wait(lock, [&] { return reader.ready.size() < kQueue || reader.cancelled; });
  reader.ready.push_back(std::move(reader.batch));
  tell_interface(reader);
}

// Everything from where the thread before was left. False: this one was left behind too.
bool read_on(DirReader& reader) {
  while (!reader.cancelled) {
    if (!reader.batch && !names_stage(reader)) return false;
    std::vector<ReadItem>& items = reader.batch->items;
    while (reader.next < items.size()) {
      if (reader.cancelled) return true;
      if (!status_stages(reader, &items[reader.next])) return false;
      ++reader.next;
    }
    for (; reader.named < items.size(); ++reader.named)
      if (!owner_stage(reader, items[reader.named])) return false;
    hand_over_batch(reader);
    if (reader.names_end) return true;
  }
  return true;
}

// hung is held for as long as the thread lives.
void reader_run(const std::shared_ptr<DirReader>& reader, const std::shared_ptr<HungNote>& hung) {
  static_cast<void>(hung);
  fs_worker_signals();
  const bool private_cwd = unshare(CLONE_FS) == 0;
  if (reader->stage == ReadStage::open && !open_stage(*reader, private_cwd)) return;
  if ((reader->dir || reader->batch) && !read_on(*reader)) return;
  std::lock_guard lock(reader->mutex);
  reader->thread_alive = false;
  reader->ended = true;
  if (reader->names_error) reader->failed = true;
  tell_interface(*reader);
}

// --- the interface thread --------------------------------------------------------------------------------

bool start_thread(const std::shared_ptr<DirReader>& reader) {
  try {
    std::lock_guard lock(reader->mutex);
    reader->hung = std::make_shared<HungNote>();
    std::thread thread(reader_run, reader, reader->hung);
    reader->thread = thread.native_handle();
    reader->thread_alive = true;
    thread.detach();
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

// The thread hangs in a call: nobody signals it any more, and its file system is known for it.
void leave_behind(DirReader& reader) {
  HungNote note =
      hung_note(reader.stage == ReadStage::target
                    ? reader.slow.path_of(reader.batch->text.data() + reader.batch->items[reader.next].link)
                    : reader.path);
  std::lock_guard lock(reader.mutex);
  reader.thread_alive = false;
  *std::exchange(reader.hung, std::make_shared<HungNote>()) = std::move(note);
}

// Notes what the call that hangs would have found and starts a thread on what comes next.
void go_on_without_thread(const std::shared_ptr<DirReader>& reader) {
  DirReader& r = *reader;
  leave_behind(r);
  bool go_on = true;
  switch (r.stage) {
    case ReadStage::names:  // the names read so far are still dealt with
      r.dir = nullptr;
      r.names_end = true;
      r.names_error = EINTR;
      break;
    case ReadStage::open:
      go_on = false;
      break;
    case ReadStage::owner:
      dir_give_up_name(r.batch->items[r.named].st.st_uid, false);
      dir_give_up_name(r.batch->items[r.named].st.st_gid, true);
      ++r.named;
      break;
    default:
      note_timeout(r, &r.batch->items[r.next], r.stage);
      ++r.next;
  }
  if (go_on && start_thread(reader)) return;
  std::lock_guard lock(r.mutex);
  r.failed = r.ended = true;
}

// Sees that no call lasts longer than it may.
void watch_call(const std::shared_ptr<DirReader>& reader) {
  DirReader& r = *reader;
  const auto now = ReadClock::now();
  uint64_t number = r.call.load(std::memory_order_acquire);
  if (number != r.watched) {
    r.watched = number;
    r.watched_since = now;
  }
  if (!(number & 1)) return;
  const auto lasted = std::chrono::duration_cast<std::chrono::milliseconds>(now - r.watched_since).count();
  if (lasted < r.timeout_ms) return;
  if (r.alarmed.exchange(number) != number) {
    std::lock_guard lock(r.mutex);
    if (r.thread_alive) pthread_kill(r.thread, SIGALRM);
  }
  if (lasted < r.timeout_ms + std::min(r.timeout_ms, kLongestGrace)) return;
  if (r.call.compare_exchange_strong(number, number + 1, std::memory_order_acq_rel))
    go_on_without_thread(reader);
}
}  // namespace

std::shared_ptr<DirReader> dir_reader_start(const std::string& path, bool hide_dot, int timeout_ms) {
  if (hung_full(path)) return nullptr;
  auto reader = std::make_shared<DirReader>();
  reader->path = path;
  reader->hide_dot = hide_dot;
  reader->timeout_ms = timeout_ms;
  reader->watched_since = ReadClock::now();
  return start_thread(reader) ? reader : nullptr;
}

ReadStep dir_reader_next(const std::shared_ptr<DirReader>& reader, int wait_ms, bool wake,
                         std::unique_ptr<ReadBatch>* batch) {
  DirReader& r = *reader;
  watch_call(reader);
  std::unique_lock lock(r.mutex);
  if (*batch) r.idle.push_back(std::move(*batch));
  const auto something = [&] { return (r.opened && !r.opened_told) || !r.ready.empty() || r.ended; };
  r.filled.wait_for(lock, std::chrono::milliseconds(wait_ms), something);
  if (r.opened && !r.opened_told) {
    r.opened_told = true;
    return ReadStep::opened;
  }
  if (!r.ready.empty()) {
    *batch = std::move(r.ready.front());
    r.ready.pop_front();
    r.room.notify_one();
    return ReadStep::batch;
  }
  if (r.ended) return r.failed ? ReadStep::failed : ReadStep::ended;
  r.wake_desktop = wake;
  return ReadStep::slow;
}

int dir_reader_enter_fd(const DirReader& reader) {
  return reader.enter_fd;
}

void dir_reader_cancel(const std::shared_ptr<DirReader>& reader) {
  reader->cancelled = true;
  const uint64_t call = reader->call.load(std::memory_order_acquire);
  HungNote note = call & 1 ? hung_note(reader->path) : nullptr;
  std::lock_guard lock(reader->mutex);
  if (reader->thread_alive && note) {  // as far as anyone can tell, it hangs
    reader->alarmed = call;
    pthread_kill(reader->thread, SIGALRM);
    *reader->hung = std::move(note);
  }
  reader->wake_desktop = false;
  reader->room.notify_all();
}
