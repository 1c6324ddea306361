// One thread a path, at most ACTIVE_MOST of them counted at a time. A thread that has not answered in time is
// written off: its probe is answered with -1, the next one starts, and until that thread comes back (if it
// ever does) its path is answered at once, so that a dead path costs one thread and not one a look. All state
// here belongs to the interface thread; a thread owns a copy of its path and hands back a number.
#include "fileops/subdir_probe.h"

#include <chrono>
#include <deque>
#include <map>
#include <vector>

#include "dirmodel/hung_places.h"
#include "platform/desktop.h"
#include "platform/detached.h"

using ProbeClock = std::chrono::steady_clock;

namespace {
constexpr size_t ACTIVE_MOST = 4;
constexpr auto ANSWER_WITHIN = std::chrono::seconds(10);

struct SubdirProbe {
  int number;
  std::string path;
  int flags;
  int (*look)(const char* path, int flags);
  std::function<void(int)> done;
  ProbeClock::time_point started;
  std::shared_ptr<Detached> thread;
};

int sLastProbe = 0;
std::deque<SubdirProbe> sWaitingProbes;
std::map<int, SubdirProbe> sActiveProbes;
std::multimap<std::string, HungNote> sStuckPaths;  // threads written off
int sProbeTimer = 0;

void start_probes();

void answer_probe(const SubdirProbe& probe, int result) {
  if (probe.done) probe.done(result);
}

void probe_ended(int number, const std::string& path, int result) {
  auto found = sActiveProbes.find(number);
  if (found == sActiveProbes.end()) {
    const auto stuck = sStuckPaths.find(path);
    if (stuck != sStuckPaths.end()) sStuckPaths.erase(stuck);
    return;
  }
  SubdirProbe probe = std::move(found->second);
  sActiveProbes.erase(found);
  start_probes();
  answer_probe(probe, result);
}

void write_off_late_probes() {
  std::vector<SubdirProbe> late;
  const auto now = ProbeClock::now();
  for (auto at = sActiveProbes.begin(); at != sActiveProbes.end();) {
    if (now - at->second.started < ANSWER_WITHIN) {
      ++at;
      continue;
    }
    sStuckPaths.emplace(at->second.path, hung_note(at->second.path));
    detached_interrupt(at->second.thread);
    late.push_back(std::move(at->second));
    at = sActiveProbes.erase(at);
  }
  start_probes();
  for (SubdirProbe& probe : late) answer_probe(probe, -1);
}

void start_probes() {
  while (sActiveProbes.size() < ACTIVE_MOST && !sWaitingProbes.empty()) {
    SubdirProbe probe = std::move(sWaitingProbes.front());
    sWaitingProbes.pop_front();
    probe.started = ProbeClock::now();
    const auto work = [number = probe.number, path = probe.path, flags = probe.flags, look = probe.look] {
      const int result = look(path.c_str(), flags);
      desk_post([number, path, result] { probe_ended(number, path, result); });
    };
    if (sStuckPaths.count(probe.path) == 0 && !hung_full(probe.path)) probe.thread = detached_start(work);
    if (!probe.thread)
      desk_post([probe] { answer_probe(probe, -1); });
    else
      sActiveProbes[probe.number] = std::move(probe);
  }
  if (!sActiveProbes.empty() && sProbeTimer == 0) {
    sProbeTimer = desk_timer_start(500, write_off_late_probes);
  } else if (sActiveProbes.empty() && sProbeTimer != 0) {
    desk_timer_stop(sProbeTimer);
    sProbeTimer = 0;
  }
}

}  // namespace

int subdir_probe(const std::string& path, int flags, std::function<void(int)> done,
                 int (*look)(const char* path, int flags)) {
  sWaitingProbes.push_back({++sLastProbe, path, flags, look, std::move(done), {}, nullptr});
  const int number = sLastProbe;
  start_probes();
  return number;
}

void subdir_probe_cancel(int probe) {
  const auto active = sActiveProbes.find(probe);
  if (active != sActiveProbes.end()) active->second.done = nullptr;
  for (auto at = sWaitingProbes.begin(); at != sWaitingProbes.end(); ++at) {
    if (at->number != probe) continue;
    sWaitingProbes.erase(at);
    return;
  }
}
