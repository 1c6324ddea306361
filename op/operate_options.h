// What the command line of an operation asks for.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

struct OperateOptions {
  int kind = 0;  // FOP_ code
  std::string from, to;
  std::vector<std::string> names;
  std::vector<int> answers;
  bool answers_given = false;
  std::string long_name;  // empty: skip
  std::string settings;   // path of a settings record; empty: the default one
  std::optional<uint32_t> flags;
  int pause_at = -1, pause_ms = 0, cancel_at = -1;  // percent; -1: never
  bool json = false;
};

// False for a usage error, with its message in *error.
bool operate_parse(int argc, char** argv, OperateOptions* options, std::string* error);
