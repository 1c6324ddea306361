// What workers hand over to their slots, and the process' last duty to them.
//
// However the process comes to its end, also when the display is gone and the toolkit itself calls exit, the
// workers that run are told to cancel and given some seconds to remove what they have half written. One that
// hangs in the kernel does not hold the process up for longer; it is then ended without the destructors that
// would pull the ground from under it.
#include "fileops/ui/slots_running.h"

#include <unistd.h>

#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <mutex>

#include "fileops/fop.h"
#include "fileops/ui/slots.h"
#include "platform/desktop.h"
#include "platform/qt/desktop_qt.h"

namespace {
constexpr auto sGrace = std::chrono::seconds(5);

struct Running {
  std::mutex mutex;
  std::condition_variable changed;
  std::map<void*, std::shared_ptr<fop_control>> slots;
  std::map<void*, fop_info> newest;  // records that wait to be drawn, one a slot
};

// Never destroyed: workers may outlive the statics.
Running& running() {
  static Running& instance = *new Running;
  return instance;
}

void end_workers(int status, void*) {
  desktop_qt_gone();
  std::unique_lock lock(running().mutex);
  for (const auto& [slot, control] : running().slots) {
    control->pause = 0;
    control->cancel = 1;
  }
  if (running().changed.wait_for(lock, sGrace, [] { return running().slots.empty(); })) return;
  std::fflush(nullptr);
  _exit(status);
}

void draw_newest(void* slot) {
  fop_info info;
  {
    std::lock_guard lock(running().mutex);
    auto found = running().newest.find(slot);
    if (found == running().newest.end()) return;
    info = std::move(found->second);
    running().newest.erase(found);
  }
  slot_show(info);
}
}  // namespace

void slots_running_watch_exit() {
  [[maybe_unused]] static const int registered = on_exit(end_workers, nullptr);
}

void slots_running_add(void* slot, std::shared_ptr<fop_control> control) {
  slots_running_watch_exit();
  std::lock_guard lock(running().mutex);
  running().slots[slot] = std::move(control);
}

void slots_running_end(void* slot) {
  std::lock_guard lock(running().mutex);
  running().slots.erase(slot);
  running().changed.notify_all();
}

void desk_slot_refresh(const fop_info& info) {
  {
    std::lock_guard lock(running().mutex);
    if (!running().newest.insert_or_assign(info.slot, info).second) return;  // its drawing is on the way
  }
  desk_post([slot = info.slot] { draw_newest(slot); });
}

void desk_slot_ended(void* slot) {
  slots_running_end(slot);
  desk_post([slot] { slot_mark_removed(slot); });
}
