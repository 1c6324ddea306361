#include "dirmodel/text.h"

#include <gtest/gtest.h>

#include <clocale>
#include <cstdlib>

TEST(Text, PatternsMatchWholeNames) {
  struct Row {
    const char* pattern;
    const char* name;
    bool match;
  };
  const std::string deep(10000, '['), stars = [] {
    std::string text;
    for (int i = 0; i < 40; ++i) text += "*a";
    return text + "*b";
  }();
  const std::string many_a(255, 'a');
  const Row rows[] = {
      {"^read*", "README", true},
      {"read*", "README", false},
      {"*.gz|*.tar", "x.tar", true},
      {"*.gz|*.tar", "x.tar.bz2", false},
      {"^*.jpg|*.jpeg", "A.JPEG", true},
      {"*.jpg|^*.jpeg", "A.JPEG", false},
      {"*", "\xff\xfe", true},
      {"*.c", "\xff.c", true},
      {"?.c", "\xff.c", true},
      {"*.c", ".c", true},
      {"*.c", "c", false},
      {"*.c", "x.cc", false},
      {"*.", "x.", true},
      {"*.c*", "x.cc", true},
      {"*.[ch]", "x.h", true},
      {"*.[ch]", "x.]", false},
      {"*.[ch]x", "x.cx", true},
      {"*.[a-c]", "x.b", true},
      {"*.[!c]", "x.c", false},
      {"*.[", "x.[", true},
      {"[Mm]akefile", "makefile", true},
      {"[Mm]akefile", "makefile.in", false},
      {"[Mm]akefile", "[akefile", false},
      {"*.]", "x.]", true},
      {"*.\\*", "x.*", true},
      {"*.\xc3\xa9", "x.\xc3\xa9", true},
      {"^*.C", "\xff.c", true},
      {"*", ".hidden", true},
      {"a*c", "a/b/c", true},
      {"", "", true},
      {"", "a", false},
      {"|a", "", true},
      {"a||b", "", true},
      {"|||", "x", false},
      {"^", "", true},
      {"^", "x", false},
      {"[", "[", true},
      {"[", "a", false},
      {"[a-c]x", "bx", true},
      {"\\*", "*", true},
      {"\\*", "a", false},
      {"\\", "\\", false},
      {deep.c_str(), "x", false},
      {stars.c_str(), many_a.c_str(), false},
  };
  for (const char* locale : {"C", "C.UTF-8"}) {
    ASSERT_TRUE(setlocale(LC_ALL, locale));
    for (const Row& row : rows)
      EXPECT_EQ(es_strcmp(row.name, row.pattern) == 0, row.match)
          << locale << " " << std::string(row.pattern).substr(0, 20) << " " << row.name;
  }
  setlocale(LC_ALL, "C");
}

TEST(Text, StripsPathsByItsOnePassRule) {
  const char* rows[][2] = {
      {"", ""},
      {"/", "/"},
      {"a", "a"},
      {"//", "/"},
      {"/////", "/"},
      {"///a", "//a"},
      {"//a", "//a"},
      {"/a//b", "/a/b"},
      {"a//b//c", "a/b//c"},
      {"a//bc//d", "a/bc/d"},
      {"/usr/", "/usr"},
      {"/a/b///", "/a/b"},
      {"a//b/", "a/b"},
      {"a/////b//c", "a/b//c"},
      {"//a//b/", "//a/b"},
      {"////a/b", "//a/b"},
  };
  for (auto& row : rows) {
    std::string path = row[0];
    es_strip_pathname(&path);
    EXPECT_EQ(path, row[1]) << row[0];
  }
}

TEST(Text, CutsTheLastComponent) {
  const char* rows[][2] = {{"/a/b", "/a"}, {"/a/b/", "/a"}, {"a/b", "a"}, {"/a", "/"},   {"/", "/"},
                           {"a", "a"},     {"a/", "a/"},    {"", ""},     {"/a//", "/a"}};
  for (auto& row : rows) {
    std::string path = row[0];
    es_remove_subdirectory(&path);
    EXPECT_EQ(path, row[1]) << row[0];
  }
}

