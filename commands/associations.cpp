#include "commands/associations.h"

#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstring>

#include "core/command.h"
#include "core/command_text.h"
#include "core/save_file.h"
#include "dirmodel/text.h"
#include "platform/desktop.h"
#include "platform/host.h"

std::vector<std::unique_ptr<Association>> apat;
int32_t apat_ctr = 0, apat_max = 10;

namespace {
constexpr size_t kLineMax = 1023;      // bytes of a line that are read at once
constexpr size_t kFileMax = 64 << 20;  // no table is that long
constexpr size_t kFiletypeMax = 2047;  // bytes of the `file` program's line
constexpr int kFiletypePatience_ms = 3000;

// Exactly this line begins the file; its "\t" are two characters each.
constexpr char kHeader[] =
    "# <pattern[|pattern[..]]> \\t <open_command> \\t <view_command> \\t <edit command>\n";
static_assert(sizeof kHeader == 80 + 1);

struct DefaultRow {
  const char *pattern, *open, *view, *edit;
};
constexpr DefaultRow kDefaults[] = {
    {"*.[ch]", "kored", "kored -r", "kored"},
    {"[Mm]akefile", "conwin -z make -f @", "kored", "kored"},
    {"*.txt", "kored", "kored -r", "kored"},
    {"*.core", "conwin -z corescan @", "", ""},
    {"^*.jpg|*.jpeg|*.gif|*.bmp", "imgshow", "", "imgshow"},
    {"^*.html|*.htm", "roamer -u file://$PWD/@", "roamer -u file://$PWD/@", ""},
    {"^*.rm|*.rm|*.ram|*.smi|*.smil", "streamplay", "streamplay", ""},
    {"^*.wav|*.aif|*.aiff", "mediaplay", "mediaplay", ""},
    {"^*.mpeg|*.mp[123agv]|*.au|*.iff", "mediaplay", "mediaplay", ""},
    {"^*.ttf|*.pfr|*.vrf|*.ffs", "cp $PWD/@ /usr/vireon/font", "", ""},
};

[[noreturn]] void give_up(const std::string& message) {
  desk_report("Error", message);
  std::fflush(nullptr);
  _exit(1);  // the interface stands half built: nothing of it may run destructors
}

void clear_table() {
  apat.clear();
  apat.resize(10);
  apat_ctr = 0;
  apat_max = 10;
}

void put_record(Association association) {
  apat[static_cast<size_t>(apat_ctr++)] = std::make_unique<Association>(std::move(association));
}

void _add_pat(const char* pattern, const char* open, const char* view, const char* edit) {
  put_record({pattern, open, edit, view});
}

void grow_table() {
  if (apat_ctr < apat_max) return;
  apat_max = apat_ctr + 10;
  apat.resize(static_cast<size_t>(apat_max));
}

// The next line as a reader with a buffer of 1024 bytes sees it: a longer one comes in pieces, and a NUL
// hides the rest of its piece.
std::string next_line(const std::string& text, size_t* at) {
  size_t end = text.find('\n', *at);
  end = std::min({end == std::string::npos ? text.size() : end + 1, text.size(), *at + kLineMax});
  std::string line = text.substr(*at, end - *at);
  *at = end;
  if (const size_t nul = line.find('\0'); nul != std::string::npos) line.resize(nul);
  if (line.ends_with('\n')) line.pop_back();
  return line;
}

void read_table(const std::string& text) {
  for (size_t at = 0; at < text.size();) {
    const std::string line = next_line(text, &at);
    if (line.starts_with('#')) continue;
    if (line.find('\t') == std::string::npos)
      give_up("Invalid association at line " + std::to_string(apat_ctr + 1));
    put_record(as_parse_line(line.c_str()));
    grow_table();
  }
}

// The line in the file. One that is read at once must not come back in two pieces because its missing fields
// are written: then it goes without them.
std::string file_line(const Association& association) {
  std::string line = as_line(association);
  while (line.size() >= kLineMax && line.ends_with('\t')) line.pop_back();
  return line.substr(0, kLineMax - 1) + '\n';
}

const std::string& command_of(const Association& association, int32_t selector) {
  if (selector == AS_VIEW) return association.view_cmd;
  return selector == AS_EDIT ? association.edit_cmd : association.open_cmd;
}

// What the file program says behind the name, which may hold colons itself.
std::string after_name(const std::string& line, const std::string& name) {
  if (line.starts_with(name + ": ")) return line.substr(name.size() + 2);
  const size_t colon = line.find(':');
  return colon == std::string::npos ? line : line.substr(std::min(colon + 2, line.size()));
}

const char* mode_text(mode_t mode) {
  switch (mode & S_IFMT) {
    case 0x1000:
      return "FIFO";
    case 0x2000:
      return "Special File";
    case 0x4000:
      return "Directory";
    case 0x6000:
      return "Block Special File";
    case 0xA000:
      return "Symbolic Link";
    case 0x5000:
      return "Special Named File";
    case 0xC000:
      return "Socket";
    default:
      break;
  }
  if (mode & 0x4000) return "OKR Special Type";
  if (mode & 0111) return "Executable";
  return (mode & S_IFMT) == 0x8000 ? "Regular File" : nullptr;
}
}  // namespace

