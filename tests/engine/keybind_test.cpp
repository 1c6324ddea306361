#include "core/keybind.h"

#include "tests/support/temp_dir.h"

template <int amount>
static int add(void*, void* data, const KeyEvent*) {
  return *static_cast<int*>(data) += amount;
}

struct Keybind : testing::Test {
  TempDir dir;
  int list = 0, field = 0;  // stand for widgets
  Keybind() { clear(); }
  void clear() { gActions.clear(), gSections.clear(), gLinks.clear(); }
};

TEST_F(Keybind, AKeyCallsEveryCallbackOfItsAction) {
  for (ac_callback callback : {add<1>, add<10>, add<1>}) ac_register("open", callback);
  ac_link_widget(&list, "filelist");
  kb_attach("open", "filelist", 4, 53);
  int data = 0;
  const KeyEvent hit{true, false, true, 4, 53};
  EXPECT_EQ(kb_process(&list, &data, &hit), 1);
  for (const KeyEvent& miss : {KeyEvent{true, false, true, 5, 53},
                               {true, false, true, 4, 54},
                               {false, false, true, 4, 53},
                               {true, true, true, 4, 53},
                               {true, false, false, 4, 53}})
    EXPECT_EQ(kb_process(&list, &data, &miss), 0);
  EXPECT_EQ(kb_process(&field, &data, &hit), 0);
  ac_unlink_widget(&list);
  EXPECT_TRUE(kb_process(&list, &data, &hit) == 0 && data == 11);
}

TEST_F(Keybind, TheFileHoldsSectionsAndActionsNewestFirst) {
  kb_attach("open", "list", 0, 10);
  kb_attach("open", "list", 4, 11);
  kb_attach("cut", "list", 4, 12);
  kb_attach("cut", "tree", 4294967295u, 13);
  EXPECT_EQ(kb_save(nullptr, (dir / "keys").c_str()), 0);
  EXPECT_EQ(read_file(dir / "keys"),
            "[tree]\n'cut' 4294967295 13\n\n[list]\n'cut' 4 12\n'open' 0 10\n'open' 4 11\n\n");
  clear();
  EXPECT_EQ(kb_load((dir.path() + "/").c_str(), "keys"), 0);
  EXPECT_EQ(gSections.front().name, "list") << "loading reverses the order";
  EXPECT_TRUE(kb_set_default("cut", "tree", 4294967295u, 13) == 0 &&
              kb_load(dir.path().c_str(), "missing") == -1);
}

TEST_F(Keybind, LinesThatDoNotParseArePassedOver) {
  const std::pair<std::string, const char*> rows[] = {
      {"[s]\n'a' 0 7\n", "7"},
      {"[s]\na 0 7\n 'a' 0 8\n#\n'a' 0 9\n", "9"},
      {"[s]\n'a' 0\n'a'\n'\n''\n'a' x 7\n'a' 0 x\n", ""},
      {"[s]\n'a' 0 4294967296\n'a' -1 7\n", ""},
      {"[s]\n'" + std::string(40, 'n') + "' 0 7\n'a' 0 8\n", "8"},
      {std::string("[s]\n'a\0b' 0 7\n'a' 0 8\n", 22), "8"},
      {std::string(1000, '\0') + "\n[s]\n'a' 0 7\n", "7"}};
  for (const auto& [file, bound] : rows) {
    clear();
    write_file(dir / "keys", file);
    EXPECT_EQ(kb_load(dir.path().c_str(), "keys"), 0);
    kb_save(dir.path().c_str(), "keys");
    EXPECT_EQ(read_file(dir / "keys"), *bound ? "[s]\n'a' 0 " + std::string(bound) + "\n\n" : "") << file;
  }
}
