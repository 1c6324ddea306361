// Runs one operation on the terminal's desktop with prepared answers, and keeps what it showed and asked.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <string>
#include <vector>

#include "fileops/fop.h"
#include "platform/desktop.h"
#include "platform/terminal/terminal.h"
#include "tests/support/temp_dir.h"

struct FopRun {
  int kind = FOP_COPY;
  std::string from = {};
  std::vector<std::string> names = {};
  std::string to = {};
  uint32_t flags = 0;
  std::vector<int> answers = {};
  std::function<void(TerminalAlert&)> on_alert = {};
  std::function<void(fop_control&, int)> watch = {};
  // Results.
  bool aborted = false;
  int items = 0;
  std::vector<std::string> asked = {};  // "title|message|buttons"
  std::vector<std::string> done = {};   // "dir/name" in the order told
  std::vector<fop_info> shown = {};
};

inline void fop_run(FopRun* run) {
  terminal_reset();
  Terminal& terminal = terminal_start();
  terminal.answers = run->answers;
  terminal.on_alert = run->on_alert;
  terminal.on_refresh = [run](const fop_info& info) { run->shown.push_back(info); };
  std::atomic<bool> ended{false};
  terminal.on_slot_ended = [&ended](void*) { ended = true, desk_wake(); };
  fop_info info;
  info.linger_ms = 0;
  info.control = std::make_shared<fop_control>();
  if (run->watch)
    info.control->watch = [run, c = info.control.get()](int percent) { run->watch(*c, percent); };
  const auto told = [run](const std::string& dir, const std::vector<std::string>& names) {
    EXPECT_TRUE(desk_on_interface_thread());
    for (const std::string& name : names) run->done.push_back(dir + "/" + name);
  };
  const auto control = fop(run->kind, run->from.c_str(), run->names, run->to.c_str(), run->flags, info,
                           run->kind == FOP_COPY ? fop_items_done() : fop_items_done(told));
  ASSERT_TRUE(control) << "not started";
  ASSERT_TRUE(terminal_run_until([&] { return ended.load(); }, 200000));
  run->aborted = control->aborted;
  run->items = control->done_items;
  for (const TerminalAlert& alert : terminal_alerts())
    run->asked.push_back(alert.title + "|" + alert.message + "|" + alert.buttons);
}

// A directory on another file system than the temporary directory, gone at the end; empty where there is
// none.
class OtherSystem {
 public:
  OtherSystem() {
    std::string name = "/dev/shm/zan-test-XXXXXX";
    struct stat here, there;
    if (!mkdtemp(name.data())) return;
    path_ = name;
    if (stat("/tmp", &here) != 0 || stat(name.c_str(), &there) != 0 || here.st_dev == there.st_dev)
      rmdir(name.c_str()), path_.clear();
  }
  ~OtherSystem() {
    if (!path_.empty()) run_shell("chmod -R u+rwX '" + path_ + "'; rm -rf '" + path_ + "'");
  }
  const std::string& path() const { return path_; }
  std::string operator/(const std::string& name) const { return path_ + "/" + name; }

 private:
  std::string path_;
};

#define SKIP_WITHOUT(other) \
  if ((other).path().empty()) GTEST_SKIP() << "no second file system at /dev/shm"
