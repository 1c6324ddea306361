#include "core/command.h"

#include <fcntl.h>
#include <unistd.h>

#include <cctype>
#include <cstdlib>
#include <cstring>

#include "core/command_text.h"
#include "dirmodel/dir_record.h"
#include "platform/host.h"

namespace {
const char* skip_space(const char* text) {
  while (isspace(static_cast<unsigned char>(*text))) ++text;
  return text;
}

bool begins_with_word(const char* text, const char* word) {
  const size_t length = std::strlen(word);
  return std::strncmp(text, word, length) == 0 &&
         (text[length] == 0 || isspace(static_cast<unsigned char>(text[length])));
}

// The names of all selected entries in listing order. False when there are none, or a directory among them.
bool selected_names(std::vector<std::string>* names) {
  for (int32_t i = 0; i < gDir.count; ++i) {
    const DirEntry& entry = *gDir.entries[i];
    if (!(entry.flags & ENTRY_SELECTED)) continue;
    if (dir_entry_is_directory(entry)) return false;
    names->push_back(entry.name);
  }
  return !names->empty();
}

// The kernel takes no single argument of 128 KiB, and a terminal may quote this one once more.
constexpr size_t kLongestArgument = 32 * 1024;

bool write_script(int fd, std::string_view text) {
  while (!text.empty()) {
    const ssize_t written = write(fd, text.data(), text.size());
    if (written <= 0) return false;
    text.remove_prefix(static_cast<size_t>(written));
  }
  return true;
}

// Puts the text into a new file that only the user can read, where it goes with the session if nobody takes
// it away. Its path; empty when that fails.
std::string keep_script(const std::string& text) {
  for (const char* variable : {"XDG_RUNTIME_DIR", "TMPDIR", ""}) {
    const char* value = *variable ? getenv(variable) : "/tmp";
    if (!value || *value != '/') continue;
    std::string path = std::string(value) + "/zan-command-XXXXXX";
    const int fd = mkostemp(path.data(), O_CLOEXEC);
    if (fd < 0) continue;
    const bool whole = write_script(fd, text);
    if (close(fd) == 0 && whole) return path;
    unlink(path.c_str());
  }
  return {};
}

// Starts a shell with the command line: program and its arguments, "/bin/sh" the last of them. A command line
// that is too long for an argument, as that of many names, goes over a script that takes itself away first.
int run_shell_line(int input_group, const std::string& program, std::vector<std::string> arguments,
                   const std::string& line) {
  std::string script;
  if (line.size() > kLongestArgument) script = keep_script("rm -f -- \"$0\"\n" + line + "\n");
  if (script.empty())
    arguments.insert(arguments.end(), {"-c", line});
  else
    arguments.push_back(script);
  const int result = misc_spawn(input_group, program, arguments);
  if (result != 0 && !script.empty()) unlink(script.c_str());
  return result;
}

bool current_is_directory() {
  return gDir.current >= 0 && gDir.current < gDir.count &&
         dir_entry_is_directory(*gDir.entries[gDir.current]);
}
}  // namespace

int file_cmd(const char* command_template, const char* name) {
  if (gDir.sel_count == 1 && current_is_directory()) return -1;
  command_template = skip_space(command_template);
  if (!*command_template) return 0;
  std::vector<std::string> names;
  if (name)
    names.push_back(name);
  else if (!selected_names(&names))
    return -1;
  std::string command;
  if (!command_expand(command_template, names, &command)) return -1;
  return misc_run(0, 0, command.c_str());
}

int misc_run(int input_group, int keep_open, const char* command) {
  command = skip_space(command);
  if (!*command) return -1;
  setenv("VRIG", std::to_string(input_group).c_str(), 1);
  if (begins_with_word(command, "conwin"))
    return run_shell_line(input_group, "/bin/sh", {}, "exec " + std::string(command) + " &");
  return run_shell_line(input_group, host_companion("conwin"), {keep_open ? "-zU" : "-U", "/bin/sh"},
                        command);
}

int misc_spawn(int, const std::string& program, const std::vector<std::string>& arguments) {
  std::vector<std::string> argv{program};
  argv.insert(argv.end(), arguments.begin(), arguments.end());
  return spawnvpe(program, argv) < 0 ? -1 : 0;
}
