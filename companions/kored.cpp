// Opens files in the user's text editor.
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "companions/common_part.h"

namespace {
const char kHelp[] =
    "Usage: kored [-r] [FILE...]\n"
    "Opens files in $VISUAL or $EDITOR (in a terminal), else in the desktop's graphical editor, else in the\n"
    "first terminal editor found.\n"
    "  -r  only for reading: with the editor where it can do that, else with $PAGER or less\n";

const std::vector<const char*> kGraphical{"gnome-text-editor", "kwrite",  "kate",  "gedit",
                                          "mousepad",          "pluma",   "xed",   "featherpad",
                                          "l3afpad",           "leafpad", "geany", "gvim"};
const std::vector<const char*> kInTerminal{"sensible-editor", "editor", "nano", "micro", "nvim", "vim", "vi"};

// How an editor is told to open for reading only; empty when it cannot.
Words reading_option(const std::string& editor) {
  const std::string name = companion_base_name(editor);
  for (const char* vi : {"vi", "vim", "nvim", "gvim", "vim.basic", "vim.tiny", "view"})
    if (name == vi) return {"-R"};
  if (name == "nano") return {"-v"};
  if (name == "micro") return {"-readonly", "true"};
  return {};
}

// The user's own editor or pager is a command line: options may stand in it. The files come behind it as
// arguments and are no part of that text.
Words own_command(const std::string& command, const Words& tail) {
  Words words{"/bin/sh", "-c", command + " \"$@\"", "sh"};
  words.insert(words.end(), tail.begin(), tail.end());
  return words;
}

// The command line in an environment variable; empty when its program is not there, or is this one.
std::string own_choice(const char* variable) {
  const char* value = getenv(variable);
  const std::string command = value ? value : "";
  const std::string program = command.substr(0, command.find(' '));
  return companion_find(program).empty() || companion_base_name(program) == "kored" ? "" : command;
}

Words joined(Words first, const Words& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

void edit_files(const std::string& own, const Words& files) {
  if (!own.empty()) companion_exec_in_terminal(own_command(own, files));
  if (companion_has_display())
    if (const std::string editor = companion_find_first(kGraphical); !editor.empty()) {
      companion_detach();
      companion_exec(joined({editor}, files));
    }
  if (const std::string editor = companion_find_first(kInTerminal); !editor.empty())
    companion_exec_in_terminal(joined({editor}, files));
}

void read_files(const std::string& own, const Words& files) {
  const std::string program = own.substr(0, own.find(' '));
  if (const Words option = reading_option(program); !own.empty() && !option.empty())
    companion_exec_in_terminal(own_command(own, joined(option, files)));
  if (const std::string pager = own_choice("PAGER"); !pager.empty())
    companion_exec_in_terminal(own_command(pager, files));
  for (const char* reader : {"less", "nano", "nvim", "vim", "vi"})
    if (!companion_find(reader).empty())
      companion_exec_in_terminal(joined(joined({reader}, reading_option(reader)), files));
  edit_files(own, files);
}
}  // namespace

int main(int argc, char** argv) {
  companion_start(argc, argv, kHelp);
  // Alone, "-r" is a file's name: there is nothing else to open.
  const bool only_read = argc > 2 && std::strcmp(argv[1], "-r") == 0;
  Words files;
  for (int i = only_read ? 2 : 1; i < argc; ++i) files.push_back(companion_file_argument(argv[i]));
  const std::string visual = own_choice("VISUAL");
  const std::string own = visual.empty() ? own_choice("EDITOR") : visual;
  if (only_read)
    read_files(own, files);
  else
    edit_files(own, files);
  companion_fail("no text editor found. Install one, or name yours in VISUAL or EDITOR.");
}
