#include "core/interp.h"

#include <gtest/gtest.h>

#include "core/command.h"
#include "dirmodel/dir_record.h"
#include "platform/terminal/terminal.h"
#include "views/find.h"

namespace {
// A list of names in gDir, with the interpreter attached to it as the window does.
class Interp : public testing::Test {
 protected:
  Interp() {
    for (const char* name : {"rebuild", "readme", "z.c", "Rest", "a b"}) {
      auto& entry = entries_.emplace_back();
      snprintf(entry.name, sizeof entry.name, "%s", name);
    }
    for (DirEntry& entry : entries_) pointers_.push_back(&entry);
    gDir.entries = pointers_.data();
    gDir.count = static_cast<int32_t>(pointers_.size());
    interp_clear();
    interp_attach({[this](const char* text, unsigned flags) { current_ = x_find(text, 0, flags); },
                   [this] { opened_ += name_of(current_) + ";"; }});
    terminal_start().on_status = [this](int, const std::string& text) { echo_ = text; };
  }
  ~Interp() override {
    gDir = DirRecord();
    interp_attach({});
    terminal_reset();
  }

  static std::string name_of(int i) { return i < 0 ? "none" : gDir.entries[i]->name; }

  static InterpKey key_of(char c) {
    InterpKey key;
    key.valid = true;
    key.symbol = static_cast<uint8_t>(c);
    if (key.symbol >= ' ') key.text = std::string(1, c);
    return key;
  }

  // Feeds the characters ("\r" Enter, "\b" Backspace, "\x1b" Escape); the last one's result.
  int type(const std::string& keys) {
    int result = 0;
    for (char c : keys) {
      const bool wanted = interp_wants(key_of(c));
      result = interp_key(key_of(c));
      EXPECT_EQ(wanted, result != 0) << keys;
    }
    interp_echo();
    return result;
  }

  std::vector<DirEntry> entries_;
  std::vector<DirEntry*> pointers_;
  int current_ = -2;
  std::string opened_, echo_;
};
}  // namespace

TEST_F(Interp, KeysModesAndWhatTheyFind) {
  const struct {
    const char* keys;
    int result;
    const char *current, *echo, *opened;
  } rows[] = {
      {"rea", 1, "readme", "/rea", ""},  {"rea\b", 1, "rebuild", "/re", ""},
      {"re\b\b", 1, "none", "/", ""},    {"re\b\b\b", -1, "none", "", ""},
      {"rea\x1b", -1, "readme", "", ""}, {"R", 1, "Rest", "/R", ""},
      {"*.c", 1, "z.c", "/*.c", ""},     {"/z", 1, "z.c", "/z", ""},
      {"/z\r", -1, "z.c", "", "z.c;"},   {"/q\r", -1, "none", "", "none;"},
      {"a b", 1, "a b", "/a b", ""},     {"/ a", 1, "a b", "/a", ""},
      {"//", 1, "none", "//", ""},       {"?reb", 1, "rebuild", "?reb", ""},
      {"?rea", 1, "none", "?rea", ""},   {"?reb\r", -1, "rebuild", "", ""},
      {":r", 1, "unsearched", ":r", ""}, {":r\b\b", -1, "unsearched", "", ""},
      {" ", 0, "unsearched", "", ""},    {"~", 0, "unsearched", "", ""},
      {"r~{|}", 0, "rebuild", "/r", ""}, {"\r", 0, "unsearched", "", ""},
      {"\b", 0, "unsearched", "", ""},   {"\x1b", 0, "unsearched", "", ""},
  };
  for (const auto& row : rows) {
    interp_clear();
    current_ = -3;
    opened_.clear();
    EXPECT_EQ(type(row.keys), row.result) << row.keys;
    EXPECT_EQ(current_ == -3 ? "unsearched" : name_of(current_), row.current) << row.keys;
    EXPECT_EQ(echo_, row.echo) << row.keys;
    EXPECT_EQ(opened_, row.opened) << row.keys;
  }
}

TEST_F(Interp, AnEmptySearchRepeatsTheLastConfirmedOne) {
  type("/rea\r");
  type("/z\x1b");  // not confirmed
  current_ = -2;
  EXPECT_EQ(type("/\r"), -1);
  EXPECT_EQ(opened_, "readme;readme;");
}

TEST_F(Interp, LeavesKeysWithoutACharacterAndWhatTheBufferDoesNotHold) {
  InterpKey released = key_of('r'), no_cap = key_of('r'), no_text = key_of('r'), accented = key_of('r');
  released.down = false;
  no_cap.valid = false;
  no_text.text.clear();
  accented.symbol = 0xe9;
  for (const InterpKey& key : {released, no_cap, no_text, accented}) EXPECT_EQ(interp_key(key), 0);
  interp_echo();
  EXPECT_EQ(echo_, "");
  EXPECT_EQ(type(std::string(5000, 'r')), 1);
  EXPECT_EQ(echo_.size(), 1 + 1023u);
}
