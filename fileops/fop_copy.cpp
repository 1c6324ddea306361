#include "fileops/fop_copy.h"

#include <dirent.h>
#include <fcntl.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "fileops/fop_move.h"
#include "fileops/fop_progress.h"
#include "views/fname.h"

// --- shared by the kinds -------------------------------------------------------------------------------

int fop_copy_failed(fop_request* request, const char* format, const std::string& first, const char* second) {
  const int error = errno;
  char message[4096];
  const std::string shown = fname_decode(first.c_str());
#pragma GCC diagnostic push
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
  std::snprintf(message, sizeof message, format, shown.c_str(), second);
#pragma GCC diagnostic pop
  errno = error;
  return fop_alert(request, "Copy/Move", "&Continue|&Abort", "%s", message) == 2 ? -1 : 1;
}

int fop_ask_overwrite(const fop_item& item) {
  if (item.request()->flags & FOP_OVERWRITE_ALL) return 0;
  const std::string shown = fname_decode(item.dest.c_str());
  const int answer = fop_alert(item.request(), "Copy/Move", "&Skip|&Overwrite|Overwrite &All|a&Bort",
                               "The '%s' file exists.\nWhat do you want to do ?\n", shown.c_str());
  if (answer == 4) return -1;
  if (answer == 1) return 1;
  if (answer == 3) item.request()->flags |= FOP_OVERWRITE_ALL;
  return 0;
}

int fop_refuse_made(const fop_item& item) {
  return fop_copy_failed(item.request(), "Error writing '%s'\n%s\n", item.dest,
                         "Another item of this operation is already there");
}

int fop_copy_itself() {
  fop_errinfo("File Scan", "Can't copy file(s) into itself.");
  return -1;
}

int fop_owner_failed(const fop_item& item) {
  fop_request* request = item.request();
  if (request->assume_ignore_owner) request->flags |= FOP_IGNORE_OWNER;
  if (request->flags & FOP_IGNORE_OWNER) return 0;
  const std::string shown = fname_decode(item.dest.c_str());
  const int answer = fop_alert(request, "Copy/Move", "&Ignore|&Abort",
                               "Unable to change owner permissions '%s'\n", shown.c_str());
  if (answer == 2) return -1;
  request->flags |= FOP_IGNORE_OWNER;
  return 0;
}

bool fop_settle_unopened(const fop_item& item) {
  const int dir = item.dest_dir;
  const char* name = item.dest_name.c_str();
  struct stat made;
  const bool known = fstatat(dir, name, &made, AT_SYMLINK_NOFOLLOW) == 0;
  if (known) fop_note_made(item.request(), made, dir, item.dest);
  bool owned = known && made.st_uid == item.status.st_uid && made.st_gid == item.status.st_gid;
  if (!owned) owned = fchownat(dir, name, item.status.st_uid, item.status.st_gid, AT_SYMLINK_NOFOLLOW) == 0;
  const timespec times[2] = {item.status.st_atim, item.status.st_mtim};
  utimensat(dir, name, times, AT_SYMLINK_NOFOLLOW);
  return owned;
}

mode_t fop_mode_while_written(mode_t source) {
  const mode_t owner = source >> 6 & 7, group = source >> 3 & 7, others = source & 7;
  const mode_t everyone = owner & group & others;  // the copy's group and owner may be other people
  return owner << 6 | everyone << 3 | everyone;
}

std::string fop_temp_name() {
  static std::atomic<unsigned> sLast{0};
  timespec now;
  clock_gettime(CLOCK_REALTIME, &now);
  char name[64];
  std::snprintf(name, sizeof name, ".zan-%x-%x-%lx", static_cast<unsigned>(getpid()), ++sLast,
                static_cast<unsigned long>(now.tv_nsec));
  return name;
}

void fop_note_written_system(fop_request* request, dev_t device, int fd) {
  for (const auto& [known, descriptor] : request->written_systems)
    if (known == device) return;
  int kept = openat(fd, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC);
  if (kept < 0 && errno == ENOTDIR) kept = fcntl(fd, F_DUPFD_CLOEXEC, 0);
  if (kept >= 0) request->written_systems.emplace_back(device, kept);
}

// --- one item ------------------------------------------------------------------------------------------

// The destination directory itself, where the one directory that is copied is to become it.
static int make_dest_directory(const fop_item& item) {
  fop_request* request = item.request();
  if (!(request->flags & FOP_MKDEST)) return 0;
  const mode_t mode = fop_mode_while_written(item.status.st_mode) | 0700;
  if (item.dest_dir == -1 || mkdirat(item.dest_dir, item.dest_name.c_str(), mode) != 0) {
    fop_errinfo("Make Directory", "Unable to create '%s' directory\n", request->dest);
    return -1;
  }
  request->flags &= ~static_cast<uint32_t>(FOP_MKDEST);
  return 0;
}

// The item's status; what the scan found to be a file is opened at once, which saves a look at its path. With
// *file not open for a regular file, *open_error tells why.
static int look_at_source(fop_item* item, fop_fd* file, int* open_error) {
  const fop_place& place = *item->place;
  if (item->source.size() > FOP_PATH_MAX || item->dest.size() > FOP_PATH_MAX) return errno = ENAMETOOLONG, -1;
  if (!place.source) return errno = place.source_error, -1;
  const bool follow = item->request()->flags & FOP_FOLLOW_LINKS;
  const int flags = O_RDONLY | O_CLOEXEC | O_NONBLOCK | O_NOCTTY | (follow ? 0 : O_NOFOLLOW);
  bool known = item->request()->groups[place.group]->types[item->index] == DT_REG;
  for (;;) {
    if (known) {
      file->reset(openat(place.source.get(), item->name, flags));
      *open_error = errno;
      if (*file && fstat(file->get(), &item->status) == 0 && S_ISREG(item->status.st_mode)) return 0;
      file->reset();
    }
    if (fstatat(place.source.get(), item->name, &item->status, follow ? 0 : AT_SYMLINK_NOFOLLOW) != 0)
      return -1;
    if (known || !S_ISREG(item->status.st_mode)) return 0;
    known = true;
  }
}

