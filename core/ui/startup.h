// From the command line to the running window.
#pragma once

struct CommandLine;

// Points the toolkit at the display server that -s names: a Wayland one when the name begins with "wayland"
// or is a socket's, else an X display. Before the application object is made.
void startup_choose_display(const CommandLine& line);

// Runs the program: everything between the application object and its end. The exit status.
int startup_run(int argc, char** argv, const CommandLine& line);
