#include "platform/call_queue.h"

#include <chrono>

bool CallQueue::add(std::shared_ptr<Ticket> ticket) {
  {
    std::lock_guard lock(mutex_);
    if (closed_) return false;
    waiting_.push_back(std::move(ticket));
    changed_.notify_all();
  }
  wake_();
  return true;
}

bool CallQueue::post(std::function<void()> fn) {
  auto ticket = std::make_shared<Ticket>();
  ticket->fn = std::move(fn);
  return add(std::move(ticket));
}

bool CallQueue::call(std::function<void()> fn) {
  auto ticket = std::make_shared<Ticket>();
  ticket->fn = std::move(fn);
  if (!add(ticket)) return false;
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return ticket->done || ticket->dropped; });
  return ticket->done;
}

int CallQueue::drain(int most_ms) {
  int run = 0;
  const auto end = std::chrono::steady_clock::now() + std::chrono::milliseconds(most_ms);
  for (;;) {
    if (run > 0 && most_ms >= 0 && std::chrono::steady_clock::now() >= end) return run;
    std::shared_ptr<Ticket> ticket;
    {
      std::lock_guard lock(mutex_);
      if (waiting_.empty()) return run;
      ticket = std::move(waiting_.front());
      waiting_.pop_front();
    }
    ticket->fn();
    ticket->fn = nullptr;  // what it captured is freed here, on the thread that ran it
    ++run;
    std::lock_guard lock(mutex_);
    ticket->done = true;
    changed_.notify_all();
  }
}

bool CallQueue::waiting() {
  std::lock_guard lock(mutex_);
  return !waiting_.empty();
}

bool CallQueue::wait(int milliseconds) {
  std::unique_lock lock(mutex_);
  return changed_.wait_for(lock, std::chrono::milliseconds(milliseconds), [&] { return !waiting_.empty(); });
}

void CallQueue::close() {
  std::lock_guard lock(mutex_);
  closed_ = true;
  for (auto& ticket : waiting_) ticket->dropped = true;
  waiting_.clear();
  changed_.notify_all();
}