static int copy_by_type(fop_item* item, int32_t child, fop_fd* file, int open_error) {
  fop_request* request = item->request();
  const mode_t mode = item->status.st_mode;
  if (S_ISDIR(mode)) return fop_copy_directory(*item, child < 0 ? nullptr : request->groups[child]);
  if (S_ISFIFO(mode)) return fop_copy_fifo(item);
  if (S_ISLNK(mode)) return fop_copy_link(item);
  if (S_ISREG(mode)) return fop_copy_regular(item, file, open_error);
  return fop_copy_failed(request, "Unable to open '%s'\n%s\n", item->source, strerror(ENXIO));
}

// What the source was: a followed link is marked itself, for it is the link that a move removes.
static void mark_copied(const fop_item& item) {
  fop_mark* marks = item.request()->groups[item.place->group]->marks;
  if (!marks) return;
  struct stat status = item.status;
  if (item.request()->flags & FOP_FOLLOW_LINKS)
    fstatat(item.place->source.get(), item.name, &status, AT_SYMLINK_NOFOLLOW);
  marks[item.index] = fop_mark_of(status);
}

int fop_copy_file(fop_place* place, int32_t index, int32_t child) {
  fop_request* request = place->request;
  const fop_group& group = *request->groups[place->group];
  const char* name = group.names[index];
  fop_item item{place, index, name, _build_path(group.dir, name), "", place->dest.get(), name, {}};
  item.dest = fop_dest_path(*request, item.source);
  if (place->group == 0) item.dest_name = fop_selection_dest_name(*request, name);
  fop_fd file;
  int open_error = 0;
  if (look_at_source(&item, &file, &open_error) != 0)
    return fop_copy_failed(request, "Unable to stat '%s'\n%s\n", item.source, strerror(errno));
  if (make_dest_directory(item) != 0) return -1;
  fop_show_progress(request, request->done_bytes, request->total_bytes, nullptr,
                    "From: ", item.source.c_str(), "  To: ", item.dest.c_str());
  request->done_bytes += item.status.st_size;
  if (request->done_bytes > request->total_bytes) request->total_bytes = request->done_bytes;
  const int result = copy_by_type(&item, child, &file, open_error);
  if (result == 0) {
    fop_show_progress(request, request->done_bytes, request->total_bytes);
    mark_copied(item);
  }
  return result;
}

// --- the pass ------------------------------------------------------------------------------------------

// Where the loops stopped, nothing behind is to be removed by a move, nor any directory around it.
static void forget_unreached(fop_request* request, int32_t group, int32_t index) {
  for (int32_t g = group; g < request->ngroups; ++g) {
    fop_group& list = *request->groups[g];
    for (int32_t i = g == group ? index : 0; i < list.count; ++i) list.names[i][0] = '\0';
    list.kept = true;
  }
  for (int32_t g = request->ngroups - 1; g > 0; --g) {
    const fop_group& list = *request->groups[g];
    if (!list.kept) continue;
    request->groups[list.parent]->kept = true;
    request->groups[list.parent]->names[list.index][0] = '\0';
  }
}

// What is below a directory that could not be made was told with it.
static int skip_item(fop_request* request, int32_t child) {
  if (child > 0) request->groups[child]->dest_error = ENOTDIR;
  return 1;
}

// Copies the names of one group. -1: stopped at *index.
static int copy_names(fop_place* place, int32_t* index, int32_t* next_child) {
  fop_request* request = place->request;
  fop_group& group = *request->groups[place->group];
  for (int32_t& i = *index; i < group.count; ++i) {
    if (fop_cancelled(request)) return -1;
    char* name = group.names[i];
    if (name[0]) {
      const int32_t child = fop_child_group(*request, place->group, i, next_child);
      const int result = group.dest_error ? skip_item(request, child) : fop_copy_file(place, i, child);
      if (result == 0) fop_item_done(request, group.dir, name);
      if (result != 0) name[0] = '\0', group.kept = true;
      if (result == -1) return fop_pause_trap(request), -1;
    }
    ++request->done_items;
  }
  return fop_cancelled(request) ? -1 : 0;
}

// A directory that its owner may not enter gets its mode when all below it is done.
static int end_directories(fop_request* request, const std::vector<int32_t>& waiting) {
  for (auto g = waiting.rbegin(); g != waiting.rend(); ++g) {
    fop_place place = fop_open_place(request, *g);
    if (fop_copy_directory_end(&place) == -1) return -1;
  }
  return 0;
}

int fop_copy_groups(fop_request* request) {
  int32_t next_child = 1;
  std::vector<int32_t> waiting;
  for (int32_t g = 0; g < request->ngroups; ++g) {
    fop_place place = fop_open_place(request, g);
    int32_t index = 0;
    int result = copy_names(&place, &index, &next_child);
    if (result == 0 && g > 0 && !request->groups[g]->dest_error) {
      struct stat source;
      if (place.source && fstat(place.source.get(), &source) == 0 && !(source.st_mode & S_IXUSR))
        waiting.push_back(g);
      else
        result = fop_copy_directory_end(&place) == -1 ? -1 : 0;
    }
    if (result == 0) continue;
    forget_unreached(request, g, index);
    end_directories(request, waiting);
    return -1;
  }
  return end_directories(request, waiting);
}
