// What an operation costs beside its own calls: the work list's memory, and progress, pause and cancel.
#include <benchmark/benchmark.h>
#include <malloc.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <thread>

#include "fileops/alloc_list.h"
#include "fileops/fop.h"
#include "fileops/fop_path.h"
#include "fileops/fop_progress.h"
#include "fileops/fop_scan.h"
#include "platform/terminal/terminal.h"

namespace {
constexpr int kDirs = 100, kFiles = 1000;

std::string make_tree() {
  std::string root = "/dev/shm/zan-bench-XXXXXX";
  if (!mkdtemp(root.data())) std::abort();
  for (int d = 0; d < kDirs; ++d) {
    const std::string dir = root + "/d" + std::to_string(d);
    mkdir(dir.c_str(), 0755);
    for (int f = 0; f < kFiles; ++f)
      std::fclose(std::fopen((dir + "/a-usual-file-name-" + std::to_string(f)).c_str(), "w"));
  }
  return root;
}

void select(fop_request* request, const std::string& root) {
  request->control = std::make_shared<fop_control>();
  request->mem = alloc_start();
  request->bufsize = 32768;
  request->buf = static_cast<char*>(alloc_add(request->mem, std::calloc(1, 32768)));
  request->dest = strdup("/nowhere");
  request->groups = static_cast<fop_group**>(alloc_add(request->mem, std::calloc(1, sizeof(fop_group*))));
  auto* group = static_cast<fop_group*>(alloc_add(request->mem, std::calloc(1, sizeof(fop_group))));
  group->dir = strdup("/dev/shm");
  group->names = static_cast<char**>(alloc_add(request->mem, std::calloc(1, sizeof(char*))));
  group->names[0] = strdup(root.c_str() + 9);
  group->types = static_cast<uint8_t*>(alloc_add(request->mem, std::calloc(1, 1)));
  group->count = request->ngroups = request->groups_capacity = request->total_items = 1;
  request->groups[0] = group;
}
}  // namespace

// Bytes that the list takes for each of 100,000 files.
static void BM_WorkListMemory(benchmark::State& state) {
  const std::string root = make_tree();
  for (auto _ : state) {
    fop_request request;
    select(&request, root);
    const auto before = mallinfo2();
    if (fop_build_filelist(&request) != 0) state.SkipWithError("no list");
    const auto after = mallinfo2();
    const double bytes = static_cast<double>(after.uordblks + after.hblkhd - before.uordblks - before.hblkhd);
    state.counters["bytes_per_file"] = bytes / (kDirs * kFiles);
    alloc_free(request.mem);
  }
  (void)!system(("rm -rf " + root).c_str());
}
BENCHMARK(BM_WorkListMemory)->Iterations(1)->Unit(benchmark::kMillisecond);

// All looks at pause and cancel and all progress of one small file: what the copy of one adds to its calls.
static void BM_ProgressOfOneFile(benchmark::State& state) {
  fop_request request;
  request.control = std::make_shared<fop_control>();
  request.total_items = 20000;
  const std::string from = "/home/somebody/a/tree/with/directories/dir0012/file07",
                    to = "/mnt/elsewhere/dir0012/file07";
  for (auto _ : state) {
    for (int i = 0; i < 3; ++i) benchmark::DoNotOptimize(fop_cancelled(&request));
    fop_show_progress(&request, 10, 1000000, nullptr, "From: ", from.c_str(), "  To: ", to.c_str());
    fop_show_progress(&request, 11, 1000000);
    fop_show_progress(&request, 11, 1000000);
  }
}
BENCHMARK(BM_ProgressOfOneFile);

// Those of one stride of a large file.
static void BM_ProgressOfOneStride(benchmark::State& state) {
  fop_request request;
  request.control = std::make_shared<fop_control>();
  for (auto _ : state) {
    benchmark::DoNotOptimize(fop_cancelled(&request));
    fop_show_progress(&request, 11, 1000000);
  }
}
BENCHMARK(BM_ProgressOfOneStride);

// From a cancel until the worker of a paused operation goes on to its end; worst_ms is to stay under 50.
static void BM_CancelWhilePaused(benchmark::State& state) {
  using Clock = std::chrono::steady_clock;
  double worst = 0;
  int moment = 0;
  for (auto _ : state) {
    fop_request request;
    request.control = std::make_shared<fop_control>();
    request.control->pause = 1;
    std::thread worker([&] { benchmark::DoNotOptimize(fop_cancelled(&request)); });
    std::this_thread::sleep_for(
        std::chrono::milliseconds(10 + 7 * moment++ % 41));  // anywhere between two looks
    const auto begun = Clock::now();
    request.control->cancel = 1;
    worker.join();
    const double seconds = std::chrono::duration<double>(Clock::now() - begun).count();
    state.SetIterationTime(seconds);
    worst = std::max(worst, seconds);
  }
  state.counters["worst_ms"] = worst * 1e3;
}
BENCHMARK(BM_CancelWhilePaused)->Iterations(100)->UseManualTime()->Unit(benchmark::kMillisecond);

BENCHMARK_MAIN();
