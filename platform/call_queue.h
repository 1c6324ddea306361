// Calls that other threads want run on the interface thread. Both desktops drain one of these.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>

class CallQueue {
 public:
  // wake is called, from the adding thread, after each addition: it makes the interface thread drain soon.
  explicit CallQueue(std::function<void()> wake) : wake_(std::move(wake)) {}

  // Adds fn and returns at once. False once closed.
  bool post(std::function<void()> fn);
  // Adds fn and waits until it has run. False when the queue was closed before that.
  bool call(std::function<void()> fn);
  // Runs what waits, in order. Interface thread. With most_ms, starts no further call once so much time has
  // passed, so that a flood of calls leaves room for other events; the rest waits for the next drain.
  // Returns the number of calls run.
  int drain(int most_ms = -1);
  // True while something waits.
  bool waiting();
  // Sleeps until something waits or the time is over. True when something waits.
  bool wait(int milliseconds);
  // Refuses everything from now on and lets every waiting caller go without its call having run.
  void close();

 private:
  struct Ticket {
    std::function<void()> fn;
    bool done = false, dropped = false;
  };
  bool add(std::shared_ptr<Ticket> ticket);

  std::function<void()> wake_;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<std::shared_ptr<Ticket>> waiting_;
  bool closed_ = false;
};
