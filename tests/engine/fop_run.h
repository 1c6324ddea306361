// Runs operations on the terminal's desktop with prepared answers, and keeps what they asked and told.
#pragma once

#include <atomic>

#include "fileops/fop.h"
#include "platform/desktop.h"
#include "platform/terminal/terminal.h"
#include "tests/support/temp_dir.h"

// In dir are the directories "from" and "to", and "other", a link to a directory on another file system.
// Relative paths are below dir, and so they come back in what was asked and told.
struct FopTest : testing::Test {
  using Names = std::vector<std::string>;
  TempDir dir, other{"/dev/shm"};
  std::string from = dir / "from";
  std::function<void(TerminalAlert&)> on_alert;
  std::string asked;  // each "title|message|buttons", and behind them "aborted" where it was
  Names done;         // "dir/name" in the order told
  int items = 0;

  void SetUp() override { dir.shell("mkdir from to && ln -s '" + other.path() + "' other"); }
  static std::string conflict(const std::string& title, const std::string& path) {
    return title + "|The '" + path +
           "' file exists.\nWhat do you want to do ?\n|&Skip|&Overwrite|Overwrite &All|a&Bort";
  }
  std::string below_dir(std::string text) const {
    for (size_t at; (at = text.find(dir / "")) != std::string::npos;) text.erase(at, (dir / "").size());
    return text;
  }
  void go(int kind, const Names& names, const std::string& to, const std::vector<int>& answers = {},
          uint32_t flags = 0, const std::function<void(fop_control&, int)>& watch = {}) {
    terminal_reset();
    Terminal& terminal = terminal_start();
    terminal.answers = answers;
    terminal.on_alert = on_alert;
    std::atomic<bool> ended = false;
    terminal.on_slot_ended = [&ended](void*) { ended = true, desk_wake(); };
    fop_info info;
    info.linger_ms = 0;
    info.control = std::make_shared<fop_control>();
    if (watch) info.control->watch = [&watch, c = info.control.get()](int percent) { watch(*c, percent); };
    asked.clear();
    done.clear();
    const auto told = [this](const std::string& where, const Names& all) {
      EXPECT_TRUE(desk_on_interface_thread());
      for (const std::string& name : all) done.push_back(below_dir(where + "/" + name));
    };
    const auto control = fop(kind, from.c_str(), names, (dir / to).c_str(), flags, info,
                             kind == FOP_COPY ? fop_items_done() : fop_items_done(told));
    ASSERT_TRUE(control) << "not started";
    ASSERT_TRUE(terminal_run_until([&] { return ended.load(); }, 200000));
    items = control->done_items;
    for (const TerminalAlert& alert : terminal_alerts())
      asked += below_dir(alert.title + "|" + alert.message + "|" + alert.buttons);
    if (control->aborted) asked += "aborted";
  }

  // Prepares dir, does it, and compares what was asked and what a script then finds.
  void check(const std::string& make, int kind, const Names& names, const std::string& to, uint32_t flags,
             const std::vector<int>& answers, const std::string& look, const std::string& found) {
    dir.shell("rm -rf [!o]* outside other/* && mkdir from to; " + make);
    go(kind, names, to, answers, flags);
    EXPECT_EQ(asked + dir.shell(look), found) << make;
  }
};

struct OtherSystemTest : FopTest {
  void SetUp() override {
    FopTest::SetUp();
    if (dir.shell("stat -L -c %d . other | uniq -d") != "")
      GTEST_SKIP() << "no other file system at /dev/shm";
  }
};
