// Runs one operation on the terminal's desktop with prepared answers, and keeps what it showed and asked.
#pragma once

#include <atomic>

#include "fileops/fop.h"
#include "platform/desktop.h"
#include "platform/terminal/terminal.h"
#include "tests/support/temp_dir.h"

constexpr char kConflict[] =
    "' file exists.\nWhat do you want to do ?\n|&Skip|&Overwrite|Overwrite &All|a&Bort";

struct FopRun {
  int kind = FOP_COPY;
  std::string from = {};
  std::vector<std::string> names = {};
  std::string to = {};
  uint32_t flags = 0;
  std::vector<int> answers = {};
  std::function<void(fop_control&, int)> watch = {};
  std::function<void(TerminalAlert&)> on_alert = {};
  // Results.
  bool aborted = false;
  int items = 0;
  std::vector<std::string> asked = {};  // "title|message|buttons"
  std::vector<std::string> done = {};   // "dir/name" in the order told
};

inline void fop_run(FopRun* run) {
  terminal_reset();
  Terminal& terminal = terminal_start();
  terminal.answers = run->answers;
  terminal.on_alert = run->on_alert;
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

// Operations from dir's "from", mostly to its "to".
struct FopTest : testing::Test {
  using Names = std::vector<std::string>;
  TempDir dir;
  FopRun run;
  void SetUp() override { dir.shell("mkdir from to"); }
  void go(int kind, Names names, const std::string& to, std::vector<int> answers = {}, uint32_t flags = 0,
          std::function<void(fop_control&, int)> watch = {}) {
    run = FopRun{kind, dir / "from", std::move(names), to, flags, std::move(answers), std::move(watch)};
    fop_run(&run);
  }
};

// A directory on another file system than the temporary directory; its path is empty where there is none.
struct OtherSystem {
  std::string path;
  OtherSystem() {
    struct stat here, there;
    std::string name = "/dev/shm/zan-test-XXXXXX";
    if (!mkdtemp(name.data())) return;
    if (stat("/tmp", &here) == 0 && stat(name.c_str(), &there) == 0 && here.st_dev != there.st_dev)
      path = name;
    else
      rmdir(name.c_str());
  }
  ~OtherSystem() {
    if (!path.empty()) run_shell("chmod -R u+rwX '" + path + "'; rm -rf '" + path + "'");
  }
  std::string operator/(const std::string& name) const { return path + "/" + name; }
};

#define SKIP_WITHOUT(other) \
  if ((other).path.empty()) GTEST_SKIP() << "no second file system at /dev/shm"
