#include "platform/terminal/terminal.h"

#include <errno.h>
#include <poll.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <iostream>
#include <map>
#include <mutex>
#include <thread>

#include "core/button_list.h"
#include "platform/call_queue.h"
#include "platform/desktop.h"

using Clock = std::chrono::steady_clock;

namespace {
struct Timer {
  int interval_ms;
  Clock::time_point next;
  std::function<void()> fn;
};

// Never destroyed, as is all that a worker may still use while the program ends.
Terminal& sTerminal = *new Terminal;
std::thread::id sInterfaceThread = std::this_thread::get_id();
std::atomic<bool> sEnded{false};
std::atomic<bool> sWoken{false};
std::map<int, Timer> sTimers;  // interface thread only
int sLastTimer = 0;
std::mutex sAlertMutex;  // guards the two below, and the terminal while a question is on it
std::vector<TerminalAlert>& sAlerts = *new std::vector<TerminalAlert>;
size_t sAnswersUsed = 0;

CallQueue& calls() {
  static CallQueue& queue = *new CallQueue([] {});
  return queue;
}

// One line of the user's, or false at the end of the input and once desk_end was called. A signal that
// interrupts the look is no answer: reading then would wait for one for ever.
bool read_answer(std::string* line) {
  constexpr int kLookMs = 50;
  pollfd input{STDIN_FILENO, POLLIN, 0};
  while (!sEnded) {
    const int ready = poll(&input, 1, kLookMs);
    if (ready > 0 || (ready < 0 && errno != EINTR)) return static_cast<bool>(std::getline(std::cin, *line));
  }
  return false;
}

// A label as it reads where no key is marked.
std::string plain_label(const std::string& label) {
  std::string plain;
  for (size_t i = 0; i < label.size(); ++i) {
    if (label[i] == '&') ++i;
    if (i < label.size()) plain += label[i];
  }
  return plain;
}

int ask_on_terminal(const TerminalAlert& alert, const ButtonList& buttons) {
  std::cerr << alert.title << ": " << alert.message;
  if (alert.message.empty() || alert.message.back() != '\n') std::cerr << '\n';
  for (size_t i = 0; i < buttons.labels.size(); ++i)
    std::cerr << "  " << i + 1 << " " << plain_label(buttons.labels[i]);
  std::cerr << " [" << buttons.default_button << "] " << std::flush;
  std::string line;
  if (!read_answer(&line)) return buttons.escape_button;
  if (line.empty()) return buttons.default_button;
  const int answer = std::atoi(line.c_str());
  return answer >= 1 && answer <= static_cast<int>(buttons.labels.size()) ? answer : buttons.escape_button;
}

void run_timers() {
  const auto now = Clock::now();
  std::vector<int> due;
  for (const auto& [number, timer] : sTimers)
    if (timer.next <= now) due.push_back(number);
  for (int number : due) {
    auto found = sTimers.find(number);
    if (found == sTimers.end()) continue;
    found->second.next = now + std::chrono::milliseconds(found->second.interval_ms);
    auto fn = found->second.fn;
    fn();
  }
}
}  // namespace

Terminal& terminal_start() {
  sInterfaceThread = std::this_thread::get_id();
  calls();
  return sTerminal;
}

std::vector<TerminalAlert> terminal_alerts() {
  std::lock_guard lock(sAlertMutex);
  return sAlerts;
}

bool terminal_run_until(const std::function<bool()>& done, int timeout_ms) {
  const auto end = Clock::now() + std::chrono::milliseconds(timeout_ms);
  while (!done()) {
    if (Clock::now() >= end) return false;
    desk_pending_events(10);
  }
  return true;
}

void terminal_reset() {
  std::lock_guard lock(sAlertMutex);
  sTerminal = Terminal();
  sAlerts.clear();
  sAnswersUsed = 0;
  sEnded = false;
}

bool desk_on_interface_thread() {
  return std::this_thread::get_id() == sInterfaceThread;
}

void desk_status(int pane, const std::string& text) {
  if (sTerminal.on_status) sTerminal.on_status(pane, text);
}

void desk_pending_events(int wait_ms) {
  if (wait_ms > 0 && !sWoken.exchange(false)) calls().wait(wait_ms);
  calls().drain();
  run_timers();
}

void desk_wake() {
  sWoken = true;
  calls().post([] {});
}

int desk_timer_start(int interval_ms, std::function<void()> fn) {
  sTimers[++sLastTimer] = {interval_ms, Clock::now() + std::chrono::milliseconds(interval_ms), std::move(fn)};
  return sLastTimer;
}

void desk_timer_stop(int timer) {
  sTimers.erase(timer);
}

void desk_report(const std::string& title, const std::string& message) {
  desk_alert(title, message, "&Continue");
}

void desk_bell() {
  std::fputc('\a', stderr);
}

bool desk_call(std::function<void()> fn) {
  if (desk_on_interface_thread()) return fn(), true;
  return calls().call(std::move(fn));
}

void desk_post(std::function<void()> fn) {
  calls().post(std::move(fn));
}

int desk_alert(const std::string& title, const std::string& message, const std::string& buttons) {
  const ButtonList list = button_list_parse(buttons);
  TerminalAlert alert{title, message, buttons, list.escape_button};
  {
    std::lock_guard lock(sAlertMutex);
    if (!sEnded) {
      if (sAnswersUsed < sTerminal.answers.size())
        alert.answer = sTerminal.answers[sAnswersUsed++];
      else if (sTerminal.ask)
        alert.answer = ask_on_terminal(alert, list);
    }
    const int count = static_cast<int>(list.labels.size());
    if (alert.answer < 1 || alert.answer > count) alert.answer = list.escape_button;
  }
  if (sTerminal.on_alert) sTerminal.on_alert(alert);
  std::lock_guard lock(sAlertMutex);
  sAlerts.push_back(alert);
  return alert.answer;
}

void desk_notice(const std::string& title, const std::string& message) {
  desk_alert(title, message, "&Close");
}

bool desk_long_name(const std::string&, std::string* new_name) {
  if (sTerminal.long_name.empty()) return false;
  *new_name = sTerminal.long_name;
  return true;
}

void desk_slot_refresh(const fop_info& info) {
  if (sTerminal.on_refresh) sTerminal.on_refresh(info);
}

void desk_slot_ended(void* slot) {
  if (sTerminal.on_slot_ended) sTerminal.on_slot_ended(slot);
}

void desk_end() {
  sEnded = true;
}

bool desk_ended() {
  return sEnded;
}
