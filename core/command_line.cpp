#include "core/command_line.h"

#include <cerrno>
#include <climits>
#include <cstdlib>
#include <cstring>

namespace {
std::optional<int> number_of(const char* text) {
  char* end;
  errno = 0;
  const long value = std::strtol(text, &end, 10);
  if (end == text || *end || errno || value < INT_MIN || value > INT_MAX) return {};
  return static_cast<int>(value);
}

// Stores one option's value. False when the letter does not exist.
bool store_option(CommandLine* line, char letter, const char* value) {
  switch (letter) {
    case 's':
      line->server = value;
      return true;
    case 'x':
      line->x = number_of(value);
      return true;
    case 'y':
      line->y = number_of(value);
      return true;
    case 'w':
      line->w = number_of(value);
      return true;
    case 'h':
      line->h = number_of(value);
      return true;
    case 'S':
      if (*value && std::strchr("imn", *value) && !value[1]) line->state = *value;
      return true;
    default:
      return false;
  }
}
}  // namespace

CommandLine command_line_parse(int argc, char** argv) {
  CommandLine line;
  for (int i = 1; i < argc && !line.bad; ++i) {
    const char* argument = argv[i];
    if (argument[0] != '-' || !argument[1]) break;
    if (argument[1] == '-') {
      if (!argument[2]) break;
      if (std::strcmp(argument, "--help") == 0)
        line.help = true;
      else if (std::strcmp(argument, "--version") == 0)
        line.version = true;
      else
        line.bad = true;
      continue;
    }
    const char* value = argument[2] ? argument + 2 : ++i < argc ? argv[i] : nullptr;
    if (!store_option(&line, argument[1], value ? value : "") || !value) line.bad = true;
  }
  return line;
}

const char* command_line_usage() {
  return "usage: zan [-s server] [-x x] [-y y] [-w width] [-h height] [-S i|m|n] [directory]\n";
}

const char* command_line_help() {
  return "usage: zan [-s server] [-x x] [-y y] [-w width] [-h height] [-S i|m|n] [directory]\n"
         "Graphical visualization and management of the Filesystem.\n\n"
         "  -s server   display server to connect to\n"
         "  -x x, -y y  initial position of the window\n"
         "  -w width    initial width\n"
         "  -h height   initial height\n"
         "  -S i|m|n    start iconified, maximised or normal\n"
         "  --help      print this and end\n"
         "  --version   print the version and end\n\n"
         "Write an option's value joined to its letter (-x10) when a directory follows.\n";
}

const char* command_line_version() {
  return "zan " ZAN_VERSION "\n";
}
