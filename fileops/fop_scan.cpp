#include "fileops/fop_scan.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "fileops/alloc_list.h"
#include "fileops/fop_move.h"
#include "fileops/fop_path.h"
#include "fileops/fop_progress.h"
#include "views/fname.h"

namespace {
enum class ScanStep { next, abort };

struct ScanItem {
  fop_request* request;
  int32_t group, index;
  fop_fd* dir_fd;  // the group's directory, once it was needed
  int dir_error;
  std::string path;
  struct stat status;
  bool followed;

  fop_group& list() const { return *request->groups[group]; }
  char*& name() const { return list().names[index]; }
  int dir() const { return dir_fd->get(); }
  // An item that no later pass is to look at.
  void drop() const { name()[0] = '\0', list().kept = true; }
};

ScanStep out_of_memory() {
  fop_ENOMEM();
  return ScanStep::abort;
}

// Asks "&Continue|&Abort" with the path and the error's text.
ScanStep report(const ScanItem& item, const char* title, const char* format_head, const char* format_tail) {
  const int error = errno;
  const std::string shown = fname_decode(item.path.c_str());
  const int answer = fop_alert(item.request, title, "&Continue|&Abort", "%s'%s'%s\n%s\n", format_head,
                               shown.c_str(), format_tail, strerror(error));
  return answer == 2 ? ScanStep::abort : ScanStep::next;
}

ScanStep stat_failed(const ScanItem& item) {
  const ScanStep answer = report(item, "File Scan", "Unable to stat ", "");
  if (answer == ScanStep::next) item.drop();
  return answer;
}

// Whether a type can be told without a status call: only a delete has no use for sizes.
bool known_type(const ScanItem& item, mode_t* type) {
  if (item.request->kind != FOP_DELETE) return false;
  const uint8_t told = item.list().types[item.index];
  if (told == DT_UNKNOWN) return false;
  *type = DTTOIF(told);
  return true;
}

bool open_group(ScanItem* item) {
  if (!*item->dir_fd && item->dir_error == 0) {
    *item->dir_fd = fop_open_source(*item->request, item->group);
    if (!*item->dir_fd) item->dir_error = errno;
  }
  errno = item->dir_error;
  return item->dir_error == 0;
}

// The item's status, without following a link. A plain file of a delete needs neither that nor its path.
int take_status(ScanItem* item) {
  mode_t type = 0;
  std::memset(&item->status, 0, sizeof item->status);
  const bool known = known_type(*item, &type);
  item->status.st_mode = type;
  if (known && !S_ISDIR(type)) return 0;
  item->path = _build_path(item->list().dir, item->name());
  if (!open_group(item)) return -1;
  if (known) return 0;
  if (item->request->kind != FOP_DELETE && item->path.size() > FOP_PATH_MAX) return errno = ENAMETOOLONG, -1;
  return fstatat(item->dir(), item->name(), &item->status, AT_SYMLINK_NOFOLLOW);
}

// The once-asked question what a copy or move does with links.
ScanStep settle_links(fop_request* request) {
  if (request->flags & (FOP_FOLLOW_LINKS | FOP_COPY_LINKS)) return ScanStep::next;
  const bool move = request->kind == FOP_MOVE;
  const int answer =
      fop_alert(request, move ? "Move" : "Copy", "&Files|@&Links|#&Abort",
                "Symbolic links detected in the file list\nWhat do you want to %s ?", move ? "move" : "copy");
  if (answer != 1 && answer != 2) return ScanStep::abort;
  request->flags |= answer == 1 ? FOP_FOLLOW_LINKS : FOP_COPY_LINKS;
  return ScanStep::next;
}

// A followed link that leads back above itself would be listed without end.
bool leads_above(const ScanItem& item, fop_identity identity) {
  for (int32_t g = item.group; g > 0; g = item.request->groups[g]->parent)
    if (item.request->groups[g]->source == identity) return true;
  struct stat top;
  return fstatat(AT_FDCWD, item.request->groups[0]->dir, &top, 0) == 0 && fop_identity_of(top) == identity;
}

// What a directory lists: its names and what it told of each.
struct Listing {
  std::vector<char*> names;
  std::vector<uint8_t> types;
};

bool is_dot(const char* name) {
  return name[0] == '.' && (!name[1] || (name[1] == '.' && !name[2]));
}

// Registers the names of one filled buffer, in one block: a block for each would cost as much time as the
// rest.
bool keep_names(fop_request* request, ssize_t filled, Listing* listing) {
  size_t size = 1;
  const auto entry_at = [&](ssize_t at) { return reinterpret_cast<const dirent64*>(request->buf + at); };
  for (ssize_t at = 0; at < filled; at += entry_at(at)->d_reclen)
    size += std::strlen(entry_at(at)->d_name) + 1;
  char* free_place = static_cast<char*>(std::malloc(size));
  if (!alloc_add(request->mem, free_place)) {
    std::free(free_place);
    return false;
  }
  for (ssize_t at = 0; at < filled && !fop_cancelled(request); at += entry_at(at)->d_reclen) {
    const dirent64& entry = *entry_at(at);
    if (is_dot(entry.d_name)) continue;
    listing->names.push_back(free_place);
    listing->types.push_back(entry.d_type);
    free_place = stpcpy(free_place, entry.d_name) + 1;
    ++request->total_items;
    fop_update_info(request, "Scanning", nullptr, nullptr, nullptr, nullptr, FOP_PERCENT_KEEP, FOP_TIME_KEEP);
  }
  return true;
}

// The copy buffer, idle while the list is built, takes the entries: a stream would cost a block and three
// calls for every directory.
ScanStep read_names(const ScanItem& item, int dir, Listing* listing) {
  fop_request* request = item.request;
  for (;;) {
    const ssize_t filled = getdents64(dir, request->buf, request->bufsize);
    if (filled < 0 && errno == EINTR) continue;
    if (filled < 0) return report(item, "Dir Reading", "Unable to read ", " directory");
    if (filled > 0 && !keep_names(request, filled, listing)) return out_of_memory();
    if (fop_cancelled(request)) return ScanStep::abort;
    if (filled == 0) return ScanStep::next;
  }
}

template <typename T>
T* registered(fop_request* request, size_t count) {
  void* block = std::calloc(std::max<size_t>(count, 1), sizeof(T));
  if (!alloc_add(request->mem, block)) {
    std::free(block);
    return nullptr;
  }
  return static_cast<T*>(block);
}

bool append_group(fop_request* request, fop_group* group) {
  if (request->ngroups == request->groups_capacity) {
    const int32_t capacity = request->groups_capacity * 2 + 16;
    void* grown = alloc_realloc(request->mem, request->groups, capacity * sizeof(fop_group*));
    if (!grown) return false;
    request->groups = static_cast<fop_group**>(grown);
    request->groups_capacity = capacity;
  }
  request->groups[request->ngroups++] = group;
  return true;
}

// What was listed becomes a new group.
bool make_group(const ScanItem& item, char* path, const Listing& listing, fop_identity identity) {
  fop_request* request = item.request;
  const size_t count = listing.names.size();
  char** names = registered<char*>(request, count);
  uint8_t* kinds = registered<uint8_t>(request, count);
  fop_group* group = registered<fop_group>(request, 1);
  if (!names || !kinds || !group) return false;
  std::copy(listing.names.begin(), listing.names.end(), names);
  std::copy(listing.types.begin(), listing.types.end(), kinds);
  group->dir = path;
  group->count = static_cast<int32_t>(count);
  group->names = names;
  group->types = kinds;
  group->parent = item.group;
  group->index = item.index;
  group->source = identity;
  group->through_link = item.followed || item.list().through_link;
  return append_group(request, group);
}

ScanStep scan_directory(const ScanItem& item) {
  fop_request* request = item.request;
  char* path = strdup(item.path.c_str());
  if (!alloc_add(request->mem, path)) {
    std::free(path);
    return out_of_memory();
  }
  const fop_fd fd(openat(item.dir(), item.name(),
                         O_RDONLY | O_DIRECTORY | O_CLOEXEC | O_NONBLOCK | (item.followed ? 0 : O_NOFOLLOW)));
  struct stat opened;
  if (!fd || fstat(fd.get(), &opened) != 0)
    return report(item, "Dir Reading", "Unable to open ", " directory");
  const fop_identity identity = fop_identity_of(opened);
  if (item.followed && leads_above(item, identity)) return errno = ELOOP, stat_failed(item);
  if (request->kind != FOP_DELETE && std::find(request->dest_chain.begin(), request->dest_chain.end(),
                                               identity) != request->dest_chain.end()) {
    fop_refuse_itself(request);
    return ScanStep::abort;
  }
  Listing listing;
  if (read_names(item, fd.get(), &listing) == ScanStep::abort) return ScanStep::abort;
  return make_group(item, path, listing, identity) ? ScanStep::next : out_of_memory();
}

ScanStep scan_item(ScanItem* item) {
  fop_request* request = item->request;
  item->followed = false;
  if (take_status(item) != 0) return stat_failed(*item);
  if (request->kind != FOP_DELETE && S_ISLNK(item->status.st_mode)) {
    if (settle_links(request) == ScanStep::abort) return ScanStep::abort;
    if (request->flags & FOP_FOLLOW_LINKS) {
      if (fstatat(item->dir(), item->name(), &item->status, 0) != 0) return stat_failed(*item);
      item->followed = true;
    }
  }
  const mode_t mode = item->status.st_mode;
  if (!S_ISREG(mode) && !S_ISFIFO(mode) && !S_ISLNK(mode) && !S_ISDIR(mode))
    return item->drop(), ScanStep::next;
  item->list().types[item->index] = IFTODT(mode);
  request->total_bytes += item->status.st_size;
  return S_ISDIR(mode) ? scan_directory(*item) : ScanStep::next;
}
}  // namespace

int fop_build_filelist(fop_request* request) {
  for (int32_t g = 0; g < request->ngroups; ++g) {
    fop_fd dir;
    ScanItem item{request, g, 0, &dir, 0, {}, {}, false};
    for (int32_t i = 0; i < request->groups[g]->count; ++i) {
      item.index = i;
      if (!item.name()[0]) continue;
      if (fop_cancelled(request) || scan_item(&item) == ScanStep::abort) return -1;
    }
  }
  return 0;
}
