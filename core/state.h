// Application-wide state. All of it belongs to the interface thread, unless a member says otherwise.
#pragma once

#include <cstdint>
#include <string>

#include "core/settings.h"

extern std::string gStartPath;       // absolute path to show first, should it be a directory
extern std::string gStartElsewhere;  // absolute path of the directory shown where it is none
extern const char* gConfigPath;      // the settings directory; null: nothing is ever saved
extern Settings* gConfig;            // never null; the default record before state_init
extern uint32_t gOptions;            // OPT_ bits
extern int base_window_closed;       // 1 once the main window was closed or hidden

enum : uint32_t {
  OPT_MENU_SCAN = 0x0001,  // a directory menu just filled is scanned in the background
  OPT_DOT_FILES = 0x0004,  // set with OPT_DOT_TREE whenever "Hide 'dot' Files" is off
  OPT_PATH_COMPLETION = 0x0010,
  OPT_PATH_COLOUR = 0x0020,
  OPT_DOT_TREE = 0x0100,
  OPT_TREE_PROBE = 0x0400,
  OPT_TREE_DOT = 0x0800,
  OPT_TREE_SORTED = 0x1000,
  OPT_SHOW_PARENT = 0x2000,
  OPT_DOT_PAIR = OPT_DOT_FILES | OPT_DOT_TREE,
};
// 0x3135: dot files until the settings say otherwise, completion, colouring, sorted tree, "..", menu scan.
constexpr uint32_t OPT_INITIAL = 0x3135;

// Everything of start-up that needs no window: the start directory, the settings directory (with its message
// on standard error), the settings record and its character set, the input histories.
void state_init(int argc, char** argv);

// Sets gStartPath to the first argument that does not begin with '-', made absolute, and gStartElsewhere to
// the current directory, or "/"; both to that where there is no such argument. Does not look at the
// argument's file system: the window is to be seen while that may hang.
void state_start_directory(int argc, char** argv);

// Finds or creates ".vr/zan" under HOME; its absolute path. Empty, with a message on standard error, when it
// cannot be used.
std::string state_settings_directory();