void init_read_associations(const char* dir, const char* name) {
  clear_table();
  std::string text;
  if (load_file(dir, name, kFileMax, &text)) return read_table(text);
  for (const DefaultRow& row : kDefaults) _add_pat(row.pattern, row.open, row.view, row.edit);
}

int _split_str(const char* source, char separator, const char** fields, int n) {
  static char sBuffer[kLineMax + 1];
  const size_t length = std::min(std::strlen(source), kLineMax);
  std::memcpy(sBuffer, source, length);
  sBuffer[length] = 0;
  std::fill(fields, fields + n, "");
  char* at = sBuffer;
  int field = 0;
  while (field < n) {
    fields[field++] = at;
    at = std::strchr(at, separator);
    if (!at) return field - 1;
    *at++ = 0;
  }
  return field;
}

int _get_pat_idx(const char* name) {
  for (int32_t i = 0; i < apat_ctr; ++i)
    if (es_strcmp(name, apat[static_cast<size_t>(i)]->pattern.c_str()) == 0) return i;
  return -1;
}

const char* _get_pat_cmd(const char* name, int32_t selector) {
  const int index = _get_pat_idx(name);
  if (index < 0) return nullptr;
  const std::string& command = command_of(*apat[static_cast<size_t>(index)], selector);
  return isempty(command.c_str()) ? nullptr : command.c_str();
}

int isempty(const char* text) {
  while (*text && std::strchr(" \t\n\v\f\r", *text)) ++text;
  return *text == 0;
}

std::string as_line(const Association& association) {
  return association.pattern + '\t' + association.open_cmd + '\t' + association.view_cmd + '\t' +
         association.edit_cmd;
}

Association as_parse_line(const char* line) {
  const char* fields[4];
  _split_str(line, '\t', fields, 4);
  return {fields[0], fields[1], fields[3], fields[2]};
}

void as_replace(const std::vector<std::string>& lines) {
  apat.clear();
  for (const std::string& line : lines)
    apat.push_back(std::make_unique<Association>(as_parse_line(line.c_str())));
  apat_ctr = apat_max = static_cast<int32_t>(apat.size());
}

int as_write(const char* dir, const char* name) {
  std::string text = kHeader;
  for (int32_t i = 0; i < apat_ctr; ++i) text += file_line(*apat[static_cast<size_t>(i)]);
  return save_file(dir, name, text);
}

int as_open(const char* name, mode_t mode, const std::function<void(int)>& block) {
  // The commands first: running one may let events in, and with them the table's editor.
  std::vector<std::string> commands;
  for (int32_t i = 0; i < apat_ctr; ++i)
    if (es_strcmp(name, apat[static_cast<size_t>(i)]->pattern.c_str()) == 0)
      commands.push_back(apat[static_cast<size_t>(i)]->open_cmd);
  for (const std::string& command : commands) file_cmd(command.c_str(), name);
  if (commands.empty() && (mode & S_IXUSR)) {
    if (block) block(1);
    misc_run(0, 0, ("./" + command_word(name)).c_str());
    if (block) block(0);
  }
  return static_cast<int>(commands.size());
}

int as_get_filetype(const char* path, mode_t mode, std::string* out) {
  const std::string name = command_argument(path);
  std::string line;
  if (host_first_line("file -L " + command_word(name), kFiletypeMax, kFiletypePatience_ms, &line)) {
    *out = after_name(line, name);
    return 1;
  }
  const char* text = mode_text(mode);
  if (text) *out = text;
  return text ? 1 : 0;
}
