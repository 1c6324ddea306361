// What the file list costs with 100,000 entries: each step in milliseconds of CPU time (all threads), and as
// a share of reading the same directory without a window's work.
#include <fcntl.h>
#include <stdlib.h>
#include <unistd.h>

#include <QApplication>
#include <algorithm>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <functional>
#include <string>
#include <vector>

#include "core/command_line.h"
#include "core/state.h"
#include "dirmodel/dir_read.h"
#include "platform/qt/desktop_qt.h"
#include "views/ui/base.h"
#include "views/ui/file_list_parts.h"
#include "views/ui/navigation.h"

namespace {

constexpr int kEntries = 100000, kRounds = 5;

double cpu_ms() {
  timespec now;
  clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
  return double(now.tv_sec) * 1e3 + double(now.tv_nsec) / 1e6;
}

// The least of some rounds; prepare is not measured. Painting what changed belongs to the step.
double measure(const std::function<void()>& prepare, const std::function<void()>& step) {
  double least = 1e9;
  for (int round = 0; round < kRounds; ++round) {
    if (prepare) prepare();
    QApplication::processEvents();
    const double from = cpu_ms();
    step();
    QApplication::processEvents();
    least = std::min(least, cpu_ms() - from);
  }
  return least;
}

void fill(const std::string& dir) {
  for (int i = 0; i < kEntries; ++i) {
    const std::string name = dir + "/" + (i % 2 ? "file" : "other") + std::to_string(i * 7919LL % kEntries);
    close(open(name.c_str(), O_CREAT | O_WRONLY, 0644));
  }
}

long resident_kb() {
  long pages = 0, resident = 0;
  if (FILE* file = fopen("/proc/self/statm", "r")) {
    if (fscanf(file, "%ld %ld", &pages, &resident) != 2) resident = 0;
    fclose(file);
  }
  return resident * (sysconf(_SC_PAGESIZE) / 1024);
}

void report(const char* name, double ms, double read) {
  std::printf("%-28s %8.1f ms %8.2f x read\n", name, ms, ms / read);
}

void run(const std::string& dir) {
  gStartPath = "/proc/self/fdinfo";
  base_create();
  base_open(CommandLine{});
  QApplication::processEvents();
  const long empty_kb = resident_kb();
  const double open = measure([] { fl_setpath("/proc/self/fdinfo"); }, [&] { fl_setpath(dir.c_str()); });
  std::printf("%-28s %8ld bytes an entry\n", "memory", (resident_kb() - empty_kb) * 1024 / kEntries);
  const double read = measure({}, [] { dir_read(&gDir, sSortFunction, sSortOrder); });
  fl_update();
  report("read alone", read, read);
  report("open the directory", open, read);
  report("refresh", measure({}, [] { fl_refresh(); }), read);
  report("filter", measure([] { fl_setspec("*"); }, [] { fl_setspec("file*"); }), read);
  fl_setspec("*");
  report("select all", measure(fl_unselect_all, fl_select_all), read);
  report("invert", measure({}, fl_invert_all), read);
  report("select every other one", measure(fl_unselect_all, [] { fl_select_pattern("file*", true); }), read);
  fl_unselect_all();
  report("shift-click on all", measure({}, [] { fl_choose_rows(1, kEntries, FL_CHOOSE_ONLY, kEntries); }),
         read);
  static const char* const columns[] = {"name", "size", "date", "owner", "group", "permissions", "link"};
  for (int column = 0; column < FL_COLUMNS; ++column)
    report((std::string("sort by ") + columns[column]).c_str(), measure({}, [&] { fl_sort_cb(column); }),
           read);
}

}  // namespace

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 0);
  QApplication application(argc, argv);
  desktop_qt_setup();
  state_init(1, argv);
  char pattern[] = "/tmp/zan-bench-XXXXXX";
  const char* dir = mkdtemp(pattern);
  if (!dir) return 1;
  fill(dir);
  run(dir);
  base_destroy();
  std::filesystem::remove_all(dir);
  return 0;
}
