#include "core/interp.h"

#include "core/command.h"
#include "platform/terminal/terminal.h"
#include "tests/support/shown_dir.h"
#include "views/find.h"

// A list of names in gDir, with the interpreter attached to it as the window does.
struct Interp : testing::Test {
  ShownDir dir;
  int current = -2;
  std::string opened, echo;
  Interp() {
    for (const char* name : {"rebuild", "readme", "z.c", "Rest", "a b"}) dir.add(name);
    interp_clear();
    interp_attach({[this](const char* text, unsigned flags) { current = x_find(text, 0, flags); },
                   [this] { opened += name_of(current) + ";"; }});
    terminal_start().on_status = [this](int, const std::string& text) { echo = text; };
  }
  ~Interp() override {
    interp_attach({});
    terminal_reset();
  }
  static std::string name_of(int i) {
    return i == -3 ? "unsearched" : i < 0 ? "none" : gDir.entries[i]->name;
  }

  // Feeds the characters ("\r" Enter, "\b" Backspace, "\x1b" Escape); the last one's result.
  int type(const std::string& keys) {
    int result = 0;
    for (char c : keys) {
      InterpKey key;
      key.valid = true;
      key.symbol = static_cast<uint8_t>(c);
      if (key.symbol >= ' ') key.text = std::string(1, c);
      const bool wanted = interp_wants(key);
      result = interp_key(key);
      EXPECT_EQ(wanted, result != 0) << keys;
    }
    interp_echo();
    return result;
  }
};

// The last key's result, what is current, echoed and opened; an empty search repeats the last confirmed one.
TEST_F(Interp, KeysModesAndWhatTheyFind) {
  const std::pair<const char*, const char*> rows[] = {
      {"rea\b", "1 rebuild /re "},   {"re\b\b", "1 none / "},
      {"re\b\b\b", "-1 none  "},     {"rea\x1b", "-1 readme  "},
      {"R", "1 Rest /R "},           {"*.c", "1 z.c /*.c "},
      {"/z\r", "-1 z.c  z.c;"},      {"/q\r", "-1 none  none;"},
      {"/ a", "1 a b /a "},          {"a b", "1 a b /a b "},
      {"//", "1 none // "},          {"?rea", "1 none ?rea "},
      {"?reb\r", "-1 rebuild  "},    {":r", "1 unsearched :r "},
      {":r\b\b", "-1 unsearched  "}, {" ", "0 unsearched  "},
      {"r~{|}", "0 rebuild /r "},    {"\r", "0 unsearched  "},
      {"\x1b", "0 unsearched  "},    {"/rea\r/z\x1b/\r", "-1 readme  readme;readme;"}};
  for (const auto& [keys, expected] : rows) {
    interp_clear();
    current = -3;
    opened.clear();
    const int result = type(keys);
    EXPECT_EQ(std::to_string(result) + " " + name_of(current) + " " + echo + " " + opened, expected) << keys;
  }
}
