// What the companion programs share: looking for programs, handing over to them, telling what is missing.
#pragma once

#include <string>
#include <vector>

using Words = std::vector<std::string>;

// Undoes what the caller left of signal settings. Prints help for the one argument --help, and ends with 0;
// not when a file of that name stands in the current directory.
void companion_start(int argc, char** argv, const char* help);

// The path of a program along PATH (or of one given with a path); empty when there is none.
std::string companion_find(const std::string& program);
// The first of these programs that is there; empty when none is.
std::string companion_find_first(const std::vector<const char*>& programs);
// The file name of a path: "/usr/bin/vim" gives "vim".
std::string companion_base_name(const std::string& path);

bool companion_has_display();
bool companion_has_terminal();  // standard input and output are one

// A file name as the caller meant it. The file manager passes a single quote as the four characters \047:
// where no file of the given name exists, but one with the quotes does, that one is meant.
std::string companion_file(const std::string& argument);
// The same as an argument that no program takes for an option or a command: "./" before any odd first
// character.
std::string companion_file_argument(const std::string& argument);
// The same as an absolute path.
std::string companion_file_path(const std::string& argument);

// Becomes the program. Comes back only when that fails.
void companion_exec(const Words& words);
// The same in a terminal: the one that is there already, else a new one.
void companion_exec_in_terminal(const Words& words);
// Runs the program and waits. Its exit status; 127 when it could not be started.
int companion_run(const Words& words);
// Goes on in a process without terminal, while this one ends with status 0.
void companion_detach();

// Tells what is wrong on standard error and, where that is no terminal but there is a display, in a window.
// Ends with status 1.
[[noreturn]] void companion_fail(const std::string& message);
