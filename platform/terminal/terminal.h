// The desktop of a program without windows: questions are printed and answered on the terminal, or from a
// list of answers. The engine's tests use it too.
#pragma once

#include <functional>
#include <string>
#include <vector>

struct fop_info;

struct TerminalAlert {
  std::string title, message, buttons;
  int answer = 0;
};

struct Terminal {
  // Answers to the alerts in the order they come; when they run out, the escape button.
  std::vector<int> answers;
  // With ask set, an alert without a prepared answer is asked on the terminal.
  bool ask = false;
  // The answer to every question for a shorter name; empty: "Skip".
  std::string long_name;
  // Told what happens, if set. on_alert runs on the asking thread, before its answer is used, and may change
  // it; it may wait, and is called for several workers at once.
  std::function<void(TerminalAlert&)> on_alert;
  std::function<void(const fop_info&)> on_refresh;
  std::function<void(int pane, const std::string& text)> on_status;
  std::function<void(void* slot)> on_slot_ended;
};

// The desktop's settings: set up before the first thread starts. The calling thread is the interface thread.
Terminal& terminal_start();

// Everything asked so far, in order (a copy).
std::vector<TerminalAlert> terminal_alerts();

// Runs calls and timers until done() is true or the time is over. True when done.
bool terminal_run_until(const std::function<bool()>& done, int timeout_ms = 60000);

// Undoes desk_end and forgets answers and alerts: for tests that start afresh.
void terminal_reset();
