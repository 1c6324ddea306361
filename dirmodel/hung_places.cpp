#include "dirmodel/hung_places.h"

#include <mntent.h>

#include <cstdio>
#include <map>
#include <mutex>
#include <utility>
#include <vector>

#include "dirmodel/mount_table.h"

namespace {
constexpr int kThreadsSpent = 4;

struct HungPlaces {
  std::mutex mutex;
  std::map<std::string, int> threads;  // by place
};

// Never destroyed: a thread may come back while the process ends.
HungPlaces& hung_places() {
  static HungPlaces& places = *new HungPlaces;
  return places;
}

bool answers_come_from_elsewhere(const std::string& type) {
  for (const char* kind : {"fuse", "nfs", "cifs", "smb", "9p", "ceph", "afs", "autofs", "lustre"})
    if (type.rfind(kind, 0) == 0) return true;
  return false;
}

// A path that a symbolic link leads elsewhere lies, by its text, on the disk that the link is on. That disk
// is not to be blamed: only a file system that can hang by its kind is taken as a whole.
std::string hung_place_of(const std::string& path) {
  std::vector<std::string> remote;
  if (FILE* table = setmntent("/proc/self/mounts", "re")) {
    struct mntent entry;
    char text[8192];
    while (getmntent_r(table, &entry, text, sizeof text))
      if (answers_come_from_elsewhere(entry.mnt_type)) remote.push_back(entry.mnt_dir);
    endmntent(table);
  }
  const std::string point = mount_point_of(path, remote);
  return point == "/" ? path : point;
}
}  // namespace

HungNote hung_note(const std::string& path) {
  std::string place = hung_place_of(path);
  HungPlaces& places = hung_places();
  std::lock_guard lock(places.mutex);
  ++places.threads[place];
  return HungNote(&places, [place = std::move(place)](void* all) {
    auto& [mutex, threads] = *static_cast<HungPlaces*>(all);
    std::lock_guard lock(mutex);
    if (--threads[place] == 0) threads.erase(place);
  });
}

bool hung_full(const std::string& path) {
  HungPlaces& places = hung_places();
  {
    std::lock_guard lock(places.mutex);
    if (places.threads.empty()) return false;  // the ordinary case reads no table
  }
  const std::string place = hung_place_of(path);
  std::lock_guard lock(places.mutex);
  const auto found = places.threads.find(place);
  return found != places.threads.end() && found->second >= kThreadsSpent;
}
