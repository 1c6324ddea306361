// The type-ahead interpreter: what is typed into the file list. Interface thread.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

// A key symbol is the code of the character, or one of these.
enum : uint32_t { INTERP_BACKSPACE = 0x08, INTERP_ENTER = 0x0d, INTERP_ESCAPE = 0x1b };

struct InterpKey {
  bool down = true;     // pressed, not released
  bool valid = false;   // carries both a key symbol and a key cap
  uint32_t symbol = 0;  // code point, or one of the above
  std::string text;     // the character in its multibyte form; empty: it has none
};

// What the interpreter asks of the file list.
struct InterpList {
  // Finds text from the first entry on (flags of views/find.h), and selects and shows the entry found, or
  // leaves nothing selected and no entry current.
  std::function<void(const char* text, unsigned flags)> search;
  std::function<void()> open_current;
};
void interp_attach(InterpList list);

// 0: not consumed; 1: consumed, the interpreter is active; -1: consumed, it has just ended.
int interp_key(const InterpKey& key);
// Whether interp_key would consume the key. Changes nothing.
bool interp_wants(const InterpKey& key);
void interp_clear();
// Writes the mode character and what was typed into status1, or an empty text when idle.
void interp_echo();
