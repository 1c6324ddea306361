#include "fileops/fop.h"

#include <pthread.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <new>

#include "core/state.h"
#include "fileops/alloc_list.h"
#include "fileops/fop_copy.h"
#include "fileops/fop_delete.h"
#include "fileops/fop_move.h"
#include "fileops/fop_progress.h"
#include "fileops/fop_scan.h"
#include "platform/desktop.h"

#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
#define FOP_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
#define FOP_SANITIZED 1
#endif
#endif
#ifdef FOP_SANITIZED
static constexpr size_t kStackSize = 0x100000;  // instrumented frames are several times as large
#else
static constexpr size_t kStackSize = 0x10000;
#endif

uint32_t fop_derive_flags(int kind, uint32_t settings_flags, bool several) {
  uint32_t flags = 0;
  if (settings_flags & SET_OVERWRITE) flags |= FOP_OVERWRITE_ALL;
  if (settings_flags & SET_SYM_SYMLINKS) flags |= FOP_COPY_LINKS;
  if (settings_flags & SET_SYM_FILES) flags |= FOP_FOLLOW_LINKS;
  if (kind != FOP_DELETE) return flags;
  if (several) {
    if (settings_flags & SET_RM_I_PROMPT)
      flags |= FOP_CONFIRM_EACH;
    else if (settings_flags & SET_RM_I_NO_PROMPT)
      flags |= FOP_DELETE_ALL;
  } else if (settings_flags & SET_RM1_NO_PROMPT) {
    flags |= FOP_DELETE_ALL;
  }
  return flags;
}

// --- making a request ----------------------------------------------------------------------------------

static void free_request(fop_request* request) {
  for (const auto& [device, fd] : request->written_systems) close(fd);
  alloc_free(request->mem);
  delete request;
}

namespace {
// Registered blocks for one request; failed stays set after the first that could not be had.
struct RequestBlocks {
  alloc_list* mem;
  bool failed = false;

  template <typename T>
  T* keep(T* block) {
    if (alloc_add(mem, block)) return block;
    std::free(block);
    failed = true;
    return nullptr;
  }
  template <typename T>
  T* zeroed(size_t count) {
    return keep(static_cast<T*>(std::calloc(count, sizeof(T))));
  }
  char* text(const char* source) { return keep(strdup(source)); }
};
}  // namespace

static bool fill_selection(fop_request* request, const char* source_dir,
                           const std::vector<std::string>& names) {
  RequestBlocks blocks{request->mem};
  const size_t count = names.size();
  request->groups = blocks.zeroed<fop_group*>(1);
  fop_group* selection = blocks.zeroed<fop_group>(1);
  request->buf = blocks.zeroed<char>(request->bufsize);
  if (blocks.failed) return false;
  selection->dir = blocks.text(source_dir);
  selection->names = blocks.zeroed<char*>(count);
  selection->types = blocks.zeroed<uint8_t>(count);
  selection->parent = selection->index = -1;
  for (size_t i = 0; !blocks.failed && i < count; ++i) selection->names[i] = blocks.text(names[i].c_str());
  selection->count = request->total_items = static_cast<int32_t>(count);
  request->groups[0] = selection;
  request->ngroups = request->groups_capacity = 1;
  return !blocks.failed;
}

// The file-creation mask; asking for it with umask would change it for every thread.
static mode_t creation_mask() {
  unsigned mask = 022;
  if (FILE* status = std::fopen("/proc/self/status", "re")) {
    char line[128];
    while (std::fgets(line, sizeof line, status))
      if (std::sscanf(line, "Umask: %o", &mask) == 1) break;
    std::fclose(status);
  }
  return mask;
}

static void* fop_thread(void* argument);

static int start_worker(fop_request* request) {
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_attr_setstacksize(&attributes, kStackSize);
  sigset_t all, before;  // signals are the interface thread's business
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  pthread_t tid;
  const int error = pthread_create(&tid, &attributes, fop_thread, request);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  pthread_attr_destroy(&attributes);
  return error;
}

