#include "op/operate.h"

#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstring>
#include <mutex>

#include "core/state.h"
#include "fileops/fop.h"
#include "fileops/fop_progress.h"
#include "op/json.h"
#include "op/operate_options.h"
#include "platform/desktop.h"
#include "platform/terminal/terminal.h"
#include "views/fname.h"

namespace {
using Clock = std::chrono::steady_clock;

constexpr char kUsage[] =
    "usage: zan-op copy|move --from DIR NAME... --to DEST [OPTION...]\n"
    "       zan-op delete --from DIR NAME... [OPTION...]\n"
    "  --answer N[,N...]  answers to the questions in the order they come (then: the escape button)\n"
    "  --long-name NAME   the name for a file whose own is too long; --long-name-skip: leave it out\n"
    "  --settings FILE    take the flags of a settings record; --flags HEX: the flag bits themselves\n"
    "  --pause-at PCT:MS  pause for MS milliseconds; --cancel-at PCT\n"
    "  --json             tell what happens as one object a line\n";

volatile std::sig_atomic_t sSignal = 0;
std::atomic<bool> sEndedSlot{false};
std::mutex sOutputMutex;

void on_signal(int number) {
  sSignal = number;
}

void print_line(const std::string& line) {
  std::lock_guard lock(sOutputMutex);
  std::fputs((line + "\n").c_str(), stdout);
  std::fflush(stdout);
}

std::string labelled(const char* label, const char* name) {
  return json_quote(fname_decode((std::string(label) + name).c_str()));
}

void print_alert_json(const TerminalAlert& alert) {
  print_line("{\"event\":\"alert\",\"title\":" + json_quote(alert.title) +
             ",\"message\":" + json_quote(alert.message) + ",\"buttons\":" + json_quote(alert.buttons) +
             ",\"answer\":" + std::to_string(alert.answer) + "}");
}

void print_progress_json(const fop_info& info) {
  print_line("{\"event\":\"progress\",\"header\":" + json_quote(info.header) + ",\"from\":" +
             labelled(info.from_label, info.from_name) + ",\"to\":" + labelled(info.to_label, info.to_name) +
             ",\"count\":" + json_quote(fop_count_text(info)) + ",\"percent\":" +
             std::to_string(info.percent) + ",\"time_left\":" + std::to_string(info.time_left) + "}");
}

void print_end_json(const fop_control& control) {
  print_line("{\"event\":\"end\",\"items\":" + std::to_string(control.done_items) +
             ",\"bytes\":" + std::to_string(control.done_bytes) +
             ",\"aborted\":" + (control.aborted ? "true" : "false") + "}");
}

// One line that is drawn over and over.
void draw_progress(const fop_info& info) {
  static Clock::time_point sLast;
  const auto now = Clock::now();
  if (info.percent < 100 && now - sLast < std::chrono::milliseconds(100)) return;
  sLast = now;
  std::string line = std::string(info.header) + " " + std::to_string(info.percent) + "% " +
                     fop_count_text(info) + " " + fop_time_text(info.time_left) + " " + fop_from_line(info);
  for (char& c : line)
    if (static_cast<unsigned char>(c) < 0x20) c = '?';
  std::lock_guard lock(sOutputMutex);
  std::printf("\r\033[K%.*s", 150, line.c_str());
  std::fflush(stdout);
}

void print_alert(const TerminalAlert& alert) {
  std::lock_guard lock(sOutputMutex);
  std::fprintf(stderr, "%s: %s%s", alert.title.c_str(), alert.message.c_str(),
               !alert.message.empty() && alert.message.back() == '\n' ? "" : "\n");
}

bool load_settings(const std::string& path, Settings* record) {
  if (path.empty()) return settings_defaults(record), true;
  if (access(path.c_str(), R_OK) != 0) return false;
  const size_t slash = path.rfind('/');
  const std::string dir = slash == std::string::npos ? "." : path.substr(0, slash + 1);
  settings_load(record, dir.c_str(), path.substr(slash + 1).c_str());
  return true;
}

// More than one name, or one that is a directory.
bool is_several(const OperateOptions& options) {
  struct stat status;
  if (options.names.size() > 1) return true;
  return lstat((options.from + "/" + options.names[0]).c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}

void set_up_terminal(const OperateOptions& options) {
  Terminal& terminal = terminal_start();
  terminal.answers = options.answers;
  terminal.long_name = options.long_name;
  terminal.ask = !options.json && !options.answers_given && isatty(STDIN_FILENO) && isatty(STDERR_FILENO);
  if (options.json) {
    terminal.on_alert = print_alert_json;
    terminal.on_refresh = print_progress_json;
  } else {
    if (!terminal.ask) terminal.on_alert = print_alert;
    if (isatty(STDOUT_FILENO)) terminal.on_refresh = draw_progress;
  }
  terminal.on_slot_ended = [](void*) {
    sEndedSlot = true;
    desk_wake();
  };
}

// What the percentages set off, on the worker's thread.
struct Schedule {
  int pause_at, cancel_at;
  std::atomic<bool> paused{false};
};

void watch_percent(Schedule* schedule, fop_control* control, int percent) {
  if (schedule->cancel_at >= 0 && percent >= schedule->cancel_at) control->cancel = 1;
  if (schedule->pause_at < 0 || percent < schedule->pause_at) return;
  schedule->pause_at = -1;
  control->pause = 1;
  schedule->paused = true;
  desk_wake();
}

// The interface thread's part until the operation has ended.
void wait_for_end(const OperateOptions& options, Schedule* schedule, fop_control* control) {
  Clock::time_point resume;
  bool pausing = false;
  while (!sEndedSlot) {
    desk_pending_events(pausing ? 5 : 50);
    if (schedule->paused.exchange(false)) {
      pausing = true;
      resume = Clock::now() + std::chrono::milliseconds(options.pause_ms);
    }
    if (pausing && Clock::now() >= resume) pausing = false, control->pause = 0;
    if (sSignal) control->cancel = 1, desk_end();
  }
}

int operate(const OperateOptions& options, const Settings& settings) {
  const uint32_t flags =
      options.flags ? *options.flags : fop_derive_flags(options.kind, settings.flags, is_several(options));
  Schedule schedule{options.pause_at, options.cancel_at};
  auto control = std::make_shared<fop_control>();
  if (options.pause_at >= 0 || options.cancel_at >= 0)
    control->watch = [&schedule, raw = control.get()](int percent) {
      watch_percent(&schedule, raw, percent);
    };
  fop_info info;
  info.slot = &schedule;
  info.control = control;
  info.linger_ms = 0;  // nobody looks at a slot
  if (!fop(options.kind, options.from.c_str(), options.names, options.to.c_str(), flags, info, {})) {
    std::perror("failed to start operation!\n");
    return 1;
  }
  wait_for_end(options, &schedule, control.get());
  if (options.json)
    print_end_json(*control);
  else if (isatty(STDOUT_FILENO))
    std::printf("\r\033[K");
  return control->aborted ? 1 : 0;
}
}  // namespace

const char* op_operate_help() {
  return kUsage;
}

int op_operate(int argc, char** argv) {
  OperateOptions options;
  static Settings sSettings;
  std::string error;
  if (operate_parse(argc, argv, &options, &error) && !load_settings(options.settings, &sSettings))
    error = "cannot read " + options.settings;
  if (!error.empty()) {
    std::fprintf(stderr, "zan-op: %s\n%s", error.c_str(), op_operate_help());
    return 2;
  }
  gConfig = &sSettings;
  struct sigaction action {};
  action.sa_handler = on_signal;
  action.sa_flags = static_cast<int>(SA_RESETHAND);
  for (int number : {SIGINT, SIGTERM, SIGHUP}) sigaction(number, &action, nullptr);
  set_up_terminal(options);
  return operate(options, sSettings);
}
