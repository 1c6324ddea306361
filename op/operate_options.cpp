#include "op/operate_options.h"

#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <cstring>

#include "fileops/start.h"

namespace {
// A whole number without anything around it.
bool parse_number(const std::string& text, int base, long limit, long* value) {
  char* end;
  if (text.empty() || text[0] == '-' || text[0] == '+' || text[0] == ' ') return false;
  errno = 0;
  *value = std::strtol(text.c_str(), &end, base);
  return *end == '\0' && errno == 0 && *value <= limit;
}

bool parse_answers(const std::string& text, OperateOptions* options) {
  size_t start = 0;
  options->answers_given = true;
  while (start <= text.size()) {
    const size_t comma = std::min(text.find(',', start), text.size());
    long answer;
    if (!parse_number(text.substr(start, comma - start), 10, INT_MAX, &answer) || answer < 1) return false;
    options->answers.push_back(static_cast<int>(answer));
    start = comma + 1;
  }
  return true;
}

bool parse_percent(const std::string& text, int* percent) {
  long value;
  if (!parse_number(text, 10, 100, &value)) return false;
  *percent = static_cast<int>(value);
  return true;
}

bool parse_pause(const std::string& text, OperateOptions* options) {
  const size_t colon = text.find(':');
  long milliseconds;
  if (colon == std::string::npos || !parse_number(text.substr(colon + 1), 10, INT_MAX, &milliseconds))
    return false;
  options->pause_ms = static_cast<int>(milliseconds);
  return parse_percent(text.substr(0, colon), &options->pause_at);
}

bool parse_flags(const std::string& text, OperateOptions* options) {
  long flags;
  if (!parse_number(text, 16, UINT32_MAX, &flags)) return false;
  options->flags = static_cast<uint32_t>(flags);
  return true;
}

bool parse_value(const std::string& option, const std::string& value, OperateOptions* options) {
  if (option == "--from") return options->from = value, !value.empty();
  if (option == "--to") return options->to = value, !value.empty();
  if (option == "--answer") return parse_answers(value, options);
  if (option == "--long-name") return options->long_name = value, !value.empty();
  if (option == "--settings") return options->settings = value, !value.empty();
  if (option == "--flags") return parse_flags(value, options);
  if (option == "--pause-at") return parse_pause(value, options);
  return parse_percent(value, &options->cancel_at);
}

bool takes_value(const std::string& option) {
  for (const char* known :
       {"--from", "--to", "--answer", "--long-name", "--settings", "--flags", "--pause-at", "--cancel-at"})
    if (option == known) return true;
  return false;
}

std::string absolute(const std::string& path) {
  if (path.empty() || path[0] == '/') return path;
  char* cwd = getcwd(nullptr, 0);
  const std::string base = cwd ? cwd : "";
  std::free(cwd);
  return base + (base == "/" ? "" : "/") + path;
}

// One name of the source directory, not a path.
bool is_entry_name(const std::string& name) {
  return !name.empty() && name != "." && name != ".." && name.find('/') == std::string::npos;
}

bool check(OperateOptions* options, std::string* error) {
  const bool needs_dest = options->kind != FOP_DELETE;
  if (options->from.empty()) return *error = "--from DIR is missing", false;
  if (needs_dest && options->to.empty()) return *error = "--to DEST is missing", false;
  if (!needs_dest && !options->to.empty()) return *error = "a delete takes no --to", false;
  if (options->names.empty()) return *error = "no names", false;
  for (const std::string& name : options->names)
    if (!is_entry_name(name)) return *error = "not a name in the directory: '" + name + "'", false;
  options->from = absolute(options->from);
  options->to = absolute(options->to);
  return true;
}
}  // namespace

bool operate_parse(int argc, char** argv, OperateOptions* options, std::string* error) {
  const std::string command = argv[0];
  options->kind = command == "copy" ? FOP_COPY : command == "move" ? FOP_MOVE : FOP_DELETE;
  bool only_names = false;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    if (only_names || argument.compare(0, 2, "--") != 0) {
      options->names.push_back(argument);
    } else if (argument == "--") {
      only_names = true;
    } else if (argument == "--json") {
      options->json = true;
    } else if (argument == "--long-name-skip") {
      options->long_name.clear();
    } else if (!takes_value(argument)) {
      return *error = "unknown option " + argument, false;
    } else if (i + 1 == argc || !parse_value(argument, argv[i + 1], options)) {
      return *error = "a proper value is missing for " + argument, false;
    } else {
      ++i;
    }
  }
  return check(options, error);
}
