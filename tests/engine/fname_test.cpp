#include <gtest/gtest.h>

#include <thread>

#include "tests/support/encoding.h"

TEST(Fname, DecodesByMode) {
  // Overlong, half of a surrogate pair, beyond the last character; shown null: the very argument.
  const std::tuple<uint32_t, const char*, const char*, const char*, int> rows[] = {
      {0, "", "caf\xc3\xa9", nullptr, 0},
      {0, "", "a\xff.", "?a?.", 1},
      {0, "", "\xc3", "??", 1},
      {0, "", "\xc0\xaf", "???", 2},
      {0, "", "\xe0\x9f\xbf", "????", 3},
      {0, "", "\xed\xa0\x80", "????", 3},
      {0, "", "\xf4\x90\x80\x80", "?????", 4},
      {0, "", "\xf0\x9f\x98\x80", nullptr, 0},
      {SET_ENC_UTF8_ALTERNATE, "ISO-8859-1", "caf\xc3\xa9", nullptr, 0},
      {SET_ENC_UTF8_ALTERNATE, "ISO-8859-1", "caf\xe9", "caf\xc3\xa9", 0},
      {SET_ENC_ALTERNATE, "ISO-8859-1", "caf\xc3\xa9", "caf\xc3\x83\xc2\xa9", 0},
      {SET_ENC_ALTERNATE, "no-such-set", "caf\xe9", nullptr, 0},
      {SET_ENC_ALTERNATE, "SHIFT_JIS", "a\xff/b", "?a??b", 2},
      {SET_ENC_UTF8_ALTERNATE, "EUC-JP", "\xa4\xa2\xff", "?\xe3\x81\x82?", 1}};
  for (const auto& [mode, charset, name, shown, replaced] : rows) {
    Encoding encoding(mode, charset);
    int count = -1;
    const char* decoded = fname_decode(name, &count);
    EXPECT_STREQ(decoded, shown ? shown : name) << mode << charset;
    EXPECT_TRUE((shown || decoded == name) && count == replaced) << mode << charset << " " << name;
  }
}

TEST(Fname, EncodesOnlyWhereItIsAskedTo) {
  const char* cafe = "caf\xc3\xa9";
  // Disk equal to text: the very argument; null: refused.
  const std::tuple<uint32_t, const char*, const char*, const char*> rows[] = {
      {0, "ISO-8859-1", cafe, cafe},
      {SET_ENC_UTF8_ALTERNATE, "ISO-8859-1", cafe, cafe},
      {SET_ENC_ALTERNATE, "ISO-8859-1", cafe, "caf\xe9"},
      {SET_ENC_ALTERNATE, "ISO-8859-1", "\xe3\x81\x82", nullptr},
      {SET_ENC_ALTERNATE, "UTF-16LE", "ab", nullptr}};
  for (const auto& [mode, charset, text, disk] : rows) {
    Encoding encoding(mode, charset);
    EXPECT_STREQ(fname_encode(text), disk) << mode << charset;
    EXPECT_TRUE(disk != text || fname_encode(text) == text) << mode << charset;
  }
  Encoding encoding(SET_ENC_ALTERNATE, "ISO-8859-1");
  for (int byte = 1; byte < 256; ++byte) {
    const std::string name = {'a', static_cast<char>(byte)}, shown = fname_decode(name.c_str());
    EXPECT_STREQ(fname_encode(shown.c_str()), name.c_str()) << byte;
  }
}

TEST(Fname, LongTextsAreCutAtWholeCharactersAndNeverHalfEncoded) {
  std::string text(1, '\xff');
  for (int i = 0; i < 2000; ++i) text += "\xc3\xa9";
  const std::string shown = fname_decode(text.c_str());
  EXPECT_EQ(shown.size(), 1022u);  // the mark, one replaced byte, 510 whole characters
  EXPECT_EQ(shown.substr(1020), "\xc3\xa9");
  Encoding encoding(SET_ENC_ALTERNATE, "ISO-8859-1");
  EXPECT_EQ(strlen(fname_encode(text.substr(1, 2046).c_str())), 1023u);
  EXPECT_EQ(fname_encode(text.substr(1, 2048).c_str()), nullptr);
}

TEST(Fname, ThreadsDoNotDisturbEachOther) {
  Encoding encoding(SET_ENC_ALTERNATE, "ISO-8859-1");
  const auto work = [](char letter) {
    const std::string name(100, letter);
    for (int i = 0; i < 5000; ++i) ASSERT_EQ(name, fname_encode(fname_decode(name.c_str())));
  };
  std::thread one(work, '\xe9'), two(work, 'x');
  for (int i = 0; i < 50; ++i) fname_set_translation(i % 2 ? "ISO-8859-15" : "ISO-8859-1");
  one.join(), two.join();
  EXPECT_TRUE(fname_charset_opens("ISO-8859-15") && !fname_charset_opens("no-such-set"));
}
