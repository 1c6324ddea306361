// Reading and sorting 100,000 entries, against the bare calls that no reader can do without.
#include <benchmark/benchmark.h>
#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

#include "core/state.h"
#include "dirmodel/dir_read.h"
#include "dirmodel/text.h"
#include "platform/terminal/terminal.h"
#include "views/find.h"

namespace {
constexpr int kEntries = 100000;

// A directory of empty files, a link in fifty and a subdirectory in a hundred, gone at the end.
struct BigDirectory {
  std::string path;
  BigDirectory() {
    path = std::string(getenv("TMPDIR") ? getenv("TMPDIR") : "/tmp") + "/zan-bench-XXXXXX";
    if (!mkdtemp(path.data())) std::abort();
    for (int i = 0; i < kEntries; ++i) {
      char name[64];
      std::snprintf(name, sizeof name, "/file %05d with a name.txt", i * 7919 % kEntries);
      const std::string entry = path + name;
      if (i % 100 == 0)
        mkdir(entry.c_str(), 0755);
      else if (i % 50 == 1)
        (void)!symlink("target", entry.c_str());
      else
        close(open(entry.c_str(), O_CREAT | O_WRONLY, 0644));
    }
  }
  ~BigDirectory() { (void)!system(("rm -rf '" + path + "'").c_str()); }
};

BigDirectory* sDirectory;

int compare_texts(const void* a, const void* b) {
  return std::strcmp(*static_cast<char* const*>(a), *static_cast<char* const*>(b));
}

// readdir, lstat of every path, qsort of the names.
void read_bare(const std::string& path) {
  std::vector<char*> names;
  DIR* dir = opendir(path.c_str());
  std::string full = path + "/";
  const size_t length = full.size();
  struct stat status;
  while (const dirent* entry = readdir(dir)) {
    full.resize(length);
    full += entry->d_name;
    if (lstat(full.c_str(), &status) != 0) std::abort();
    names.push_back(strdup(entry->d_name));
  }
  closedir(dir);
  qsort(names.data(), names.size(), sizeof names[0], compare_texts);
  for (char* name : names) free(name);
}

void read_dir_fresh(const std::string& path) {
  DirRecord dir;
  dir.path = path;
  if (dir_read(&dir, dir_cmp_name, 1) != 0 || dir.count != kEntries) std::abort();
  dir_free(&dir);
}

void BM_BareLoop(benchmark::State& state) {
  for (auto _ : state) read_bare(sDirectory->path);
}
void BM_DirRead(benchmark::State& state) {
  for (auto _ : state) read_dir_fresh(sDirectory->path);
}
void BM_Refresh(benchmark::State& state) {
  for (auto _ : state)
    if (dir_read(&gDir, dir_cmp_name, 1) != 0) std::abort();
}

void BM_Sort(benchmark::State& state, dir_compare compare) {
  int ascending = 0;
  for (auto _ : state) dir_sort(&gDir, compare, ascending ^= 1);
}

void BM_SelectAll(benchmark::State& state) {
  for (auto _ : state) {
    for (int32_t i = 0; i < gDir.count; ++i) gDir.entries[i]->flags ^= ENTRY_SELECTED;
    benchmark::ClobberMemory();
  }
}
void BM_Filter(benchmark::State& state) {
  for (auto _ : state) {
    int matches = 0;
    x_find("^*7*.TXT|*.c", 0, 0, [&](int) { ++matches; });
    benchmark::DoNotOptimize(matches);
  }
}

struct Cost {
  double wall, cpu;  // seconds; cpu of all threads
};

Cost cost_of(void (*work)(const std::string&)) {
  const auto cpu_now = [] {
    timespec time;
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
  };
  const auto start = std::chrono::steady_clock::now();
  const double cpu = cpu_now();
  work(sDirectory->path);
  return {std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count(), cpu_now() - cpu};
}

double median_of(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

// The two by turns, so that whatever else the machine does falls on both alike; the median of the ratios.
void print_ratio() {
  std::vector<double> wall, cpu;
  for (int i = 0; i < 15; ++i) {
    const Cost bare = cost_of(read_bare), read = cost_of(read_dir_fresh);
    wall.push_back(read.wall / bare.wall);
    cpu.push_back(read.cpu / bare.cpu);
  }
  std::printf("ratio dir_read/bare loop (%d entries): %.2f in time (bound 1.3), %.2f in processor time\n",
              kEntries, median_of(wall), median_of(cpu));
}

void print_memory() {
  const auto resident = [] {
    long pages = 0, total = 0;
    FILE* file = std::fopen("/proc/self/statm", "r");
    if (!file || std::fscanf(file, "%ld %ld", &total, &pages) != 2) std::abort();
    std::fclose(file);
    return pages * sysconf(_SC_PAGESIZE);
  };
  const long before = resident();
  gDir.path = sDirectory->path;
  if (dir_read(&gDir, dir_cmp_name, 1) != 0) std::abort();
  std::printf("memory: %ld bytes an entry (bound 700)\n", (resident() - before) / kEntries);
}

BENCHMARK(BM_BareLoop)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_DirRead)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK(BM_Refresh)->Unit(benchmark::kMillisecond)->UseRealTime();
BENCHMARK_CAPTURE(BM_Sort, name, dir_cmp_name)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Sort, size, dir_cmp_size)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Sort, date, dir_cmp_date)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Sort, owner, dir_cmp_user)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Sort, group, dir_cmp_group)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Sort, permissions, dir_cmp_permissions)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Sort, link, dir_cmp_link)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_SelectAll)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Filter)->Unit(benchmark::kMillisecond);
}  // namespace

int main(int argc, char** argv) {
  terminal_start();
  BigDirectory directory;
  sDirectory = &directory;
  gConfig->flags &= ~SET_HIDE_DOT;
  print_memory();
  print_ratio();
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
