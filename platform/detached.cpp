#include "platform/detached.h"

#include <pthread.h>

#include <algorithm>
#include <climits>
#include <csignal>
#include <mutex>

#include "dirmodel/fs_probe.h"

namespace {
// A sanitizer's own frames do not fit into the small stacks that the workers need.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr size_t LEAST_STACK = 1 << 20;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr size_t LEAST_STACK = 1 << 20;
#else
constexpr size_t LEAST_STACK = 65536;
#endif
#else
constexpr size_t LEAST_STACK = 65536;
#endif

}  // namespace

struct Detached {
  std::function<void()> work;
  std::mutex mutex;  // the thread cannot end while it is held: its id stays good for a signal
  bool done = false;
  pthread_t thread{};
};

static void* detached_main(void* argument) {
  const std::unique_ptr<std::shared_ptr<Detached>> owned(static_cast<std::shared_ptr<Detached>*>(argument));
  const std::shared_ptr<Detached> self = *owned;
  fs_worker_signals();
  self->work();
  self->work = nullptr;
  std::lock_guard lock(self->mutex);
  self->done = true;
  return nullptr;
}

std::shared_ptr<Detached> detached_start(std::function<void()> work, size_t stack_bytes) {
  pthread_attr_t attributes;
  if (pthread_attr_init(&attributes) != 0) return nullptr;
  pthread_attr_setdetachstate(&attributes, PTHREAD_CREATE_DETACHED);
  pthread_attr_setstacksize(&attributes, std::max(stack_bytes, LEAST_STACK));
  auto self = std::make_shared<Detached>();
  self->work = std::move(work);
  auto argument = std::make_unique<std::shared_ptr<Detached>>(self);
  // Signals are the interface thread's: a new thread inherits the mask, and then lets the alarm in.
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  bool started;
  {
    std::lock_guard lock(self->mutex);
    started = pthread_create(&self->thread, &attributes, detached_main, argument.get()) == 0;
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  pthread_attr_destroy(&attributes);
  if (!started) return nullptr;
  static_cast<void>(argument.release());
  return self;
}

void detached_interrupt(const std::shared_ptr<Detached>& thread) {
  if (!thread) return;
  std::lock_guard lock(thread->mutex);
  if (!thread->done) pthread_kill(thread->thread, SIGALRM);
}
