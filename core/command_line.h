// The program's own options; the toolkit parses nothing of the command line.
#pragma once

#include <optional>
#include <string>

struct CommandLine {
  std::string server;             // -s: display server to connect to; empty: the environment's
  std::optional<int> x, y, w, h;  // initial place and size of the main window, pixels
  char state = 0;                 // -S: 'i' iconified, 'm' maximised, 'n' normal; 0 not given
  bool help = false;              // --help
  bool version = false;           // --version
  bool bad = false;               // an option that does not exist, or one without its value
};

// Options s:x:y:h:w:S: up to the first argument that is none; a value stands joined to its letter or in the
// next argument. Values that are no number, or no state, are as if not given. The start directory is not
// looked for here (state_start_directory).
CommandLine command_line_parse(int argc, char** argv);

// One line, with its newline.
const char* command_line_usage();
// What --help prints.
const char* command_line_help();
// What --version prints.
const char* command_line_version();
