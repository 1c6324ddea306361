// Opening a cascade on a directory of 5,000 subdirectories: until its first entries can be chosen, and the
// longest time that the interface gave no sign meanwhile, beside reading the same names plainly.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <sys/stat.h>

#include <QApplication>
#include <QElapsedTimer>
#include <QMenu>
#include <QTimer>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <string>

#include "fileops/ui/dir_menu.h"
#include "platform/qt/desktop_qt.h"

namespace {
std::string sDirectory;

void read_plainly(benchmark::State& state) {
  for (auto _ : state) {
    std::vector<std::string> names;
    DIR* dir = opendir(sDirectory.c_str());
    while (const dirent* entry = readdir(dir)) names.emplace_back(entry->d_name);
    closedir(dir);
    std::sort(names.begin(), names.end());
    benchmark::DoNotOptimize(names);
  }
}

void open_cascade(benchmark::State& state) {
  double longest = 0, whole = 0;
  for (auto _ : state) {
    QMenu outer;
    auto kind = std::make_shared<DirMenuKind>();
    auto* root = new DirButton(&outer, sDirectory, "root", kind);
    outer.addAction(root);
    outer.popup(QPoint(10, 10));
    QElapsedTimer since, total;
    QTimer tick;
    QObject::connect(&tick, &QTimer::timeout, [&] {
      longest = std::max(longest, static_cast<double>(since.nsecsElapsed()) / 1e6);
      since.start();
    });
    since.start();
    total.start();
    tick.start(0);
    outer.setActiveAction(root);
    const auto filled = [&](int entries) {
      return root->menu() && root->menu()->actions().size() >= entries;
    };
    while (!filled(1000)) QApplication::processEvents(QEventLoop::AllEvents, 1);
    state.PauseTiming();
    while (!filled(5000)) QApplication::processEvents(QEventLoop::AllEvents, 1);
    whole = std::max(whole, static_cast<double>(total.nsecsElapsed()) / 1e6);
    tick.stop();
    outer.close();
    delete root;
    state.ResumeTiming();
  }
  state.counters["longest_step_ms"] = longest;
  state.counters["whole_ms"] = whole;
}
BENCHMARK(read_plainly)->Unit(benchmark::kMillisecond);
BENCHMARK(open_cascade)->Unit(benchmark::kMillisecond);
}  // namespace

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  desktop_qt_setup();
  char name[] = "/tmp/zan-bench-XXXXXX";
  if (!mkdtemp(name)) return 1;
  sDirectory = name;
  for (int i = 0; i < 5000; ++i) mkdir((sDirectory + "/" + std::to_string(i)).c_str(), 0700);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  std::filesystem::remove_all(sDirectory);
  return 0;
}
