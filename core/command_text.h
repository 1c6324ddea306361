// Names inside shell command lines. A name is data: whatever it holds, the shell never takes it for a
// command.
#pragma once

#include <string>
#include <string_view>
#include <vector>

// The template with every '@' replaced by the quoted names, or with the names behind it when it has none.
// "\@" is a plain '@'; a placeholder between two equal quotes takes their place. False when a name that the
// shell could take for more than a word would stand where no quoting holds it.
bool command_expand(std::string_view command_template, const std::vector<std::string>& names,
                    std::string* out);

// The name as one shell word: as it stands when it is plain (letters, digits and "_-./+:,=@%"), else quoted.
std::string command_word(std::string_view name);

// The name as an argument that no program takes for an option: "./" before a leading '-'.
std::string command_argument(std::string_view name);
