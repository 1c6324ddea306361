// POSIX signals, as calls on the interface thread.
#pragma once

#include <functional>

struct SignalCalls {
  std::function<void()> terminate;  // SIGTERM, SIGHUP, SIGINT, SIGQUIT
  std::function<void()> refresh;    // SIGWINCH
};

// Blocks the four and SIGWINCH for this thread and all that it starts later, to be read from a descriptor;
// ignores SIGCHLD. Called before any thread is started. What arrives before signals_attach waits for it.
void signals_hold();
// Calls from now on, from the event loop. Needs the application object.
void signals_attach(SignalCalls calls);
