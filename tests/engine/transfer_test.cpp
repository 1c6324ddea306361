// What the clipboard carries: our own form, and those of other file managers.
#include "fileops/transfer_codec.h"
#include "fileops/uri_list.h"
#include "tests/support/temp_dir.h"

static std::string described(const std::vector<TransferList>& lists) {
  std::string text;
  for (const TransferList& list : lists) {
    text += list.dir + ":";
    for (const std::string& name : list.names) text += " [" + name + "]";
    text += "\n";
  }
  return text;
}

static std::string every_byte() {
  std::string name;
  for (int byte = 1; byte < 256; ++byte)
    if (byte != '/') name.push_back(static_cast<char>(byte));
  return name;
}

static TransferList sample() {
  return {"/home/u", {"a", "", "b c", every_byte(), std::string(255, 'x')}, false};
}

TEST(UriList, WritesWhatOtherFileManagersRead) {
  const TransferList list{"/p q", {"a b", "", "100%#?", "\xff\n\xc3\xa9", "it's"}, false};
  EXPECT_EQ(uri_list_encode(list),
            "file:///p%20q/a%20b\r\nfile:///p%20q/100%25%23%3F\r\n"
            "file:///p%20q/%FF%0A%C3%A9\r\nfile:///p%20q/it's\r\n");
  EXPECT_EQ(gnome_files_encode({"/", {"a", "b"}, false}, true), "cut\nfile:///a\nfile:///b");
  const TransferList any{"/" + every_byte(), {every_byte()}, false};
  EXPECT_EQ(described(uri_list_decode(uri_list_encode(any))), described({any}));
  EXPECT_EQ(plain_paths_encode(list), "/p q/a b\n/p q/100%#?\n/p q/\xff\n\xc3\xa9\n/p q/it's");
}

TEST(UriList, ReadsTolerantlyAndRefusesWhatIsNotALocalFile) {
  char own[256] = "";  // this machine's name
  gethostname(own, sizeof own - 1);
  const std::pair<std::string, std::string> rows[] = {
      {"file:///a/b\nfile:///a/c", "/a: [b] [c]\n"},
      {"# a comment\r\nfile:/a/b\r\nfile://localhost/a/c\r\nFILE://LocalHost/a/d\r\n", "/a: [b] [c] [d]\n"},
      {"file:///a/1\r\nfile:///b/2\r\nfile:///a/3\r\nfile:///4\r\n", "/a: [1] [3]\n/b: [2]\n/: [4]\n"},
      {"file://host/a/b\r\nhttp://x/y\r\nfile://localhostx/a\r\nfile:a\r\n/a/b\r\nfile://\r\n", ""},
      {"file:///a//b///\r\n", "/a: [b]\n"},
      {"file:///\r\nfile:///..\r\nfile:///a/../b\r\nfile:///a/%2E%2E\r\n", ""},
      {"file:///a%2\r\nfile:///a%zz\r\nfile:///a%00b\r\nfile:///%\r\n", ""},
      {std::string("FILE://") + own + "/a/b\r\n", "/a: [b]\n"},
      {"file:///a/b#c?d\r\n", "/a: [b#c?d]\n"},
      {std::string("file:///a/b\0", 12), "/a: [b]\n"}};
  for (const auto& [in, out] : rows) EXPECT_EQ(described(uri_list_decode(in)), out) << in;
}

TEST(UriList, ReadsTheGnomeForm) {
  const auto read = [](const std::string& bytes) {
    bool cut = false;
    std::vector<TransferList> lists;
    return gnome_files_decode(bytes, &cut, &lists) ? std::to_string(cut) + described(lists) : "";
  };
  EXPECT_EQ(each<std::string>({"cut\nfile:///a/b", std::string("copy\r\nfile:///a/b\r\n\n\0", 21), "cut",
                               "cut\nhttp://x/", "move\nfile:///a/b", "file:///a/b"},
                              read),
            "1/a: [b]\n|0/a: [b]\n|||||");
}

TEST(Transfer, AnyByteOfANameComesBack) {
  const TransferList lists[] = {sample(), {"/", {"d"}, true}, {"/home/" + every_byte(), {}, false}};
  for (const TransferList& list : lists) {
    TransferList back;
    ASSERT_TRUE(transfer_unpack(transfer_pack(list), &back));
    EXPECT_TRUE(described({back}) == described({list}) && back.one_dir_packed == list.one_dir_packed);
  }
}

TEST(Transfer, MalformedListsAreRefusedAndLeaveTheOldOne) {
  const std::string good = transfer_pack(sample());
  const auto with = [&](size_t at, char byte) { return std::string(good).replace(at, 1, 1, byte); };
  const auto list = [](const char* dir, std::string name) {
    return transfer_pack({dir, {std::move(name)}, false});
  };
  const std::pair<const char*, std::string> rows[] = {
      {"a later version", with(4, 2)},
      {"an unknown flag", with(8, 2)},
      {"one name too many", with(12, 6)},
      {"a count that would take 16 GiB", with(15, '\xff')},
      {"a directory longer than all", with(19, '\x7f')},
      {"bytes left over", good + "x"},
      {"a relative directory", list("home", "a")},
      {"a path for a name", list("/home", "a/b")},
      {"the directory above", list("/home", "..")},
      {"a NUL in a name", list("/home", std::string("a\0b", 3))}};
  for (const auto& [what, bytes] : rows) {
    TransferList kept{"/kept", {"k"}, true};
    EXPECT_TRUE(!transfer_unpack(bytes, &kept) && kept.dir == "/kept") << what;
  }
  TransferList ignored;
  for (size_t length = 0; length < good.size(); ++length)
    EXPECT_FALSE(transfer_unpack(std::string_view(good).substr(0, length), &ignored)) << length;
}
