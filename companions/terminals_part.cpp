#include "companions/terminals_part.h"

#include <cstdlib>
#include <sstream>

namespace {
enum class Way {
  kExecute,  // -e PROGRAM ARGUMENT...
  kCross,    // -x PROGRAM ARGUMENT...
  kDashes,   // -- PROGRAM ARGUMENT...
  kBare,     // PROGRAM ARGUMENT...
  kStart,    // start -- PROGRAM ARGUMENT...
  kOneText,  // -e "PROGRAM ARGUMENT...", split again as a shell would
};

// In the order in which they are looked for.
const struct {
  const char* name;
  Way way;
} kTerminals[] = {
    {"x-terminal-emulator", Way::kExecute},
    {"xterm", Way::kExecute},
    {"konsole", Way::kExecute},
    {"gnome-terminal", Way::kDashes},
    {"ptyxis", Way::kDashes},
    {"kgx", Way::kDashes},
    {"xfce4-terminal", Way::kCross},
    {"mate-terminal", Way::kCross},
    {"tilix", Way::kOneText},
    {"terminator", Way::kCross},
    {"lxterminal", Way::kOneText},
    {"qterminal", Way::kOneText},
    {"foot", Way::kBare},
    {"kitty", Way::kBare},
    {"alacritty", Way::kExecute},
    {"wezterm", Way::kStart},
    {"ghostty", Way::kExecute},
    {"urxvt", Way::kExecute},
    {"rxvt", Way::kExecute},
    {"st", Way::kExecute},
    {"uxterm", Way::kExecute},
    {"terminology", Way::kOneText},
};

std::string quoted_text(const Words& words) {
  std::string text;
  for (const std::string& word : words) {
    text += text.empty() ? "'" : " '";
    for (char c : word) text += c == '\'' ? "'\\''" : std::string(1, c);
    text += "'";
  }
  return text;
}

Way way_of(const std::string& program) {
  const std::string name = companion_base_name(program);
  for (const auto& terminal : kTerminals)
    if (name == terminal.name) return terminal.way;
  return Way::kExecute;
}

Words with_command(Words words, const Words& command) {
  if (command.empty()) return words;
  Words tail = command;
  switch (way_of(words[0])) {
    case Way::kExecute:
      words.push_back("-e");
      break;
    case Way::kCross:
      words.push_back("-x");
      break;
    case Way::kDashes:
      words.push_back("--");
      break;
    case Way::kBare:
      break;
    case Way::kStart:
      words.insert(words.end(), {"start", "--"});
      break;
    case Way::kOneText:
      words.push_back("-e");
      tail = {quoted_text(command)};
      break;
  }
  words.insert(words.end(), tail.begin(), tail.end());
  return words;
}

// $TERMINAL is a program, or a program with options of its own.
Words users_terminal() {
  const char* value = getenv("TERMINAL");
  if (!value || companion_base_name(value) == "conwin") return {};
  if (!companion_find(value).empty()) return {value};
  std::istringstream text(value);
  Words words;
  for (std::string word; text >> word;) words.push_back(word);
  return words;
}
}  // namespace

std::vector<Words> terminal_commands(const Words& command) {
  std::vector<Words> list;
  if (const Words own = users_terminal(); !own.empty() && !companion_find(own[0]).empty())
    list.push_back(with_command(own, command));
  for (const auto& terminal : kTerminals)
    if (!companion_find(terminal.name).empty()) list.push_back(with_command({terminal.name}, command));
  return list;
}
