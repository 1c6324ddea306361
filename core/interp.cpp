#include "core/interp.h"

#include "core/command.h"
#include "platform/desktop.h"
#include "views/find.h"

namespace {
constexpr size_t kBufferSize = 1024;  // with the terminating NUL
constexpr uint32_t kFirstSymbol = ' ', kLastSymbol = 'z';

char sState = 0;  // 0 when idle, else '/', '?' or ':'
std::string sBuffer;
std::string sLastSearch;  // survives clearing
InterpList sInterpList;

bool is_mode_character(uint32_t symbol) {
  return symbol == ':' || symbol == '/' || symbol == '?';
}

void interp_search(const std::string& text) {
  if (sState == ':' || !sInterpList.search) return;
  sInterpList.search(text.c_str(), sState == '?' ? FIND_BACKWARD | FIND_PREFIX : FIND_PREFIX);
}

int interp_end() {
  interp_clear();
  return -1;
}

int interp_run_command() {
  const std::string command = sBuffer;
  interp_clear();
  misc_run(0, 1, command.c_str());
  return -1;
}

int interp_key_enter() {
  if (sState == 0) return 0;
  if (sState == ':') return interp_run_command();
  if (!sBuffer.empty()) sLastSearch = sBuffer;
  const bool open = sState == '/';
  interp_search(sLastSearch);
  interp_clear();
  if (open && sInterpList.open_current) sInterpList.open_current();
  return -1;
}

int interp_key_backspace() {
  if (sBuffer.empty()) return sState == 0 ? 0 : interp_end();
  sBuffer.pop_back();
  interp_search(sBuffer);
  return 1;
}

int interp_key_character(const InterpKey& key) {
  if (sState == 0 && is_mode_character(key.symbol)) {
    sState = static_cast<char>(key.symbol);
    return 1;
  }
  if (key.symbol < kFirstSymbol || key.symbol > kLastSymbol) return 0;
  if (key.symbol == ' ' && sBuffer.empty()) return sState == 0 ? 0 : 1;
  if (key.text.empty()) return 0;
  if (sBuffer.size() + key.text.size() >= kBufferSize) return 1;
  sBuffer += key.text;
  if (sState == 0) sState = '/';
  interp_search(sBuffer);
  return 1;
}
}  // namespace

void interp_attach(InterpList list) {
  sInterpList = std::move(list);
}

int interp_key(const InterpKey& key) {
  if (!key.down || !key.valid) return 0;
  switch (key.symbol) {
    case INTERP_ESCAPE:
      return sState == 0 ? 0 : interp_end();
    case INTERP_ENTER:
      return interp_key_enter();
    case INTERP_BACKSPACE:
      return interp_key_backspace();
    default:
      return interp_key_character(key);
  }
}

bool interp_wants(const InterpKey& key) {
  if (!key.valid) return false;
  if (key.symbol == INTERP_ESCAPE || key.symbol == INTERP_ENTER || key.symbol == INTERP_BACKSPACE)
    return sState != 0;
  if (key.symbol < kFirstSymbol || key.symbol > kLastSymbol) return false;
  if (sState == 0 && is_mode_character(key.symbol)) return true;
  return key.symbol == ' ' && sBuffer.empty() ? sState != 0 : !key.text.empty();
}

void interp_clear() {
  sState = 0;
  sBuffer.clear();
}

void interp_echo() {
  desk_status(1, sState == 0 ? std::string() : sState + sBuffer);
}
