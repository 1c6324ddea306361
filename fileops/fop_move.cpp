#include "fileops/fop_move.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>

#include "fileops/fop_progress.h"
#include "views/fname.h"

// Every flag but the pending destination directory: kept from the first finished item of a rename pass on.
static constexpr uint32_t kFlagsAfterRename = 0xFFFFFFFE;

static std::string without_trailing_slashes(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  return path;
}

fop_fd fop_open_selection_dest(const fop_request& request) {
  if (!request.dest_is_item) return fop_open_dir(AT_FDCWD, request.dest, 0);
  const std::string dest = without_trailing_slashes(request.dest);
  const size_t slash = dest.rfind('/');
  if (slash == std::string::npos) return fop_open_dir(AT_FDCWD, ".", 0);
  return fop_open_dir(AT_FDCWD, dest.substr(0, std::max<size_t>(slash, 1)).c_str(), 0);
}

std::string fop_selection_dest_name(const fop_request& request, const char* name) {
  if (!request.dest_is_item) return name;
  const std::string dest = without_trailing_slashes(request.dest);
  return dest.substr(dest.rfind('/') + 1);
}

void fop_refuse_itself(fop_request* request) {
  if (request->dest_made && rmdir(request->dest) == 0) request->dest_made = false;
  fop_errinfo("File Scan", request->kind == FOP_MOVE ? "Can't move file(s) into itself."
                                                     : "Can't copy file(s) into itself.");
}

static bool contains(const std::vector<fop_identity>& chain, const struct stat& status) {
  return std::find(chain.begin(), chain.end(), fop_identity_of(status)) != chain.end();
}

