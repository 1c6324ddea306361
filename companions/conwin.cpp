// Opens the user's terminal emulator, with a command in it or a shell.
#include <unistd.h>

#include <string>

#include "companions/terminals_part.h"

static const char kHelp[] =
    "Usage: conwin [-U] [-z] [-e] [COMMAND [ARGUMENT...]]\n"
    "Opens a terminal window in the current directory, with the command or a shell in it.\n"
    "  -z  keep the window open after the command has ended\n"
    "  -U  close it then, unless the command failed\n"
    "  -e  the command follows; its window closes with it (the default)\n"
    "The terminal is $TERMINAL, else x-terminal-emulator, xterm or another well-known one.\n";

// The command's own words are arguments here, so nothing in them is read as shell text. The trap keeps the
// shell, and so the window, when the command is interrupted.
static const std::string kRun = "trap : INT QUIT; \"$@\"; status=$?; ";
static const std::string kWait =
    "printf '\\n[ended with status %s; Enter closes the window] ' \"$status\"; read -r answer";
// What went wrong must not go with the window before it can be read. A command that a signal ended was the
// user's to end.
static const std::string kUnlessFailed = "[ $status -eq 0 ] || [ $status -ge 128 ] || ";

int main(int argc, char** argv) {
  companion_start(argc, argv, kHelp);
  bool keep_open = false, close_when_done = false;
  for (int option; (option = getopt(argc, argv, "+Uze")) != -1 && option != 'e';) {
    if (option == '?') return 2;
    keep_open |= option == 'z';
    close_when_done |= option == 'U';
  }
  Words command(argv + optind, argv + argc);
  if ((keep_open || close_when_done) && !command.empty())
    command.insert(
        command.begin(),
        {"/bin/sh", "-c", kRun + (keep_open ? kWait : kUnlessFailed + "{ " + kWait + "; }"), "sh"});
  if (!companion_has_display()) companion_fail("there is no display to open a terminal window on.");
  for (const Words& words : terminal_commands(command)) companion_exec(words);
  companion_fail("no terminal emulator found. Install xterm, or name yours in TERMINAL.");
}
