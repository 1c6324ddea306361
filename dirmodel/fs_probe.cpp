#include "dirmodel/fs_probe.h"

#include <dirent.h>
#include <fcntl.h>
#include <pthread.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <climits>
#include <condition_variable>
#include <csignal>
#include <cstring>
#include <memory>
#include <mutex>
#include <system_error>
#include <thread>

#include "dirmodel/hung_places.h"
#include "dirmodel/text.h"
#include "platform/desktop.h"
#include "views/fname.h"

namespace {
using ProbeClock = std::chrono::steady_clock;

// An ordinary probe ends within this time; only a slow one makes the interface run events meanwhile.
constexpr auto kQuietWait = std::chrono::milliseconds(20);
// What a thread gets to come back after the alarm signal.
constexpr auto kGrace = std::chrono::milliseconds(200);

unsigned sLooksGivenUp = 0, sAllGivenUp = 0;  // of the interface thread

struct Probe {
  std::function<void()> work;
  std::mutex mutex;  // the thread cannot end while it is held: its id stays good for a signal
  std::condition_variable changed;
  bool done = false;
  bool wake_desktop = false;
  pthread_t thread{};
  std::string path;    // what it is about
  bool looks = false;  // it only looks
  unsigned begun = 0, all_begun = 0;
  HungNote hung;  // once it was left behind
};

// Whether the interface thread waits for it no longer.
bool given_up(const Probe& probe) {
  if (!desk_on_interface_thread()) return false;
  return desk_ended() || probe.all_begun != sAllGivenUp || (probe.looks && probe.begun != sLooksGivenUp);
}

bool probe_wait_quietly(Probe& probe, ProbeClock::time_point end) {
  std::unique_lock lock(probe.mutex);
  return probe.changed.wait_until(lock, end, [&] { return probe.done; });
}

bool probe_wait(Probe& probe, ProbeClock::time_point end) {
  if (!desk_on_interface_thread()) return probe_wait_quietly(probe, end);
  for (;;) {
    {
      std::lock_guard lock(probe.mutex);
      if (probe.done) return true;
      probe.wake_desktop = true;
    }
    if (given_up(probe)) return false;
    const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(end - ProbeClock::now()).count();
    if (left <= 0) return false;
    desk_pending_events(static_cast<int>(std::min<long long>(left, 50)));
  }
}

void probe_run(const std::shared_ptr<Probe>& probe) {
  fs_worker_signals();
  probe->work();
  probe->work = nullptr;
  std::lock_guard lock(probe->mutex);
  probe->done = true;
  probe->changed.notify_all();
  if (probe->wake_desktop) desk_wake();  // while it is locked: who waits for this end knows it is over
}

// > 0 when the path is a directory, as fs_path_is_directory says it.
int link_count(const char* path) {
  struct stat64 status;
  if (stat64(path, &status) != 0) return -1;
  if (!S_ISDIR(status.st_mode)) return 0;
  // Some file systems give all bits for "not known".
  return status.st_nlink ? static_cast<int>(std::min<nlink_t>(status.st_nlink, INT_MAX)) : 2;
}

bool is_subdirectory(int fd, const struct dirent64& entry, bool dot_names) {
  if (std::strcmp(entry.d_name, ".") == 0 || std::strcmp(entry.d_name, "..") == 0) return false;
  if (entry.d_name[0] == '.' && !dot_names) return false;
  if (entry.d_type != DT_UNKNOWN) return entry.d_type == DT_DIR;
  struct stat64 status;
  return fstatat64(fd, entry.d_name, &status, AT_SYMLINK_NOFOLLOW) == 0 && S_ISDIR(status.st_mode);
}

// Runs a question about a path in bounded time; -1 when the answer does not come.
int bounded_answer(const std::string& path, int (*question)(const char* path, int flags), int flags) {
  auto answer = std::make_shared<int>(-1);
  const bool ended = fs_bounded_look(path, [=] { *answer = question(path.c_str(), flags); });
  return ended ? *answer : -1;
}
}  // namespace

void fs_worker_signals() {
  static std::once_flag once;
  std::call_once(once, [] {
    // Does nothing: it only makes a blocked call return with EINTR.
    struct sigaction alarm_int = {};
    alarm_int.sa_handler = [](int) {};
    sigaction(SIGALRM, &alarm_int, nullptr);
  });
  sigset_t blocked;
  sigfillset(&blocked);
  for (int signal : {SIGALRM, SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGPROF}) sigdelset(&blocked, signal);
  pthread_sigmask(SIG_SETMASK, &blocked, nullptr);
}

static bool probe_bounded(const std::shared_ptr<Probe>& probe, int timeout_ms) {
  const auto start = ProbeClock::now(), end = start + std::chrono::milliseconds(timeout_ms);
  try {
    std::lock_guard lock(probe->mutex);
    std::thread thread(probe_run, probe);
    probe->thread = thread.native_handle();
    thread.detach();
  } catch (const std::system_error&) {
    probe->work();  // no thread to be had: better slow than without an answer
    return true;
  }
  if (probe_wait_quietly(*probe, std::min(end, start + kQuietWait))) return true;
  if (probe_wait(*probe, end)) return true;
  {
    std::lock_guard lock(probe->mutex);
    if (probe->done) return true;
    pthread_kill(probe->thread, SIGALRM);
  }
  if (probe_wait(*probe, ProbeClock::now() + kGrace)) return true;
  // Left behind: by the time it ends, the desktop may have ended too.
  HungNote note = probe->path.empty() ? nullptr : hung_note(probe->path);
  std::lock_guard lock(probe->mutex);
  probe->wake_desktop = false;
  if (!probe->done) probe->hung = std::move(note);
  return probe->done;
}

static bool probe_path(const std::string& path, bool looks, std::function<void()> work, int timeout_ms) {
  if (!path.empty() && hung_full(path)) return false;
  auto probe = std::make_shared<Probe>();
  probe->work = std::move(work);
  probe->path = path;
  probe->looks = looks;
  probe->begun = sLooksGivenUp;
  probe->all_begun = sAllGivenUp;
  return probe_bounded(probe, timeout_ms);
}

bool fs_bounded(const std::string& path, std::function<void()> work, int timeout_ms) {
  return probe_path(path, false, std::move(work), timeout_ms);
}

bool fs_bounded_look(const std::string& path, std::function<void()> work) {
  return probe_path(path, true, std::move(work), 10000);
}

void fs_give_up() {
  ++sAllGivenUp;
  desk_wake();
}

void fs_give_up_looking() {
  ++sLooksGivenUp;
  desk_wake();
}

int fs_look_for_subdirectories(const char* path, int flags) {
  const int links = link_count(path);
  if (links > 2) return links;
  DIR* dir = opendir(path);
  if (!dir) return -1;
  int found = 0;
  while (const struct dirent64* entry = readdir64(dir)) {
    if (!is_subdirectory(dirfd(dir), *entry, (flags & 2) != 0)) continue;
    found = links > 0 ? links : 2;
    break;
  }
  closedir(dir);
  return found;
}

int fs_path_is_directory(const char* path) {
  if (!path) return -1;
  return bounded_answer(
      path, [](const char* p, int) { return link_count(p); }, 0);
}

int fs_path_has_subdirectories(const char* parent, const char* name, int flags) {
  const std::string shown = es_construct_fullpath(parent, name);
  const char* path = fname_encode(shown.c_str());
  if (!path) return -2;
  return bounded_answer(path, fs_look_for_subdirectories, flags);
}
