// The interface's steps of select all, cut and paste with 100,000 names, the context menu over them, and what
// forgetting cut items adds to a move. Each step must stay under 100 ms, the menu under 50 ms; a move of cut
// files costs at most 1.1 times one of files that were not cut.
#include <benchmark/benchmark.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QApplication>
#include <QClipboard>
#include <QMainWindow>
#include <QMenu>
#include <chrono>
#include <cstdlib>
#include <ctime>
#include <filesystem>
#include <string>

#include "commands/associations.h"
#include "commands/ui/context_menus.h"
#include "core/command_line.h"
#include "core/state.h"
#include "dirmodel/dir_record.h"
#include "fileops/start.h"
#include "fileops/ui/clipboard.h"
#include "fileops/ui/edit_menu.h"
#include "fileops/ui/slots.h"
#include "platform/qt/desktop_qt.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"
#include "views/ui/navigation.h"

namespace {
using Clock = std::chrono::steady_clock;

// The processor time of this thread, in milliseconds: a step's cost, whatever else the machine does.
double spent() {
  timespec now;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
  return static_cast<double>(now.tv_sec) * 1e3 + static_cast<double>(now.tv_nsec) / 1e6;
}

constexpr int kNames = 100'000, kMoved = 10'000;

std::string sRoot;

std::string make_files(const char* name, int count) {
  const std::string dir = sRoot + "/" + name;
  std::filesystem::create_directories(dir);
  for (int i = 0; i < count; ++i)
    close(open((dir + "/file number " + std::to_string(i) + ".txt").c_str(), O_CREAT | O_WRONLY, 0644));
  return dir;
}

double milliseconds(Clock::time_point start) {
  return std::chrono::duration<double, std::milli>(Clock::now() - start).count();
}

// What is put off to the next turns of the event loop belongs to the step too.
template <class Step>
double timed(Step step) {
  const double start = spent();
  step();
  QCoreApplication::sendPostedEvents();
  base_find_widget("filelist")->repaint();
  return spent() - start;
}

void wait_for_operations() {
  while (slot_running() > 0) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
}

void steps(benchmark::State& state) {
  const std::string many = make_files("many", kNames), empty = make_files("empty", 0);
  for (auto _ : state) {
    fl_newpath(many.c_str());
    state.counters["select_all_ms"] = timed(em_select_all);
    state.counters["context_menu_ms"] = timed([] { list_cmenu_open(QPoint(50, 50)); });
    QWidget* menu = base_window()->findChild<QMenu*>(QStringLiteral("list_cmenu"));
    menu->hide();
    state.counters["edit_menu_ms"] = timed([] {
      QMenu* edit = base_window()->findChild<QMenu*>(QStringLiteral("edit_menu"));
      edit->popup(QPoint(0, 0));
      edit->hide();
    });
    state.counters["cut_ms"] = timed(em_cut);
    state.counters["redraw_ms"] = timed(fl_update);
    fl_newpath(empty.c_str());
    state.counters["paste_ms"] = timed(em_paste);
    double longest = 0;
    while (slot_running() > 0) {
      const double start = spent();
      QCoreApplication::processEvents();
      longest = std::max(longest, spent() - start);
      usleep(1000);
    }
    state.counters["longest_turn_while_moving_ms"] = longest;
  }
}
BENCHMARK(steps)->Iterations(1)->Unit(benchmark::kMillisecond);

double move_all(const std::string& from, const std::string& to, bool cut) {
  std::filesystem::create_directories(to);
  TransferList list{from, {}, false};
  for (const auto& entry : std::filesystem::directory_iterator(from))
    list.names.push_back(entry.path().filename());
  QApplication::clipboard()->setMimeData(new QMimeData);
  if (cut) clipboard_put(list, true);
  const auto start = Clock::now();
  _file_op(FOP_MOVE, list, to);
  wait_for_operations();
  return milliseconds(start);
}

void move_of_cut_files(benchmark::State& state) {
  std::string here = make_files("move", kMoved), there = sRoot + "/moved";
  fl_newpath(sRoot.c_str());
  double cut = 0, plain = 0;
  for (auto _ : state) {
    plain += move_all(here, there, false);
    cut += move_all(there, here, true);
  }
  state.counters["cut_to_plain"] = cut / plain;
}
BENCHMARK(move_of_cut_files)->Iterations(5)->Unit(benchmark::kMillisecond);
}  // namespace

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  char scratch[] = "/tmp/zan-bench-XXXXXX";
  sRoot = mkdtemp(scratch);
  setenv("HOME", sRoot.c_str(), 1);
  mkdir((sRoot + "/.vr").c_str(), 0700);
  QApplication application(argc, argv);
  desktop_qt_setup();
  char* arguments[] = {argv[0], scratch, nullptr};
  state_init(2, arguments);
  init_read_associations(nullptr, "none");
  base_create();
  base_open(CommandLine());
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  base_destroy();
  std::filesystem::remove_all(sRoot);
  return 0;
}