// Whether a selected directory is to be put into itself or below itself. Device and inode tell it through
// links and bind mounts too.
static bool goes_into_itself(const fop_request& request) {
  const fop_fd dir = fop_open_source(request, 0);
  if (!dir) return false;
  const bool follow = request.flags & FOP_FOLLOW_LINKS;
  const fop_group& selection = *request.groups[0];
  for (int32_t i = 0; i < selection.count; ++i) {
    struct stat status;
    const char* name = selection.names[i];
    if (!name[0] || fstatat(dir.get(), name, &status, follow ? 0 : AT_SYMLINK_NOFOLLOW) != 0) continue;
    if (!S_ISDIR(status.st_mode)) continue;
    if (contains(request.dest_chain, status)) return true;
    const std::string dest = fop_dest_path(request, _build_path(selection.dir, name));
    fop_fd there(openat(AT_FDCWD, dest.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (there && contains(fop_ancestors_of(std::move(there)), status)) return true;
  }
  return false;
}

// One item: into an existing directory, or as dest itself.
static int check_single(fop_request* request, const struct stat* dest) {
  const fop_group& selection = *request->groups[0];
  const std::string path = _build_path(selection.dir, selection.names[0]);
  struct stat status;
  if (lstat(path.c_str(), &status) != 0) {
    fop_errinfo("File Scan", "Unable to get stats for '%s'", path.c_str());
    return -1;
  }
  if (dest && S_ISDIR(dest->st_mode)) return 0;
  if (dest && (dest->st_mode & S_IFMT) != (status.st_mode & S_IFMT)) {
    fop_errinfo("File Scan", "Source and destination file types mismatch.");
    return -1;
  }
  if (!dest && S_ISDIR(status.st_mode)) request->flags |= FOP_MKDEST;
  request->src_prefix_len = static_cast<int32_t>(path.size());
  request->dest_is_item = true;
  return 0;
}

static int make_dest(fop_request* request) {
  const int answer = fop_alert(request, "Make Directory", "&Yes|&Abort",
                               "The '%s' directory doesn't exist\nDo you want to create this directory ?",
                               fname_decode(request->dest));
  if (answer == 2) return -1;
  if (mkdir(request->dest, 0777) != 0) {
    fop_errinfo("Make Directory", "Unable to create '%s' directory\n", request->dest);
    return -1;
  }
  request->dest_made = true;
  return 0;
}

int fop_check_dst(fop_request* request) {
  if (request->kind == FOP_DELETE) return 0;
  struct stat status;
  const struct stat* dest = stat(request->dest, &status) == 0 ? &status : nullptr;
  const bool single = request->groups[0]->count == 1 && request->groups[0]->names[0][0];
  if (single && check_single(request, dest) != 0) return -1;
  request->dest_chain = fop_ancestors(request->dest);
  if (goes_into_itself(*request)) return fop_refuse_itself(request), -1;
  if (single) return 0;
  if (!dest) return make_dest(request);
  if (S_ISDIR(dest->st_mode)) return 0;
  fop_errinfo("File Scan", "Can't copy/move multiple files into \n'%s'\n", request->dest);
  return -1;
}

namespace {
struct RenameItem {
  fop_request* request;
  int from, to;  // the opened directories
  const char* name;
  std::string source, dest, dest_name;
};
enum class Rename { finished, left, abort };

bool same_directory(int a, int b) {
  struct stat first, second;
  return fstat(a, &first) == 0 && fstat(b, &second) == 0 && fop_identity_of(first) == fop_identity_of(second);
}

bool is_itself(const RenameItem& item) {
  return item.source == item.dest || (item.dest_name == item.name && same_directory(item.from, item.to));
}

bool dest_status(const RenameItem& item, struct stat* status) {
  return fstatat(item.to, item.dest_name.c_str(), status, AT_SYMLINK_NOFOLLOW) == 0;
}

// Another name of the source in the way costs nothing to replace.
bool made_by_another(const RenameItem& item, const struct stat& in_way) {
  struct stat source;
  return fop_made(*item.request, in_way, item.dest) &&
         (fstatat(item.from, item.name, &source, AT_SYMLINK_NOFOLLOW) != 0 ||
          fop_identity_of(source) != fop_identity_of(in_way));
}

// rename leaves two names of one file as they are and calls that a success.
void finish_hard_link(const RenameItem& item) {
  struct stat source, dest;
  if (fstatat(item.from, item.name, &source, AT_SYMLINK_NOFOLLOW) != 0) return;
  if (fstatat(item.to, item.dest_name.c_str(), &dest, AT_SYMLINK_NOFOLLOW) != 0) return;
  if (fop_identity_of(source) == fop_identity_of(dest) && source.st_nlink > 1 && !S_ISDIR(source.st_mode))
    unlinkat(item.from, item.name, 0);
}

Rename rename_one(const RenameItem& item) {
  bool replace = item.request->flags & FOP_OVERWRITE_ALL;
  struct stat status;
  for (;;) {
    const bool exists = dest_status(item, &status);
    if (exists && made_by_another(item, status)) return Rename::left;  // the copy pass tells
    if (!replace && exists) {
      const int answer =
          fop_alert(item.request, "Move", "&Skip|&Overwrite|Overwrite &All|a&Bort",
                    "The '%s' file exists.\nWhat do you want to do ?\n", fname_decode(item.dest.c_str()));
      if (answer == 4) return Rename::abort;
      if (answer == 1) return Rename::finished;
      if (answer == 3) item.request->flags |= FOP_OVERWRITE_ALL;
      replace = true;
    }
    const char* to_name = item.dest_name.c_str();
    int failed = renameat2(item.from, item.name, item.to, to_name, replace ? 0 : RENAME_NOREPLACE);
    if (failed && !replace && errno == EEXIST && dest_status(item, &status))
      continue;  // it came up meanwhile
    if (failed && !replace && (errno == EINVAL || errno == ENOSYS) && !dest_status(item, &status))
      failed = renameat(item.from, item.name, item.to, to_name);
    if (failed) return Rename::left;
    if (replace) finish_hard_link(item);
    if (dest_status(item, &status)) fop_note_made(item.request, status, item.to, item.dest);
    fop_item_done(item.request, item.request->groups[0]->dir, item.name);
    return Rename::finished;
  }
}
}  // namespace

int fop_move_files(fop_request* request) {
  fop_group& selection = *request->groups[0];
  const fop_fd from = fop_open_source(*request, 0), to = fop_open_selection_dest(*request);
  if (!from || !to) return 0;
  for (int32_t i = 0; i < selection.count; ++i) {
    char* name = selection.names[i];
    if (!name[0]) continue;
    if (fop_cancelled(request)) return 0;
    const std::string source = _build_path(selection.dir, name);
    const RenameItem item{request,
                          from.get(),
                          to.get(),
                          name,
                          source,
                          fop_dest_path(*request, source),
                          fop_selection_dest_name(*request, name)};
    if (is_itself(item)) return fop_refuse_itself(request), -1;
    const Rename result = rename_one(item);
    if (result == Rename::abort) return -1;
    if (result == Rename::left) continue;
    name[0] = '\0';
    request->flags |= kFlagsAfterRename;
  }
  return 0;
}
