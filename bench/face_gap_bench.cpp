// How long the window goes without handling an event while 100,000 files are copied and both cores are kept
// busy by others, and how soon a cancel is answered.
#include <fcntl.h>
#include <unistd.h>
#include <QApplication>
#include <QEventLoop>
#include <QLabel>
#include <QTimer>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <thread>
#include <vector>

#include "core/command_line.h"
#include "core/state.h"
#include "fileops/start.h"
#include "fileops/ui/slot_row.h"
#include "fileops/ui/slots.h"
#include "platform/qt/desktop_qt.h"
#include "views/ui/base.h"

using Clock = std::chrono::steady_clock;

namespace {
constexpr int kDirectories = 100, kFilesEach = 1000, kCancels = 20;

double milliseconds(Clock::duration time) {
  return std::chrono::duration<double, std::milli>(time).count();
}

void make_tree(const std::string& top) {
  const std::string content(1024, 'x');
  for (int d = 0; d < kDirectories; ++d) {
    const std::string dir = top + "/dir" + std::to_string(d);
    std::filesystem::create_directories(dir);
    for (int f = 0; f < kFilesEach; ++f) {
      const int fd = open((dir + "/file" + std::to_string(f)).c_str(), O_CREAT | O_WRONLY, 0644);
      if (write(fd, content.data(), content.size()) < 0) std::abort();
      close(fd);
    }
  }
}

// Runs events until done, and returns the longest time between two ticks of a 1 ms timer.
double longest_gap(const std::function<bool()>& done) {
  QEventLoop loop;
  QTimer tick;
  tick.setTimerType(Qt::PreciseTimer);
  auto last = Clock::now();
  double longest = 0;
  QObject::connect(&tick, &QTimer::timeout, [&] {
    const auto now = Clock::now();
    longest = std::max(longest, milliseconds(now - last));
    last = now;
    if (done()) loop.quit();
  });
  tick.start(1);
  loop.exec();
  return longest;
}

bool in_a_while(Clock::time_point start, int ms) {
  return milliseconds(Clock::now() - start) >= ms;
}

SlotRow* row() {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    if (!window->isVisible()) continue;  // the window of the operation before may still await its deletion
    for (QObject* child : window->findChildren<QObject*>(QStringLiteral("slot")))
      if (auto* found = dynamic_cast<SlotRow*>(child)) return found;
  }
  return nullptr;
}

// From the cancel to the "Done" in the slot.
double cancel_time(const std::string& from, const std::string& to, bool paused) {
  std::filesystem::create_directory(to);
  _file_op(FOP_COPY, {from, {"tree"}, true}, to);
  const auto control = row()->control();
  const auto* line = row()->findChild<QLabel*>(QStringLiteral("slot_from_text"));
  longest_gap([&] { return std::filesystem::exists(to + "/tree/dir0"); });
  control->pause = paused;
  const auto before = Clock::now();
  longest_gap([&] { return in_a_while(before, 120); });
  const auto start = Clock::now();
  control->cancel = 1;
  longest_gap([&] { return line->text() == QStringLiteral("Done"); });
  const double time = milliseconds(Clock::now() - start);
  longest_gap([] { return slot_running() == 0; });
  std::filesystem::remove_all(to);
  return time;
}

void measure(const std::string& root) {
  const std::string from = root + "/from", to = root + "/to";
  make_tree(from + "/tree");
  std::filesystem::create_directory(to);
  std::atomic<bool> stop{false};
  std::vector<std::thread> burners;
  for (unsigned i = 0; i < std::thread::hardware_concurrency(); ++i)
    burners.emplace_back([&] {
      while (!stop) {
      }
    });
  const auto start = Clock::now();
  const double idle = longest_gap([&] { return in_a_while(start, 3000); });
  const auto begun = Clock::now();
  _file_op(FOP_COPY, {from, {"tree"}, true}, to);
  const double copying = longest_gap([] { return slot_running() == 0; });
  std::printf("copy of %d files, both cores busy: %.1f s\n", kDirectories * kFilesEach,
              milliseconds(Clock::now() - begun) / 1000);
  std::printf("longest gap between two events: %.0f ms (bound 200; without the copy %.0f ms)\n", copying,
              idle);
  for (bool paused : {false, true}) {
    std::vector<double> times;
    for (int i = 0; i < kCancels; ++i) times.push_back(cancel_time(from, root + "/cancelled", paused));
    std::sort(times.begin(), times.end());
    std::printf("cancel answered, %s: median %.0f ms, longest %.0f ms (bound %d)\n",
                paused ? "paused" : "running", times[times.size() / 2], times.back(), paused ? 50 : 1000);
  }
  stop = true;
  for (auto& burner : burners) burner.join();
}
}  // namespace

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  std::string root = std::string(getenv("TMPDIR") != nullptr ? getenv("TMPDIR") : "/tmp") + "/zan-gap-XXXXXX";
  if (mkdtemp(root.data()) == nullptr) return 1;
  setenv("HOME", root.c_str(), 1);
  std::filesystem::create_directory(root + "/.vr");
  setvbuf(stdout, nullptr, _IOLBF, 0);
  QApplication application(argc, argv);
  QApplication::setQuitOnLastWindowClosed(false);
  desktop_qt_setup();
  state_init(argc, argv);
  base_create();
  base_open(CommandLine());
  measure(root);
  std::filesystem::remove_all(root);
  return 0;
}
