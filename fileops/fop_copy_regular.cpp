#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstring>

#include "fileops/fop_copy.h"
#include "fileops/fop_copy_data.h"
#include "fileops/fop_progress.h"
#include "fileops/long_filename.h"

namespace {
// Where the copy of a file is written. A file in the way is replaced by a rename once the copy is complete,
// so that no end, however sudden, leaves less than there was; only where the directory takes no second file
// is it written in place.
struct CopyTarget {
  fop_fd resolved;  // holds dir when the name in the way is a link to a file elsewhere
  int dir = -1;
  std::string name, temp;
  fop_fd file;
  struct stat status {};  // of the file as it was made
  bool in_place = false, complete = false;
  bool touched = false;  // what was in place is gone

  const std::string& made_name() const { return temp.empty() ? name : temp; }
  // What is incomplete goes, unless it is an older content that was not touched.
  ~CopyTarget() {
    if (!file || complete || (in_place && !touched)) return;
    const int error = errno;
    struct stat now;
    if (fstatat(dir, made_name().c_str(), &now, AT_SYMLINK_NOFOLLOW) == 0 &&
        fop_identity_of(now) == fop_identity_of(status))
      unlinkat(dir, made_name().c_str(), 0);
    errno = error;
  }
};

struct RegularCopy {
  fop_item* item = nullptr;
  fop_fd in;
  struct stat opened {};   // the source's status
  bool exists = false;     // something is in the way
  struct stat in_way {};   // it, without following a link
  bool confirmed = false;  // and may be overwritten
  bool renamed = false;    // the user chose a shorter name
};

// Looks at what is in the way. 0 go on, 1 skip, -1 abort.
int settle_conflict(RegularCopy* copy) {
  fop_item& item = *copy->item;
  copy->exists = fstatat(item.dest_dir, item.dest_name.c_str(), &copy->in_way, AT_SYMLINK_NOFOLLOW) == 0;
  if (!copy->exists) return 0;
  struct stat followed = copy->in_way;
  if (S_ISLNK(followed.st_mode)) fstatat(item.dest_dir, item.dest_name.c_str(), &followed, 0);
  if (fop_identity_of(followed) == fop_identity_of(item.status)) return fop_copy_itself();
  if (fop_made(*item.request(), followed, item.dest)) return fop_refuse_made(item);
  if (copy->confirmed) return 0;
  const int answer = fop_ask_overwrite(item);
  copy->confirmed = answer == 0;
  return answer;
}

// Takes over the source as the caller opened it. A conflict is asked about before a source that cannot be
// opened.
int take_source(RegularCopy* copy, fop_fd* opened, int open_error) {
  fop_item& item = *copy->item;
  copy->in = std::move(*opened);
  copy->opened = item.status;
  if (copy->in) return 0;
  if (const int settled = settle_conflict(copy); settled != 0) return settled;
  return fop_copy_failed(item.request(), "Unable to open '%s'\n%s\n", item.source, strerror(open_error));
}

int make_file(CopyTarget* target, const std::string& name, mode_t mode) {
  const int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC;
  target->file.reset(openat(target->dir, name.c_str(), flags, mode));
  return target->file ? 0 : -1;
}

// The directory and the name that a link in the way leads to.
bool resolve_link(CopyTarget* target) {
  const fop_fd file(openat(target->dir, target->name.c_str(), O_PATH | O_CLOEXEC));
  if (!file) return false;
  const std::string path = fop_kernel_path(file.get());
  const size_t slash = path.rfind('/');
  if (slash == std::string::npos) return false;
  fop_fd dir = fop_open_dir(AT_FDCWD, path.substr(0, slash + 1).c_str(), 0);
  struct stat there, here;
  const std::string name = path.substr(slash + 1);
  if (!dir || fstat(file.get(), &here) != 0 ||
      fstatat(dir.get(), name.c_str(), &there, AT_SYMLINK_NOFOLLOW) != 0)
    return false;
  if (fop_identity_of(there) != fop_identity_of(here)) return false;
  target->resolved = std::move(dir);
  target->dir = target->resolved.get();
  target->name = name;
  return true;
}

int make_replacement(const RegularCopy& copy, CopyTarget* target, mode_t mode) {
  struct stat old = copy.in_way;
  const bool dangling =
      S_ISLNK(old.st_mode) && fstatat(target->dir, target->name.c_str(), &old, 0) != 0 && errno == ENOENT;
  if (!dangling && !S_ISREG(old.st_mode)) return errno = S_ISDIR(old.st_mode) ? EISDIR : ENXIO, -1;
  if (!dangling && S_ISLNK(copy.in_way.st_mode) && !resolve_link(target)) return errno = ELOOP, -1;
  for (int attempt = 0; attempt < 10; ++attempt) {
    target->temp = fop_temp_name();
    if (make_file(target, target->temp, mode) == 0) return 0;
    if (errno != EEXIST) break;
  }
  target->temp.clear();
  if (dangling || (errno != EACCES && errno != EPERM))
    return -1;  // a full disk must not cost the old content
  const int flags = O_WRONLY | O_NOFOLLOW | O_NONBLOCK | O_NOCTTY | O_CLOEXEC;
  target->file.reset(openat(target->dir, target->name.c_str(), flags));
  target->in_place = true;
  return target->file ? 0 : -1;
}

int make_target(const RegularCopy& copy, CopyTarget* target) {
  const fop_item& item = *copy.item;
  if (item.dest_dir == -1) return errno = item.place->dest_error, -1;
  target->dir = item.dest_dir;
  target->name = item.dest_name;
  const mode_t mode = fop_mode_while_written(copy.opened.st_mode);
  const int failed =
      copy.exists ? make_replacement(copy, target, mode) : make_file(target, target->name, mode);
  return failed ? -1 : fstat(target->file.get(), &target->status);
}

// Owner, mode and times, before the file takes its place. True when the owner is the source's.
bool settle_file(const fop_item& item, const struct stat& source, CopyTarget* target) {
  const int fd = target->file.get();
  bool owned = source.st_uid == target->status.st_uid && source.st_gid == target->status.st_gid;
  const bool same = owned;
  if (!owned) owned = fop_fd_owner(fd, source.st_uid, source.st_gid) == 0;
  mode_t mode = source.st_mode & 07777 & ~item.request()->umask;
  if (!owned) mode &= ~static_cast<mode_t>(S_ISUID | S_ISGID);
  if (!same || mode != (target->status.st_mode & 07777)) fop_fd_mode(fd, mode);
  fop_fd_times(fd, source);
  return owned;
}

int finish_file(const fop_item& item, CopyTarget* target) {
  // From here on the destructor has no descriptor to go by; nothing else can be under the name.
  const int closed = close(target->file.release());
  if (closed == 0 || errno == EINTR) {
    if (target->temp.empty()) return 0;
    if (renameat(target->dir, target->temp.c_str(), target->dir, target->name.c_str()) == 0) return 0;
  }
  const int error = errno;
  unlinkat(target->dir, target->made_name().c_str(), 0);
  errno = error;
  return fop_write_failed(item.request(), item.dest);
}

int write_target(RegularCopy* copy, CopyTarget* target) {
  fop_item& item = *copy->item;
  fop_request* request = item.request();
  if (request->kind == FOP_MOVE) fop_note_written_system(request, target->status.st_dev, target->file.get());
  fop_content content{request,      copy->in.get(),      target->file.get(), item.source,     item.dest,
                      copy->opened, item.status.st_size, target->in_place,   &target->touched};
  const int result = fop_copy_content(&content);
  if (result != 0) return result;
  const bool owned = settle_file(item, copy->opened, target);
  target->complete = true;
  const int finished = finish_file(item, target);
  if (finished != 0) return finished;
  fop_note_made(request, target->status, target->dir, item.dest);
  return owned ? 0 : fop_owner_failed(item);
}
}  // namespace

int fop_copy_regular(fop_item* item, fop_fd* opened, int open_error) {
  RegularCopy copy;
  copy.item = item;
  if (const int taken = take_source(&copy, opened, open_error); taken != 0) return taken;
  for (;;) {
    CopyTarget target;
    if (make_target(copy, &target) == 0) return write_target(&copy, &target);
    if (errno == EEXIST && !copy.exists) {
      if (const int settled = settle_conflict(&copy); settled != 0) return settled;
      continue;
    }
    if (errno != ENAMETOOLONG || copy.renamed) return fop_write_failed(item->request(), item->dest);
    if (!FilenameTooLong(item->source, &item->dest)) return 1;
    item->dest_dir = AT_FDCWD;
    item->dest_name = item->dest;
    copy.renamed = true;
  }
}
