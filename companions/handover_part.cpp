#include "companions/handover_part.h"

#include <cstdio>
#include <cstdlib>

namespace {
const std::vector<const char*> kOpeners{"xdg-open", "gio", "exo-open"};

Words opener_words(const std::string& opener, const std::string& target) {
  if (companion_base_name(opener) == "gio") return {opener, "open", target};
  return {opener, target};
}

// All targets at once with one of the programs; comes back only when none of them can be started.
void open_with_programs(const Words& targets, const std::vector<const char*>& programs) {
  for (const char* program : programs) {
    Words words{program};
    words.insert(words.end(), targets.begin(), targets.end());
    if (!companion_find(program).empty()) companion_exec(words);
  }
}

[[noreturn]] void handover(const Words& targets, const std::vector<const char*>& programs,
                           const std::string& what) {
  const std::string missing = "no " + what + " found. Install one, or choose the desktop's.";
  if (!companion_has_display()) companion_fail("there is no display to open a window on.");
  const std::string opener = companion_find_first(kOpeners);
  if (opener.empty() && companion_find_first(programs).empty()) companion_fail(missing);
  companion_detach();
  Words left;
  for (const std::string& target : targets)
    if (opener.empty() || companion_run(opener_words(opener, target)) != 0) left.push_back(target);
  if (left.empty()) std::exit(0);
  open_with_programs(left, programs);
  companion_fail(missing);
}
}  // namespace

void handover_files(const Words& files, const std::vector<const char*>& programs, const std::string& what) {
  Words targets;
  for (const std::string& file : files) targets.push_back(companion_file_path(file));
  handover(targets, programs, what);
}

void handover_address(const std::string& address, const std::vector<const char*>& programs,
                      const std::string& what) {
  handover({address}, programs, what);
}

int handover_main(int argc, char** argv, const char* help, const std::vector<const char*>& programs,
                  const std::string& what) {
  companion_start(argc, argv, help);
  if (argc < 2) return std::fputs(help, stderr), 2;
  handover_files(Words(argv + 1, argv + argc), programs, what);
}
