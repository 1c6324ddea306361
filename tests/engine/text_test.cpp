#include "dirmodel/text.h"

#include <gtest/gtest.h>

#include <clocale>

TEST(Text, PatternsMatchWholeNames) {
  std::string stars, deep(10000, '['), many_a(255, 'a');
  for (int i = 0; i < 40; ++i) stars += "*a";
  stars += "*b";
  const std::tuple<const char*, const char*, const char*> rows[] = {// null: no such row
                                                                    {"read*", "reader", "README"},
                                                                    {"*.gz|*.tar", "x.tar", "x.tar.bz2"},
                                                                    {"^*.jpg|*.jpeg", "A.JPEG", nullptr},
                                                                    {"*.c", "\xff.c", "c"},
                                                                    {"?.c", "\xff.c", "x.cc"},
                                                                    {"*.[a-c]", "x.b", "x.d"},
                                                                    {"*.[!c]", "x.h", "x.c"},
                                                                    {"*.[", "x.[", "x"},
                                                                    {"*.\\*", "x.*", "x.c"},
                                                                    {"a||b", "", "c"},
                                                                    {"[", "[", "a"},
                                                                    {"\\", nullptr, "\\"},
                                                                    {deep.c_str(), nullptr, "x"},
                                                                    {stars.c_str(), nullptr, many_a.c_str()}};
  for (const char* locale : {"C", "C.UTF-8"}) {
    ASSERT_TRUE(setlocale(LC_ALL, locale));
    for (const auto& [pattern, match, other] : rows) {
      EXPECT_TRUE(!match || es_strcmp(match, pattern) == 0) << pattern << " " << match;
      EXPECT_TRUE(!other || es_strcmp(other, pattern) != 0) << pattern << " " << other;
    }
  }
  setlocale(LC_ALL, "C");
}

TEST(Text, PathsAreStrippedCutAndJoined) {
  const char* strip[][2] = {{"", ""},
                            {"/", "/"},
                            {"/////", "/"},
                            {"///a", "//a"},
                            {"a//b//c", "a/b//c"},
                            {"/a/b///", "/a/b"},
                            {"a//bc//d", "a/bc/d"},
                            {"//a//b/", "//a/b"}};
  for (const auto& [path, stripped] : strip) {
    std::string text = path;
    es_strip_pathname(&text);
    EXPECT_EQ(text, stripped) << path;
  }
  const char* cut[][2] = {{"/a/b", "/a"}, {"/a/b/", "/a"}, {"a/b", "a"}, {"/a", "/"},   {"/", "/"},
                          {"a", "a"},     {"a/", "a/"},    {"", ""},     {"/a//", "/a"}};
  for (const auto& [path, above] : cut) {
    std::string text = path;
    es_remove_subdirectory(&text);
    EXPECT_EQ(text, above) << path;
  }
  const char* join[][3] = {{"/a", "b", "/a/b"}, {"/a/", "b", "/a/b"},  {"/a/", "/b", "/a//b"},
                           {"/", "b", "/b"},    {nullptr, "b/", "b/"}, {"/a", nullptr, "/a"},
                           {"/a//", "/", "/a"}};
  for (const auto& [dir, name, path] : join) EXPECT_EQ(es_construct_fullpath(dir, name), path);
}

TEST(Text, SizeTexts) {
  const std::pair<int32_t, const char*> properties[] = {{-5, "-5 byte_count"},
                                                        {1023, "1023 byte_count"},
                                                        {1536, "1.512KB"},
                                                        {1024000, "1.0MB"},
                                                        {2147483647, "2.99483647GB"}};
  for (const auto& [size, text] : properties) EXPECT_EQ(es_generate_byte_string(size), text) << size;
  const std::tuple<int32_t, uint32_t, const char*> status[] = {{0, 1023, "1023 bytes"},
                                                               {0, 1048575, "1024.0KB"},
                                                               {0, 1048576, "1.0MB"},
                                                               {1, 0, "4096.0MB"},
                                                               {-1, 0xfffffffbu, "-5 bytes"}};
  for (const auto& [high, low, text] : status) EXPECT_STREQ(ll2str(high, low), text);
  const std::pair<uint64_t, const char*> list[] = {
      {0, "0"}, {1000, "1,000"}, {18446744073709551615u, "18,446,744,073,709,551,615"}};
  for (const auto& [size, text] : list) EXPECT_STREQ(cvt2c(size), text);
}

TEST(Text, TimeTexts) {
  setenv("TZ", "UTC", 1);
  tzset();
  const time_t now = time(nullptr);
  const auto text = [](time_t t, int mode) {
    std::string out = "kept";
    es_generate_time_string(&out, t, mode);
    return out;
  };
  EXPECT_EQ(text(0, 2), " 01/01/1970 12:00 AM");
  EXPECT_EQ(text(1, 7), "kept");
  const std::pair<long, const char*> ages[] = {{100, " 100 seconds"},  {120, " 2 minutes"},
                                               {120 * 60, " 2 hours"}, {47 * 3600, " 47 hours"},
                                               {48 * 3600, " 2 days"}, {60 * 86400, " 2 months"}};
  for (auto& [age, expected] : ages) EXPECT_EQ(text(now - age, 0), expected);
  EXPECT_NE(text(now - 40000, 1).find("yesterday"), std::string::npos);  // by the divisor, whatever the hour
  EXPECT_EQ(text(INT64_MAX, 2), "");
}
