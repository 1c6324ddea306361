#include "core/command.h"

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
    return misc_spawn(input_group, "/bin/sh", {"-c", "exec " + std::string(command) + " &"});
  return misc_spawn(input_group, host_companion("conwin"),
                    {keep_open ? "-zU" : "-U", "/bin/sh", "-c", command});
}

int misc_spawn(int, const std::string& program, const std::vector<std::string>& arguments) {
  std::vector<std::string> argv{program};
  argv.insert(argv.end(), arguments.begin(), arguments.end());
  return spawnvpe(program, argv) < 0 ? -1 : 0;
}
