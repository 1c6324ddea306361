#include "fileops/transfer_codec.h"

#include <gtest/gtest.h>

namespace {
std::string every_byte() {
  std::string name;
  for (int byte = 1; byte < 256; ++byte)
    if (byte != '/') name.push_back(static_cast<char>(byte));
  return name;
}

TransferList sample() {
  return {"/home/u", {"a", "", "b c", every_byte(), std::string(255, 'x')}, false};
}
}  // namespace

TEST(Transfer, AnyByteOfANameComesBack) {
  const TransferList lists[] = {sample(), {"/", {"d"}, true}, {"/home/" + every_byte(), {}, false}};
  for (const TransferList& list : lists) {
    TransferList back;
    ASSERT_TRUE(transfer_unpack(transfer_pack(list), &back));
    EXPECT_EQ(back.dir, list.dir);
    EXPECT_EQ(back.names, list.names);
    EXPECT_EQ(back.one_dir_packed, list.one_dir_packed);
  }
}

TEST(Transfer, MalformedListsAreRefusedAndLeaveTheOldOne) {
  const std::string good = transfer_pack(sample());
  const auto with = [&](size_t at, char byte) { return std::string(good).replace(at, 1, 1, byte); };
  const auto list = [](const char* dir, std::string name) {
    return transfer_pack({dir, {std::move(name)}, false});
  };
  const std::pair<const char*, std::string> rows[] = {
      {"empty", ""},
      {"another magic", with(0, 'z')},
      {"a later version", with(4, 2)},
      {"an unknown flag", with(8, 2)},
      {"one name too many", with(12, 6)},
      {"one name too few", with(12, 4)},
      {"a count that would take 16 GiB", with(15, '\xff')},
      {"a directory longer than all", with(19, '\x7f')},
      {"bytes left over", good + "x"},
      {"a relative directory", list("home", "a")},
      {"no directory", list("", "a")},
      {"a path for a name", list("/home", "a/b")},
      {"the directory itself", list("/home", ".")},
      {"the directory above", list("/home", "..")},
      {"a NUL in a name", list("/home", std::string("a\0b", 3))},
  };
  for (const auto& [what, bytes] : rows) {
    TransferList kept{"/kept", {"k"}, true};
    EXPECT_FALSE(transfer_unpack(bytes, &kept)) << what;
    EXPECT_EQ(kept.dir, "/kept") << what;
  }
  for (size_t length = 0; length < good.size(); ++length) {
    TransferList ignored;
    EXPECT_FALSE(transfer_unpack(std::string_view(good).substr(0, length), &ignored)) << length;
  }
}