std::shared_ptr<fop_control> fop(int kind, const char* source_dir, const std::vector<std::string>& names,
                                 const char* destination, uint32_t flags, const fop_info& info,
                                 fop_items_done on_item_done) {
  if (names.empty() || names.size() > INT32_MAX || !source_dir || !destination)
    return errno = EINVAL, nullptr;
  auto request = new (std::nothrow) fop_request;
  if (!request) return errno = ENOMEM, nullptr;
  request->mem = alloc_start();
  request->bufsize = (flags << 8) & 0xF000;
  if (request->bufsize == 0) request->bufsize = 32768;
  request->kind = kind;
  request->flags = flags;
  request->src_prefix_len = static_cast<int32_t>(std::strlen(source_dir));
  request->on_item_done = std::move(on_item_done);
  request->info = info;
  if (!request->info.control) request->info.control = std::make_shared<fop_control>();
  request->control = request->info.control;
  request->assume_ignore_owner = gConfig && (gConfig->flags & SET_OWNER_ASSUME_IGNORE);
  request->umask = creation_mask();
  const std::shared_ptr<fop_control> control = request->control;
  int error = ENOMEM;
  request->dest = request->mem ? strdup(destination) : nullptr;
  if (alloc_add(request->mem, request->dest) && fill_selection(request, source_dir, names))
    error = start_worker(request);
  if (error == 0) return control;
  free_request(request);
  return errno = error, nullptr;
}

// --- the worker ----------------------------------------------------------------------------------------

static bool names_left(const fop_request& request) {
  for (int32_t g = 0; g < request.ngroups; ++g)
    for (int32_t i = 0; i < request.groups[g]->count; ++i)
      if (request.groups[g]->names[i][0]) return true;
  return false;
}

// Copies, and ends a move by removing what was copied. 0 complete, -1 not.
static int copy_and_remove(fop_request* request) {
  request->flags |= FOP_DELETE_ALL;
  fop_update_info(request, request->kind == FOP_MOVE ? "Moving" : "Copying", nullptr, nullptr, nullptr,
                  nullptr, FOP_PERCENT_ZERO, 0);
  const int copied = fop_copy_groups(request);
  if (request->kind != FOP_MOVE || !names_left(*request)) return copied;
  if (fop_sync_copies(request) != 0) return -1;
  const int removed = fop_delete_files(request, 0);
  return copied == 0 && removed == 0 ? 0 : -1;
}

// 0 done, -1 ended early; *shown is set where the operation got as far as showing "Done".
static int run_operation(fop_request* request, bool* shown) {
  fop_update_info(request, "Scanning", "", "", "", "", FOP_PERCENT_ZERO, 0);
  if (fop_check_dst(request) != 0) return -1;
  if (request->kind == FOP_MOVE && fop_move_files(request) != 0) return -1;
  *shown = true;
  if (fop_build_filelist(request) != 0) return -1;
  return request->kind == FOP_DELETE ? fop_delete_files(request, 1) : copy_and_remove(request);
}

static void show_done(fop_request* request) {
  fop_update_info(request, nullptr, "Done", "", "", "", 100, 0);
  if (request->info.linger_ms > 0) usleep(request->info.linger_ms * 1000);
}

// To tell of missing memory takes some: the list's, which nothing needs any more.
static void end_without_memory(fop_request* request) {
  alloc_free(request->mem);
  request->mem = nullptr;
  request->groups = nullptr;
  request->ngroups = 0;
  request->dest = request->buf = nullptr;
  try {
    fop_ENOMEM();
  } catch (const std::bad_alloc&) {
    std::fputs("Out of memory!\n", stderr);
  }
}

static void* fop_thread(void* argument) {
  auto* request = static_cast<fop_request*>(argument);
  request->tid = pthread_self();
  bool shown = false;
  int result = -1;
  try {
    result = run_operation(request, &shown);
  } catch (const std::bad_alloc&) {
    end_without_memory(request);
  }
  fop_tell_done(request);
  fop_control& control = *request->control;
  control.aborted = result != 0 || control.cancel != 0;
  control.done_items = request->done_items;
  control.done_bytes = request->done_bytes;
  if (shown) show_done(request);
  void* slot = request->info.slot;
  free_request(request);
  desk_slot_ended(slot);
  return nullptr;
}
