#include "fileops/uri_list.h"

#include <gtest/gtest.h>

namespace {
std::string described(const std::vector<TransferList>& lists) {
  std::string text;
  for (const TransferList& list : lists) {
    text += list.dir + ":";
    for (const std::string& name : list.names) text += " [" + name + "]";
    text += "\n";
  }
  return text;
}
}  // namespace

TEST(UriList, WritesWhatOtherFileManagersRead) {
  const TransferList list{"/p q", {"a b", "", "100%#?", "\xff\n\xc3\xa9", "it's"}, false};
  EXPECT_EQ(uri_list_encode(list),
            "file:///p%20q/a%20b\r\nfile:///p%20q/100%25%23%3F\r\n"
            "file:///p%20q/%FF%0A%C3%A9\r\nfile:///p%20q/it's\r\n");
  EXPECT_EQ(gnome_files_encode({"/", {"a", "b"}, false}, true), "cut\nfile:///a\nfile:///b");
  EXPECT_EQ(gnome_files_encode({"/d", {"a"}, false}, false), "copy\nfile:///d/a");
  EXPECT_EQ(plain_paths_encode(list), "/p q/a b\n/p q/100%#?\n/p q/\xff\n\xc3\xa9\n/p q/it's");
}

TEST(UriList, EveryByteSurvivesTheWayOutAndBack) {
  TransferList list{"/d", {}, false};
  for (int byte = 1; byte < 256; ++byte)
    if (byte != '/') list.names.push_back(std::string("n") + static_cast<char>(byte));
  const std::vector<TransferList> back = uri_list_decode(uri_list_encode(list));
  ASSERT_EQ(back.size(), 1u);
  EXPECT_EQ(back[0].names, list.names);
}

TEST(UriList, ReadsTolerantlyAndRefusesWhatIsNotALocalFile) {
  const struct {
    std::string in, out;
  } rows[] = {
      {"file:///a/b\r\nfile:///a/c\r\n", "/a: [b] [c]\n"},
      {"file:///a/b\nfile:///a/c", "/a: [b] [c]\n"},
      {"# a comment\r\nfile:/a/b\r\nfile://localhost/a/c\r\nFILE://LocalHost/a/d\r\n", "/a: [b] [c] [d]\n"},
      {"file:///a/1\r\nfile:///b/2\r\nfile:///a/3\r\nfile:///4\r\n", "/a: [1] [3]\n/b: [2]\n/: [4]\n"},
      {"file://host/a/b\r\nhttp://x/y\r\nfile://localhostx/a\r\nfile:a\r\n/a/b\r\nfile://\r\n", ""},
      {"file:///a//b///\r\n", "/a: [b]\n"},
      {"file:///a/b\r\nfile:///a//b\r\n", "/a: [b]\n"},
      {"file:///\r\nfile:///..\r\nfile:///a/../b\r\nfile:///a/%2E%2E\r\n", ""},
      {"file:///a%2\r\nfile:///a%zz\r\nfile:///a%00b\r\nfile:///%\r\n", ""},
      {"file:///a/b#c?d\r\n", "/a: [b#c?d]\n"},
      {"file:///a/%2F%41\r\n", "/a: [A]\n"},
      {std::string("\0\0\r\n\n", 5), ""},
      {std::string("file:///a/b\0", 12), "/a: [b]\n"},
  };
  for (const auto& row : rows) EXPECT_EQ(described(uri_list_decode(row.in)), row.out) << row.in;
}

TEST(UriList, ReadsTheGnomeForm) {
  const struct {
    std::string in;
    bool good, cut;
    const char* out;
  } rows[] = {
      {"cut\nfile:///a/b", true, true, "/a: [b]\n"},
      {std::string("copy\r\nfile:///a/b\r\n\n\0", 21), true, false, "/a: [b]\n"},
      {"\n\ncopy\n\nfile:///a/b\nfile:///c/d\n", true, false, "/a: [b]\n/c: [d]\n"},
      {"cut", false, false, ""},
      {"cut\nhttp://x/", false, false, ""},
      {"move\nfile:///a/b", false, false, ""},
      {"cutfile:///a/b", false, false, ""},
      {"file:///a/b", false, false, ""},
  };
  for (const auto& row : rows) {
    bool cut = false;
    std::vector<TransferList> lists;
    EXPECT_EQ(gnome_files_decode(row.in, &cut, &lists), row.good) << row.in;
    EXPECT_EQ(cut, row.cut) << row.in;
    EXPECT_EQ(described(lists), row.out) << row.in;
  }
}

// Reading costs as much as there is to read, however many directories the files come from.
TEST(UriList, AHundredMegabytesOfFilesInAsManyDirectories) {
  std::string bytes;
  size_t files = 0;
  while (bytes.size() < 100'000'000) {
    ++files;
    bytes += "file:///dir" + std::to_string(files % 5000) + "/" + std::to_string(files);
    bytes += std::string(100, 'x') + "\r\n";
  }
  const std::vector<TransferList> lists = uri_list_decode(bytes);
  size_t read = 0;
  for (const TransferList& list : lists) read += list.names.size();
  EXPECT_EQ(lists.size(), 5000u);
  EXPECT_EQ(read, files);
}