TEST(Text, JoinsPaths) {
  struct Row {
    const char *dir, *name, *path;
  };
  const Row rows[] = {{"/a", "b", "/a/b"},    {"/a/", "b", "/a/b"},  {"/a/", "/b", "/a//b"},
                      {"/", "b", "/b"},       {nullptr, "b/", "b/"}, {"/a", nullptr, "/a"},
                      {nullptr, nullptr, ""}, {"/a//", "/", "/a"},   {"//", "/", "//"},
                      {"", "b", "/b"},        {"/", "", "/"}};
  for (const Row& row : rows) EXPECT_EQ(es_construct_fullpath(row.dir, row.name), row.path);
}

TEST(Text, SizeTexts) {
  const std::pair<int32_t, const char*> properties[] = {
      {500, "500 byte_count"},     {1023, "1023 byte_count"},     {1024, "1.0KB"},
      {1536, "1.512KB"},           {1023999, "999.1023KB"},       {1024000, "1.0MB"},
      {-5, "-5 byte_count"},       {1023999999, "999.1023999MB"}, {1024000000, "1.0GB"},
      {2147483647, "2.99483647GB"}};
  for (auto& [size, text] : properties) EXPECT_EQ(es_generate_byte_string(size), text) << size;

  struct Row {
    int32_t high;
    uint32_t low;
    const char* text;
  };
  const Row status[] = {{0, 0, "0 bytes"},
                        {0, 1023, "1023 bytes"},
                        {0, 1024, "1.0KB"},
                        {0, 1048575, "1024.0KB"},
                        {0, 1048576, "1.0MB"},
                        {1, 0, "4096.0MB"},
                        {0, 0xffffffffu, "4096.0MB"},
                        {-1, 0xfffffffbu, "-5 bytes"}};
  for (const Row& row : status) EXPECT_STREQ(ll2str(row.high, row.low), row.text);

  const std::pair<uint64_t, const char*> list[] = {
      {0, "0"}, {999, "999"}, {1000, "1,000"}, {18446744073709551615u, "18,446,744,073,709,551,615"}};
  for (auto& [size, text] : list) EXPECT_STREQ(cvt2c(size), text);
}

TEST(Text, TimeTexts) {
  setenv("TZ", "UTC", 1);
  tzset();
  const time_t now = time(nullptr);
  const auto text = [](time_t t, int mode) {
    std::string out = "kept";
    const int length = es_generate_time_string(&out, t, mode);
    EXPECT_EQ(length, static_cast<int>(out.size()));
    return out;
  };
  EXPECT_EQ(text(0, 2), " 01/01/1970 12:00 AM");
  EXPECT_EQ(text(1, 7), "kept");
  EXPECT_EQ(text(now - 3600 * 24 * 400, 0), text(now - 3600 * 24 * 400, 1));
  const std::pair<long, const char*> ages[] = {
      {100, " 100 seconds"},    {120, " 2 minutes"},       {119 * 60, " 119 minutes"},
      {120 * 60, " 2 hours"},   {47 * 3600, " 47 hours"},  {48 * 3600, " 2 days"},
      {59 * 86400, " 59 days"}, {60 * 86400, " 2 months"}, {355 * 86400, " 11 months"}};
  for (auto& [age, expected] : ages) EXPECT_EQ(text(now - age, 0), expected);
  struct tm broken;
  const time_t three_days = now - 3 * 86400;
  gmtime_r(&three_days, &broken);
  char weekday[32];
  strftime(weekday, sizeof weekday, "%A", &broken);
  EXPECT_NE(text(three_days, 1).find(weekday), std::string::npos);
  EXPECT_NE(text(now - 40000, 1).find("yesterday"), std::string::npos);  // by the divisor, whatever the hour
  EXPECT_EQ(text(INT64_MAX, 2), "");
}

TEST(Text, QuotedNamesComeBackFromAShell) {
  std::string line = "x ";
  EXPECT_EQ(add_name(&line, ""), 0);
  EXPECT_EQ(add_name(&line, "a b"), 6);
  EXPECT_EQ(add_name(&line, "it's"), 10);
  EXPECT_EQ(line, "x 'a b' 'it\\047s' ");
  EXPECT_EQ(add_name(nullptr, ""), 3);
  EXPECT_EQ(add_name(nullptr, "it's"), 10);
}
