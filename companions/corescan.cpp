// Tells what is in a core dump.
#include <cstdio>

#include "companions/common_part.h"

static const char kHelp[] =
    "Usage: corescan FILE...\n"
    "Prints what program left a core dump, and where each of its threads stood, with gdb or eu-stack.\n";

static int scan(const std::string& file) {
  std::printf("%s\n", file.c_str());
  if (!companion_find("file").empty()) companion_run({"file", "-L", "-b", file});
  // No init file and no script that a stranger's core dump might bring along is run.
  if (!companion_find("gdb").empty())
    return companion_run({"gdb", "-nx", "-batch", "-iex", "set auto-load off", "-iex",
                          "set debuginfod enabled off", "-ex", "thread apply all bt", "--core=" + file});
  if (!companion_find("eu-stack").empty()) return companion_run({"eu-stack", "--core=" + file});
  companion_fail("neither gdb nor eu-stack found. Install gdb to look into core dumps.");
}

int main(int argc, char** argv) {
  companion_start(argc, argv, kHelp);
  if (argc < 2) return std::fputs(kHelp, stderr), 2;
  int status = 0;
  for (int i = 1; i < argc; ++i) status |= scan(companion_file_argument(argv[i]));
  return status;
}
