#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <cstring>

#include "fileops/alloc_list.h"
#include "fileops/fop_copy.h"
#include "fileops/fop_move.h"
#include "fileops/fop_progress.h"

static void open_dest(fop_place* place) {
  const fop_request& request = *place->request;
  const fop_group& group = *request.groups[place->group];
  errno = group.dest_error;
  if (place->group == 0)
    place->dest = fop_open_selection_dest(request);
  else if (!group.dest_error)
    place->dest = fop_open_long_path(fop_dest_path(request, group.dir));
  struct stat status;
  if (place->dest && fstat(place->dest.get(), &status) == 0) {
    if (place->group > 0 && group.dest != fop_identity_of(status) &&
        (group.dest.dev != status.st_dev || !fop_numbers_change(place->dest.get()))) {
      errno = ESTALE;  // something else has come into its place
      place->dest.reset();
    } else if (request.kind == FOP_MOVE) {
      fop_note_written_system(place->request, status.st_dev, place->dest.get());
    }
  }
  if (!place->dest) place->dest_error = errno;
}

fop_place fop_open_place(fop_request* request, int32_t group) {
  fop_place place;
  place.request = request;
  place.group = group;
  place.source = fop_open_source(*request, group);
  if (!place.source) place.source_error = errno;
  open_dest(&place);
  fop_group& g = *request->groups[group];
  if (request->kind == FOP_MOVE && !g.marks) {
    void* marks = std::calloc(std::max(g.count, 1), sizeof(fop_mark));
    if (alloc_add(request->mem, marks))
      g.marks = static_cast<fop_mark*>(marks);
    else
      std::free(marks), fop_ENOMEM();
  }
  return place;
}

// Owner, then mode (an owner's change clears bits of it), then times. True when the owner is the source's.
static bool settle_directory(int fd, const struct stat& source, bool final_mode) {
  struct stat made;
  bool owned = fstat(fd, &made) == 0 && made.st_uid == source.st_uid && made.st_gid == source.st_gid;
  if (!owned) owned = fop_fd_owner(fd, source.st_uid, source.st_gid) == 0;
  mode_t mode = source.st_mode & 07777;
  if (!owned) mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
  if (final_mode) fop_fd_mode(fd, mode);
  fop_fd_times(fd, source);
  return owned;
}

// Opens the destination directory of a directory, making it where it is missing. It gets the owner's bits for
// as long as it is written into, and nobody else's.
static fop_fd enter_directory(const fop_item& item, bool exists) {
  const mode_t mode = fop_mode_while_written(item.status.st_mode) | 0700;
  const char* name = item.dest_name.c_str();
  if (!exists && mkdirat(item.dest_dir, name, mode) != 0) return fop_fd();
  fop_fd dir = fop_open_dir(item.dest_dir, name, exists ? 0 : O_NOFOLLOW);
  struct stat status;
  if (dir && fstat(dir.get(), &status) == 0 && (status.st_mode & 0700) != 0700)
    fop_fd_mode(dir.get(), (status.st_mode & 07777) | 0700);
  return dir;
}

int fop_copy_directory(const fop_item& item, fop_group* child) {
  fop_request* request = item.request();
  struct stat in_way;
  const bool exists = item.dest_dir != -1 && fstatat(item.dest_dir, item.dest_name.c_str(), &in_way, 0) == 0;
  if (exists && !S_ISDIR(in_way.st_mode)) {
    if (child) child->dest_error = ENOTDIR;
    return fop_copy_failed(request, "The '%s' is not a directory\n", item.dest);
  }
  if (exists && fop_identity_of(in_way) == fop_identity_of(item.status)) return fop_copy_itself();
  if (exists && fop_made(*request, in_way, item.dest)) {
    if (child) child->dest_error = EEXIST;
    return fop_refuse_made(item);
  }
  errno = item.place->dest_error;
  const fop_fd dir = item.dest_dir == -1 ? fop_fd() : enter_directory(item, exists);
  struct stat made;
  if (!dir || fstat(dir.get(), &made) != 0) {
    if (child) child->dest_error = errno ? errno : ENOENT;
    return fop_copy_failed(request, "Unable to make '%s' directory\n", item.dest);
  }
  if (child) child->dest = fop_identity_of(made);
  // What was not listed has no contents to wait for.
  return settle_directory(dir.get(), item.status, !child) ? 0 : fop_owner_failed(item);
}

int fop_copy_directory_end(fop_place* place) {
  fop_request* request = place->request;
  const fop_group& group = *request->groups[place->group];
  fop_item item{place, -1, "", group.dir, fop_dest_path(*request, group.dir), -1, "", {}};
  if (!place->source || fstat(place->source.get(), &item.status) != 0) {
    errno = place->source_error;
    return fop_copy_failed(request, "Unable to stat '%s'\n%s\n", item.source, strerror(errno));
  }
  fop_show_progress(request, request->done_bytes, request->total_bytes, nullptr,
                    "From: ", item.source.c_str(), "  To: ", item.dest.c_str());
  if (!place->dest) {
    return fop_copy_failed(request, "Unable to make '%s' directory\n", item.dest);
  }
  return settle_directory(place->dest.get(), item.status, true) ? 0 : fop_owner_failed(item);
}
