#include "commands/ui/file_menu.h"

#include <sys/prctl.h>
#include <sys/wait.h>

#include "commands/associations.h"
#include "commands/ui/open_with.h"
#include "core/history.h"
#include "platform/host.h"
#include "tests/face/window_test.h"
#include "tests/support/stand_ins.h"

namespace {
class FileMenu : public WindowTest {
 protected:
  void SetUp() override {
    WindowTest::SetUp();
    prctl(PR_SET_CHILD_SUBREAPER, 1);  // what is started stays in sight until it ends
    for (const char* name : {"terminal", "zan", "lpr"}) programs_.add(name);
    host_set_program("zan");
    as_replace({"*.a\topen a\tview a\tedit a", "*.b\topen b\t\t ", "*.c\t\tview c\t"});
    write_file(dir_ / "run", "", 0755);
    show({"1.a", "2 b.b", "3.c", "none", "sub/", "sub2/"});
  }
  void TearDown() override {
    prctl(PR_SET_CHILD_SUBREAPER, 0);
    host_set_program("");
    WindowTest::TearDown();
  }
  void choose(const Texts& names) {
    programs_.clear();
    show({}, names);
    gDir.current = names.empty() ? -1 : index_of(names[0]);
  }
  // What terminals and windows were started with, once there are so many and all have ended, sorted: they are
  // started side by side.
  Texts commands(size_t count) {
    programs_.calls(count);
    while (wait(nullptr) > 0) {
    }
    Texts list;
    for (const StandIns::Call& call : programs_.calls(count)) list.push_back(call.back());
    std::sort(list.begin(), list.end());
    return list;
  }
  StandIns programs_;
};
}  // namespace

TEST_F(FileMenu, EachCommandTakesTheSelectedFilesItIsFor) {
  gConfig->print[0] = 0;
  const Texts all{"1.a", "2 b.b", "3.c", "none", "sub"};
  const std::tuple<int (*)(), Texts, Texts> rows[] = {
      {fm_open, {"1.a", "2 b.b", "none", "run"}, {"./run", "open a '1.a' ", "open b '2 b.b' "}},
      {fm_open, {"sub", "sub2"}, {}},
      {fm_view, all, {"view a '1.a' ", "view c '3.c' "}},
      {fm_edit, all, {"edit a '1.a' ", "kored '2 b.b' ", "kored '3.c' ", "kored 'none' "}},
      {fm_print, {"1.a", "2 b.b", "none"}, {"lpr '1.a' '2 b.b' 'none' "}},
      {fm_print, {"2 b.b"}, {"lpr '2 b.b' "}},
      {fm_print, {"2 b.b", "sub"}, {}},
      {fm_print, {}, {}},
      {fm_open_another, {"sub", "sub2"}, {}},
      {fm_open_another, {"1.a"}, {}},
      {fm_open_another, {"sub"}, {dir_ / "sub"}}};
  for (const auto& [run, selection, expected] : rows) {
    choose(selection);
    run();
    EXPECT_EQ(commands(expected.size()), expected);
    if (run != fm_print || expected.empty()) continue;
    EXPECT_EQ(status(), selection.size() > 1 ? "3 items printed" : "'2 b.b' printed");
  }
  EXPECT_EQ(gDir.path, dir_.path());
  make({"z.a", "sub/z.a"});
  choose({"sub", "z.a"});  // what comes behind the directory is not looked for in it
  fm_open();
  EXPECT_EQ(gDir.path, dir_ / "sub");
  EXPECT_EQ(commands(0), Texts());
}

TEST_F(FileMenu, EnterTakesTheFocusedEntryWhereNoneIsSelected) {
  choose({});
  gDir.current = index_of("2 b.b");
  key("Return");
  EXPECT_EQ(commands(1), Texts{"open b '2 b.b' "});
}

TEST_F(FileMenu, OpenWithRunsOnceForEachSelectedFile) {
  choose({"1.a"});
  key("Shift+Return");
  ASSERT_TRUE(dialog("open_with"));
  select({"1.a", "2 b.b", "sub"});
  EXPECT_FALSE(stays("open_with", "'wc -l @ | less' Return"));
  EXPECT_EQ(commands(2), (Texts{"wc -l '1.a'  | less", "wc -l '2 b.b'  | less"}));
  open_with_open();  // the last command stands there, and typing replaces it
  const QLineEdit* field = line(dialog("open_with"), "ow_command");
  EXPECT_EQ(field->text(), QStringLiteral("wc -l @ | less"));
  press("W");
  EXPECT_EQ(field->text(), QStringLiteral("w"));
  EXPECT_FALSE(stays("open_with", "Esc"));
  EXPECT_EQ(gWithList->count, 1);
}
