// The association table's reader, its look-ups, and the way back through the file.
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <string>

#include "commands/associations.h"
#include "platform/terminal/terminal.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  static char sDirectory[] = "/tmp/associations-fuzz-XXXXXX";
  static const bool made =
      mkdtemp(sDirectory) != nullptr && atexit([] {
                                          std::remove((std::string(sDirectory) + "/in").c_str());
                                          std::remove((std::string(sDirectory) + "/out").c_str());
                                          rmdir(sDirectory);
                                        }) == 0;
  if (!made || size == 0) return 0;
  terminal_start();
  // A line without a TAB ends the program, as it should; here each one gets what is missing.
  std::string text;
  size_t piece = 0;
  bool tab = false;
  const uint8_t fill = data[0];
  for (size_t i = 1; i < size; ++i) {
    char c = static_cast<char>(data[i]);
    if (piece == 0 && c != '#') {
      text += "p\t";
      piece = 2;
      tab = true;
    }
    if (c == '#' && !tab) c = 'x';
    text += c;
    if (c == '\n' || ++piece > 500u + fill) {
      if (c != '\n') text += '\n';
      piece = 0;
      tab = false;
    }
  }
  std::ofstream(std::string(sDirectory) + "/in", std::ios::binary) << text;
  init_read_associations(sDirectory, "in");
  const int count = apat_ctr;
  std::string table;
  for (int i = 0; i < count; ++i) table += as_line(*apat[static_cast<size_t>(i)]) + "\n";
  const std::string name(reinterpret_cast<const char*>(data), std::min<size_t>(size, 40));
  const int index = _get_pat_idx(name.c_str());
  for (int32_t selector : {AS_OPEN, AS_VIEW, AS_EDIT})
    if (_get_pat_cmd(name.c_str(), selector) && index < 0) abort();
  if (as_write(sDirectory, "out") != 0) abort();
  init_read_associations(sDirectory, "out");
  std::string again;
  for (int i = 0; i < apat_ctr; ++i) again += as_line(*apat[static_cast<size_t>(i)]) + "\n";
  if (apat_ctr != count || again != table) abort();
  return 0;
}
