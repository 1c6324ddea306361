#include "fileops/fop_delete.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "fileops/fop_path.h"
#include "fileops/fop_progress.h"
#include "views/fname.h"

namespace {
struct DeleteItem {
  fop_request* request;
  int32_t group, index;
  int dir;  // opened, or -1 with dir_error
  int dir_error;
  bool verified;  // a move's: only what was copied goes

  fop_group& list() const { return *request->groups[group]; }
  const char* name() const { return list().names[index]; }
  std::string shown() const { return fname_decode(_build_path(list().dir, name()).c_str()); }
};

void show_deleting(const DeleteItem& item) {
  fop_request* request = item.request;
  fop_show_progress(request, request->done_items, request->total_items, "Deleting", " Dir: ", item.list().dir,
                    "File: ", item.name());
}

// Asks with the slot showing the item in question.
template <typename... Texts>
int ask_of_deletion(const DeleteItem& item, const char* buttons, const char* format, Texts... texts) {
  if (item.request->kind == FOP_DELETE) show_deleting(item);
  return fop_alert(item.request, "Delete", buttons, format, texts...);
}

enum class Answer { remove, pass, abort };

Answer ask_first(const DeleteItem& item, const struct stat& status) {
  fop_request* request = item.request;
  const bool writable = status.st_mode & S_IWUSR;
  if (request->flags & FOP_DELETE_ALL) return Answer::remove;
  if (writable && !(request->flags & FOP_CONFIRM_EACH)) return Answer::remove;
  const std::string shown = item.shown();
  const int answer = ask_of_deletion(item, "@&Skip|&Delete|de&Lete all|#&Abort",
                                     writable ? "File '%s'\n" : "Unwriteable file '%s'\n", shown.c_str());
  if (answer == 1) return Answer::pass;
  if (answer == 3) request->flags |= FOP_DELETE_ALL;
  return answer == 4 ? Answer::abort : Answer::remove;
}

// What has changed or been replaced since it was copied is no source of the copy any more.
bool still_as_copied(const DeleteItem& item, const struct stat& now) {
  const fop_mark* marks = item.list().marks;
  if (!item.verified) return true;
  if (!marks) return false;
  const fop_mark &then = marks[item.index], current = fop_mark_of(now);
  if (current.ino != then.ino && !fop_numbers_change(item.dir)) return false;
  return S_ISDIR(now.st_mode) || (current.size == then.size && current.mtime_ns == then.mtime_ns);
}

int remove_failed(const DeleteItem& item, const char* error) {
  const std::string shown = item.shown();
  const int answer =
      ask_of_deletion(item, "@&Continue|#&Abort", "Unable to delete '%s'\n%s\n", shown.c_str(), error);
  return answer == 2 ? -1 : 0;
}

// Removes by the type that the scan found; nullptr, or the error's text.
const char* remove_item(const DeleteItem& item, bool directory) {
  if (item.dir < 0) return strerror(item.dir_error);
  int failed = unlinkat(item.dir, item.name(), directory ? AT_REMOVEDIR : 0);
  if (failed && errno == EINTR) failed = unlinkat(item.dir, item.name(), directory ? AT_REMOVEDIR : 0);
  return failed ? strerror(errno) : nullptr;
}

int fop_delete_file(const DeleteItem& item) {
  fop_request* request = item.request;
  struct stat status;
  const uint8_t type = item.list().types[item.index];
  bool directory = type == DT_DIR, changed = false;
  // Without a question to decide, the type alone is enough.
  const bool look = item.verified || !(request->flags & FOP_DELETE_ALL) || type == DT_UNKNOWN;
  if (look && item.dir >= 0 && fstatat(item.dir, item.name(), &status, AT_SYMLINK_NOFOLLOW) == 0) {
    directory = S_ISDIR(status.st_mode);
    changed = !still_as_copied(item, status);
    const Answer answer = ask_first(item, status);
    if (answer != Answer::remove) return answer == Answer::pass ? 0 : -1;
  }
  const char* error = changed ? "It has changed since it was copied" : remove_item(item, directory);
  if (error && remove_failed(item, error) == -1) return -1;
  fop_item_done(request, item.list().dir, item.name());
  return 0;
}

// Goes back to the child group of (group, index), if it has one; the mirror image of fop_child_group.
int32_t child_backwards(const fop_request& request, int32_t group, int32_t index, int32_t* next) {
  for (; *next > 0; --*next) {
    const fop_group& candidate = *request.groups[*next];
    if (candidate.parent < group || (candidate.parent == group && candidate.index < index)) return -1;
    if (candidate.parent == group && candidate.index == index) return *next;
  }
  return -1;
}

void spread_kept(fop_request* request) {
  for (int32_t g = request->ngroups - 1; g > 0; --g)
    if (request->groups[g]->kept) request->groups[request->groups[g]->parent]->kept = true;
}

using Deferred = std::vector<std::pair<int32_t, int32_t>>;

// Deletes the names of one group, from the last. Directories of a move that hold something back are left for
// the end, so that an abort over one of them leaves no copied source behind.
int delete_names(DeleteItem item, bool with_progress, int32_t* next_child, Deferred* deferred) {
  fop_request* request = item.request;
  for (item.index = item.list().count - 1; item.index >= 0; --item.index) {
    if (with_progress && fop_cancelled(request)) return -1;
    if (!item.name()[0]) continue;
    if (deferred) {
      const int32_t child = child_backwards(*request, item.group, item.index, next_child);
      if (child > 0 && request->groups[child]->kept) {
        if (!request->groups[child]->through_link) deferred->emplace_back(item.group, item.index);
        continue;
      }
    }
    if (with_progress && fop_progress_due(*request)) show_deleting(item);
    if (fop_delete_file(item) == -1) return -1;
    if (with_progress) ++request->done_items;
  }
  return 0;
}

int delete_deferred(fop_request* request, const Deferred& deferred) {
  for (const auto& [group, index] : deferred) {
    const fop_fd dir = fop_open_source(*request, group);
    const DeleteItem item{request, group, index, dir.get(), errno, true};
    if (fop_delete_file(item) == -1) return -1;
  }
  return 0;
}
}  // namespace

int fop_delete_files(fop_request* request, int with_progress) {
  const bool move = request->kind == FOP_MOVE;
  int32_t next_child = request->ngroups - 1;
  Deferred deferred;
  if (move) spread_kept(request);
  for (int32_t g = request->ngroups - 1; g >= 0; --g) {
    if (move && request->groups[g]->through_link) continue;  // what a link led to was copied, not moved
    const fop_fd dir = fop_open_source(*request, g);
    const DeleteItem item{request, g, 0, dir.get(), errno, move};
    if (delete_names(item, with_progress != 0, &next_child, move ? &deferred : nullptr) == -1) return -1;
  }
  return delete_deferred(request, deferred);
}

int fop_sync_copies(fop_request* request) {
  for (const auto& [device, fd] : request->written_systems) {
    if (syncfs(fd) == 0) continue;
    const std::string error = strerror(errno), shown = fname_decode(request->dest);
    fop_errinfo("Write error", "Unable to write '%s'\n%s\nNothing was removed from the source.\n",
                shown.c_str(), error.c_str());
    return -1;
  }
  return 0;
}
