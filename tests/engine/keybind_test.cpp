#include "core/keybind.h"

#include <gtest/gtest.h>

#include "tests/support/temp_dir.h"

namespace {
int sFirst, sSecond;
const void* sWidget;

int first(void* widget, void*, const KeyEvent*) {
  sWidget = widget;
  return ++sFirst;
}
int second(void*, void* data, const KeyEvent*) {
  return sSecond += *static_cast<int*>(data);
}

class Keybind : public testing::Test {
 protected:
  Keybind() {
    gActions.clear(), gSections.clear(), gLinks.clear();
    sFirst = sSecond = 0;
  }
  TempDir dir_;
  int list_ = 0, field_ = 0;  // stand for widgets
};

KeyEvent pressed(uint32_t modifiers, uint32_t cap) {
  return {true, false, true, modifiers, cap};
}
}  // namespace

TEST_F(Keybind, AKeyCallsEveryCallbackOfItsAction) {
  ac_register("open", first);
  ac_register("open", second);
  ac_register("open", first);
  ac_link_widget(&list_, "filelist");
  kb_attach("open", "filelist", 4, 61453);
  int data = 5;
  const KeyEvent hit = pressed(4, 61453);
  EXPECT_EQ(kb_process(&list_, &data, &hit), 1);
  EXPECT_EQ(sFirst, 1);
  EXPECT_EQ(sSecond, 5);
  EXPECT_EQ(sWidget, &list_);
  const KeyEvent misses[] = {
      pressed(5, 61453),
      pressed(0, 61453),
      pressed(4, 61454),
      {false, false, true, 4, 61453},
      {true, true, true, 4, 61453},
      {true, false, false, 4, 61453},
  };
  for (const KeyEvent& miss : misses) EXPECT_EQ(kb_process(&list_, &data, &miss), 0);
  EXPECT_EQ(kb_process(&field_, &data, &hit), 0);
  ac_link_widget(&list_, "other");
  EXPECT_EQ(kb_process(&list_, &data, &hit), 0) << "linked to another section now";
  ac_link_widget(&list_, "filelist");
  ac_unlink_widget(&list_);
  EXPECT_EQ(kb_process(&list_, &data, &hit), 0);
  EXPECT_EQ(sFirst, 1);
}

TEST_F(Keybind, OnePrimaryBindingForAnActionInASection) {
  kb_attach("open", "filelist", 0, 1);
  kb_attach("open", "filelist", 0, 2);
  Section* section = x_get_section("filelist");
  const auto primary = [section] {
    std::vector<uint32_t> caps;
    for (const KeyGroup& group : section->groups)
      for (const Binding& binding : group.bindings)
        if (binding.flags & BIND_PRIMARY) caps.push_back(binding.cap);
    return caps;
  };
  EXPECT_EQ(primary(), std::vector<uint32_t>{1});
  EXPECT_EQ(kb_set_default("open", "filelist", 0, 2), 0);
  EXPECT_EQ(primary(), std::vector<uint32_t>{2});
  EXPECT_EQ(kb_set_default("open", "filelist", 1, 2), -1);
  EXPECT_EQ(kb_set_default("open", "filelist", 0, 3), -1);
  EXPECT_EQ(kb_set_default("none", "filelist", 0, 2), -1);
  EXPECT_EQ(kb_set_default("open", "none", 0, 2), -1);
  EXPECT_STREQ(kb_get_accel_text("open", "filelist", "Ret"), "Ret");
  kb_attach("close", "filelist", 0, 2);  // takes the key over
  EXPECT_EQ(kb_get_accel_text("open", "filelist", "Ret"), nullptr);
  EXPECT_STREQ(kb_get_accel_text("close", "filelist", "Ret"), "Ret");
  EXPECT_EQ(kb_get_accel_text("close", "elsewhere", "Ret"), nullptr);
}

TEST_F(Keybind, TheFileHoldsSectionsAndActionsNewestFirst) {
  EXPECT_EQ(kb_save(dir_.path().c_str(), "keys"), 0);
  EXPECT_EQ(read_file(dir_ / "keys"), "");
  kb_attach("open", "list", 0, 10);
  kb_attach("open", "list", 4, 11);
  kb_attach("cut", "list", 4, 12);
  kb_attach("cut", "tree", 4294967295u, 13);
  EXPECT_EQ(kb_save(nullptr, (dir_ / "keys").c_str()), 0);
  const std::string text = "[tree]\n'cut' 4294967295 13\n\n[list]\n'cut' 4 12\n'open' 0 10\n'open' 4 11\n\n";
  EXPECT_EQ(read_file(dir_ / "keys"), text);
  gActions.clear(), gSections.clear();
  EXPECT_EQ(kb_load((dir_.path() + "/").c_str(), "keys"), 0);
  EXPECT_EQ(gSections.front().name, "list") << "loading reverses the order";
  EXPECT_EQ(kb_set_default("cut", "tree", 4294967295u, 13), 0);
  EXPECT_EQ(kb_load(dir_.path().c_str(), "missing"), -1);
  EXPECT_EQ(kb_save((dir_ / "missing").c_str(), "keys"), -1);
}

TEST_F(Keybind, LinesThatDoNotParseArePassedOver) {
  const struct {
    std::string file;
    const char* bound;  // caps in the section "s"
  } rows[] = {
      {"[s]\n'a' 0 7\n", "7"},
      {"'a' 0 7\n[s]\n", ""},
      {"[]\n'a' 0 7\n", ""},
      {"[s\n'a' 0 7", "7"},
      {"[s]\na 0 7\n 'a' 0 8\n#\n'a' 0 9\n", "9"},
      {"[s]\n'a' 0\n'a'\n'\n''\n'a' x 7\n'a' 0 x\n", ""},
      {"[s]\n'a' 0 4294967296\n'a' -1 7\n", ""},
      {"[s]\n'" + std::string(40, 'n') + "' 0 7\n'a' 0 8\n", "8"},
      {"[s]\n" + std::string(100, 'x') + "\n'a' 0 7\n", "7"},
      {std::string("[s]\n'a\0b' 0 7\n'a' 0 8\n", 22), "8"},
      {std::string(1000, '\0') + "\n[s]\n'a' 0 7\n", "7"},
  };
  for (const auto& row : rows) {
    gActions.clear(), gSections.clear();
    write_file(dir_ / "keys", row.file);
    EXPECT_EQ(kb_load(dir_.path().c_str(), "keys"), 0);
    std::string bound;
    if (const Section* section = x_get_section("s"))
      for (const KeyGroup& group : section->groups)
        for (const Binding& binding : group.bindings) bound += std::to_string(binding.cap);
    EXPECT_EQ(bound, row.bound) << row.file;
  }
}
