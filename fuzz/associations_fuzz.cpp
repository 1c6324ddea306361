// The association table's reader, its look-ups, and the way back through the file.
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "commands/associations.h"
#include "platform/terminal/terminal.h"

namespace {
std::string fuzz_directory() {
  static char sDirectory[] = "/dev/shm/associations-fuzz-XXXXXX";  // the writer waits for the disk
  static const char* sMade = mkdtemp(sDirectory);
  if (!sMade) abort();
  static const int sAtExit = atexit([] {
    std::remove((std::string(sDirectory) + "/in").c_str());
    std::remove((std::string(sDirectory) + "/out").c_str());
    rmdir(sDirectory);
  });
  (void)sAtExit;
  return sDirectory;
}

// A line without a TAB in its first 1023 bytes ends the program, as it should: here it gets one, and a longer
// line ends there.
std::string mended(const std::string& input) {
  std::istringstream lines(input);
  std::string text;
  for (std::string line; std::getline(lines, line);) {
    const std::string seen = line.c_str();
    if (!seen.starts_with('#') && seen.find('\t') == std::string::npos) line.insert(0, "p\t");
    text += line.substr(0, 1022) + "\n";
    if (line.size() > 1022 && std::string(line.c_str()).substr(0, 1022).find('\t') == std::string::npos)
      return "";
  }
  return text;
}

std::string table_text() {
  std::string text;
  for (int i = 0; i < apat_ctr; ++i) text += as_line(*apat[static_cast<size_t>(i)]) + "\n";
  return text;
}
}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  terminal_start();
  const std::string input(reinterpret_cast<const char*>(data), size), directory = fuzz_directory();
  std::ofstream(directory + "/in", std::ios::binary) << mended(input);
  init_read_associations(directory.c_str(), "in");
  const std::string table = table_text(), name = input.substr(0, 40);
  const int count = apat_ctr, index = _get_pat_idx(name.c_str());
  for (int32_t selector : {AS_OPEN, AS_VIEW, AS_EDIT})
    if (_get_pat_cmd(name.c_str(), selector) && index < 0) abort();
  if (as_write(directory.c_str(), "out") != 0) abort();
  init_read_associations(directory.c_str(), "out");
  if (apat_ctr != count || table_text() != table) abort();
  return 0;
}
