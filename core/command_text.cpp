#include "core/command_text.h"

#include <algorithm>
#include <cctype>
#include <cstring>
#include <memory>

#include "dirmodel/text.h"

namespace {
// What the shell makes of the place that the text has come to.
enum class Place {
  kPlain,   // outside quotes
  kSingle,  // inside '...', and outside quotes for a shell that gets this text as its command line
  kDouble,  // inside "...", the same
  kLost,    // a backslash waits, a comment, `...`, ${...}, arithmetic, quotes in quotes: no quoting surely
            // holds
};

bool is_plain_byte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
         (c != 0 && std::strchr("_-./+:,=@%", c));
}

bool is_plain_name(std::string_view name) {
  return std::all_of(name.begin(), name.end(), is_plain_byte);
}

// A name that may fall into several words, but that no shell could take for anything else.
bool is_harmless_name(std::string_view name) {
  return std::all_of(name.begin(), name.end(), [](char c) { return is_plain_byte(c) || c == ' ' || c < 0; });
}

// Follows the shell through the text written so far, character by character. Quoted text is followed once
// more on its own: it may be the command line of another shell, as in: sh -c "wc -l @".
class ShellReader {
 public:
  ShellReader() { push(Place::kPlain); }
  void feed(char c);
  void feed_names();  // a list of quoted names has been written
  Place place() const;

 private:
  struct Level {
    Place place;
    std::unique_ptr<ShellReader> inner;
  };
  void push(Place place);
  void follow_duplication(char c);
  void plain(char c);
  void quoted(char c);
  void escaped(char c);
  void open_parenthesis();

  std::vector<Level> levels_;  // the enclosing "$(", "(" and quotes
  char previous_ = '\n';
  bool escaped_ = false, comment_ = false, lost_ = false;
  // Behind ">&" and in the number there: some shells read that word a second time, without its quotes.
  bool duplicating_ = false, in_number_ = false;
};

void ShellReader::push(Place place) {
  levels_.push_back({place, place == Place::kPlain ? nullptr : std::make_unique<ShellReader>()});
}

Place ShellReader::place() const {
  if (lost_ || escaped_ || comment_ || duplicating_) return Place::kLost;
  const Level& level = levels_.back();
  if (level.inner && level.inner->place() != Place::kPlain) return Place::kLost;
  return level.place;
}

void ShellReader::feed_names() {
  previous_ = ' ';
  if (levels_.back().inner) levels_.back().inner->feed_names();
}

void ShellReader::feed(char c) {
  if (comment_)
    comment_ = c != '\n';
  else if (escaped_)
    return escaped(c);
  else if (levels_.back().place == Place::kPlain)
    plain(c);
  else
    quoted(c);
  if (!escaped_) previous_ = c;
}

void ShellReader::escaped(char c) {
  escaped_ = false;
  if (c != '\n') previous_ = 'x';  // a line goes on as if the two characters were not there
  if (!levels_.back().inner) return;
  if (!std::strchr("$`\"\\", c)) levels_.back().inner->feed('\\');
  levels_.back().inner->feed(c);
}

void ShellReader::open_parenthesis() {
  if (previous_ == '(')
    lost_ = true;  // arithmetic
  else
    push(Place::kPlain);
}

void ShellReader::follow_duplication(char c) {
  if (duplicating_) {
    const bool number = isdigit(static_cast<unsigned char>(c)) || c == '-';
    const bool ends = in_number_ && std::strchr(" \t\n;&|()<>", c);
    lost_ |= !number && !ends;
    duplicating_ = in_number_ = number;
  } else {
    duplicating_ = c == '&' && (previous_ == '>' || previous_ == '<');
  }
}

void ShellReader::plain(char c) {
  follow_duplication(c);
  switch (c) {
    case '\\':
      escaped_ = true;
      break;
    case '\'':
      if (previous_ == '$') lost_ = true;  // $'...' has rules of its own
      push(Place::kSingle);
      break;
    case '"':
      push(Place::kDouble);
      break;
    case '`':
      lost_ = true;
      break;
    case '{':
      lost_ |= previous_ == '$';
      break;
    case '<':
      lost_ |= previous_ == '<';
      break;
    case '#':
      comment_ = std::strchr(" \t\n;&|()<>", previous_) != nullptr;
      break;
    case '(':
      open_parenthesis();
      break;
    case ')':
      if (levels_.size() > 1)
        levels_.pop_back();
      else
        lost_ = true;
      break;
    default:
      break;
  }
}

void ShellReader::quoted(char c) {
  if (c == (levels_.back().place == Place::kSingle ? '\'' : '"')) {
    levels_.pop_back();
    return;
  }
  if (levels_.back().place == Place::kDouble) {
    if (c == '\\') {
      escaped_ = true;
      return;
    }
    if (c == '`' || (c == '{' && previous_ == '$')) lost_ = true;
    if (c == '(' && previous_ == '$') {
      push(Place::kPlain);
      return;
    }
  }
  levels_.back().inner->feed(c);
}

// One name of the list, quoted for its place. In quotes a plain name goes as everywhere else; any other keeps
// its single quotes as part of the quoted text, where another shell finds them.
bool append_name(Place place, const std::string& name, std::string* out) {
  std::string quoted;
  add_name(&quoted, name.c_str());
  if (place == Place::kPlain || is_plain_name(name) || (place == Place::kLost && is_harmless_name(name))) {
    *out += quoted;
    return true;
  }
  if (place == Place::kLost) return false;
  for (char c : quoted) {
    if (place == Place::kSingle && c == '\'') {
      *out += "'\\''";
      continue;
    }
    if (place == Place::kDouble && std::strchr("$`\"\\", c)) *out += '\\';
    *out += c;
  }
  return true;
}

bool append_names(ShellReader* reader, const std::vector<std::string>& names, std::string* out) {
  const Place place = reader->place();
  for (const std::string& name : names)
    if (!append_name(place, name, out)) return false;
  reader->feed_names();
  return true;
}

bool is_quote(char c) {
  return c == '\'' || c == '"';
}
}  // namespace

bool command_expand(std::string_view text, const std::vector<std::string>& names, std::string* out) {
  ShellReader reader;
  bool placed = false;
  out->clear();
  const auto copy = [&](std::string_view piece) {
    out->append(piece);
    for (char c : piece) reader.feed(c);
  };
  for (size_t i = 0; i < text.size(); ++i) {
    const std::string_view rest = text.substr(i);
    const bool in_quotes = rest.size() > 2 && is_quote(rest[0]) && rest[1] == '@' && rest[2] == rest[0];
    if (rest.starts_with("\\@")) {
      copy("@");
      ++i;
    } else if (in_quotes || rest[0] == '@') {
      if (!append_names(&reader, names, out)) return false;
      placed = true;
      if (in_quotes) i += 2;
    } else {
      copy(rest.substr(0, 1));
    }
  }
  if (placed) return true;
  copy(" ");
  return append_names(&reader, names, out);
}

std::string command_word(std::string_view name) {
  if (!name.empty() && is_plain_name(name)) return std::string(name);
  std::string word = "'";
  for (char c : name) {
    if (c == '\'')
      word += "'\\''";
    else
      word += c;
  }
  return word + "'";
}

std::string command_argument(std::string_view name) {
  return (name.starts_with('-') ? "./" : "") + std::string(name);
}
