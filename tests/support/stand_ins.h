// Stand-ins for programs, first on the PATH, that record how they were called; and names that would do harm
// if any shell or program took them for more than names.
#pragma once

#include <string>
#include <vector>

#include "tests/support/temp_dir.h"

// Each would leave a file "canary" if anything of it were executed as it stands in the directory shown.
std::vector<std::string> hostile_names();

// A name as a started program gets it: the quoting passes a single quote on as four characters.
std::string as_received(std::string name);

class StandIns {
 public:
  using Call = std::vector<std::string>;  // the program's name, then its arguments

  // Puts the stand-ins' directory before the PATH and the companions' behind it, names the stand-in
  // "terminal" in TERMINAL and sets a DISPLAY that is none.
  StandIns();
  ~StandIns();
  // A program that records its call and ends with that status, or goes on with a line of shell.
  void add(const std::string& name, const std::string& then = "exit 0");
  // A terminal that runs "-e PROGRAM ARGUMENT..." (or a shell that ends at once) without a window.
  void add_running_terminal() { add("terminal", "[ $# -gt 0 ] || exit 0; shift; exec \"$@\""); }
  // From now on nothing else is found but the companions and what the stand-ins themselves need.
  void hide_other_programs();
  // The calls, in the order they came, once there are at least so many.
  std::vector<Call> calls(size_t count) { return calls_of("", count); }
  // Of the program of that name.
  std::vector<Call> calls_of(const std::string& name, size_t count);
  void clear() { dir_.shell("/bin/rm -f log/*"); }  // forgets the calls so far

 private:
  TempDir dir_;
  std::vector<std::pair<std::string, std::string>> environment_;  // as it was
};
