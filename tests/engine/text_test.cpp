#include "dirmodel/text.h"

#include <clocale>

#include "tests/support/temp_dir.h"

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
  const auto stripped = [](std::string path) { return es_strip_pathname(&path), path; };
  EXPECT_EQ(
      each<std::string>({"", "/", "/////", "///a", "a//b//c", "/a/b///", "a//bc//d", "//a//b/"}, stripped),
      "|/|/|//a|a/b//c|/a/b|a/bc/d|//a/b|");
  const auto cut = [](std::string path) { return es_remove_subdirectory(&path), path; };
  EXPECT_EQ(each<std::string>({"/a/b", "/a/b/", "a/b", "/a", "/", "a", "a/", "", "/a//"}, cut),
            "/a|/a|a|/|/|a|a/||/a|");
  const char* join[][3] = {{"/a", "b", "/a/b"}, {"/a/", "b", "/a/b"},  {"/a/", "/b", "/a//b"},
                           {"/", "b", "/b"},    {nullptr, "b/", "b/"}, {"/a", nullptr, "/a"},
                           {"/a//", "/", "/a"}};
  for (const auto& [dir, name, path] : join) EXPECT_EQ(es_construct_fullpath(dir, name), path);
}

TEST(Text, SizeTexts) {
  EXPECT_EQ(each<int32_t>({-5, 1023, 1536, 1024000, 2147483647}, es_generate_byte_string),
            "-5 byte_count|1023 byte_count|1.512KB|1.0MB|2.99483647GB|");
  using Words = std::pair<int32_t, uint32_t>;
  EXPECT_EQ(each<Words>({{0, 1023}, {0, 1048575}, {0, 1048576}, {1, 0}, {-1, 0xfffffffbu}},
                        [](Words words) { return ll2str(words.first, words.second); }),
            "1023 bytes|1024.0KB|1.0MB|4096.0MB|-5 bytes|");
  EXPECT_EQ(each<uint64_t>({0, 1000, 18446744073709551615u}, cvt2c), "0|1,000|18,446,744,073,709,551,615|");
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
  EXPECT_EQ(each<long>({100, 120, 120 * 60, 47 * 3600, 48 * 3600, 60 * 86400},
                       [&](long age) { return text(now - age, 0); }),
            " 100 seconds| 2 minutes| 2 hours| 47 hours| 2 days| 2 months|");
  EXPECT_NE(text(now - 40000, 1).find("yesterday"), std::string::npos);  // by the divisor, whatever the hour
  EXPECT_EQ(text(INT64_MAX, 2), "");
}
