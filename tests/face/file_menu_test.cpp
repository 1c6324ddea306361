#include "commands/ui/file_menu.h"

#include <QAction>
#include <QApplication>
#include <QMainWindow>
#include <QMenu>

#include "commands/associations.h"
#include "commands/ui/menus.h"
#include "core/state.h"
#include "dirmodel/dir_record.h"
#include "platform/host.h"
#include "tests/face/dialog_fixture.h"
#include "tests/support/stand_ins.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"
#include "views/ui/navigation.h"

namespace {
using Call = StandIns::Call;

class FileMenu : public DialogTest {
 protected:
  void SetUp() override {
    DialogTest::SetUp();
    programs_.add("terminal");
    programs_.add("zan");
    programs_.add("lpr");
    host_set_program("zan");
    as_replace({"*.a\topen a\tview a\tedit a", "*.b\topen b\t\t ", "*.c\t\tview c\t"});
    for (const char* name : {"1.a", "2.b", "3.c", "none"}) write_file(dir_ / name, "");
    write_file(dir_ / "run", "", 0755);
    ASSERT_EQ(run_shell("mkdir '" + (dir_ / "sub") + "' '" + (dir_ / "sub2") + "'"), 0);
    show_directory();
  }
  void TearDown() override {
    host_set_program("");
    DialogTest::TearDown();
  }
  void select(const std::vector<std::string>& names) {
    programs_.clear();
    show_directory(names);
  }
  void focus_on(const std::string& name) {
    for (int i = 0; i < gDir.count; ++i)
      if (name == gDir.entries[i]->name) gDir.current = i;
  }
  // The commands given to terminals, sorted: they are started side by side.
  std::vector<std::string> commands(size_t count) {
    std::vector<std::string> list;
    for (const Call& call : programs_.calls_of("terminal", count)) list.push_back(call.back());
    std::sort(list.begin(), list.end());
    return list;
  }
  static void back_to_list() {
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);  // of the dialog that closed
    base_window()->activateWindow();
    ASSERT_TRUE(QTest::qWaitForWindowActive(base_window()));
    base_find_widget("filelist")->setFocus();
  }
  static std::string status_text() {
    return base_find_widget("status1")->property("text").toString().toStdString();
  }
  StandIns programs_;
};

using Commands = std::vector<std::string>;
}  // namespace

TEST_F(FileMenu, OpensTheFocusedEntryOrTheSelectedOnes) {
  focus_on("1.a");
  fm_open();
  EXPECT_EQ(commands(1), (Commands{"open a '1.a' "}));
  select({"1.a", "2.b", "none", "run"});
  focus_on("1.a");
  fm_open();
  EXPECT_EQ(commands(3), (Commands{"./run", "open a '1.a' ", "open b '2.b' "}));
  select({"sub", "sub2"});
  fm_open();
  EXPECT_EQ(gDir.path, dir_.path());
  select({"sub"});
  fm_open();
  EXPECT_EQ(gDir.path, dir_ / "sub");
  EXPECT_TRUE(programs_.calls(0).empty());
}

TEST_F(FileMenu, ViewsAndEditsEachFileByItsOwnCommand) {
  const std::vector<std::string> all{"1.a", "2.b", "3.c", "none", "sub"};
  select(all);
  focus_on("1.a");
  fm_view();
  EXPECT_EQ(commands(2), (Commands{"view a '1.a' ", "view c '3.c' "}));
  select(all);
  focus_on("1.a");
  fm_edit();
  EXPECT_EQ(commands(4), (Commands{"edit a '1.a' ", "kored '2.b' ", "kored '3.c' ", "kored 'none' "}));
}

TEST_F(FileMenu, StartsFurtherWindowsOfThisProgram) {
  select({"sub", "sub2"});
  fm_open_another();
  select({"1.a"});
  fm_open_another();
  EXPECT_TRUE(programs_.calls(0).empty());
  select({"sub"});
  fm_open_another();
  EXPECT_EQ(programs_.calls(1)[0], (Call{"zan", dir_ / "sub"}));
  programs_.clear();
  fm_new_window();
  EXPECT_EQ(programs_.calls(1)[0], (Call{"zan"}));
  programs_.clear();
  fm_open_conwin();  // the settings' terminal command is a program's name
  EXPECT_EQ(programs_.calls(1)[0], (Call{"terminal"}));
}

TEST_F(FileMenu, PrintsTheSelectionWithOneCommand) {
  gConfig->print[0] = 0;
  select({"1.a", "2.b", "none"});
  focus_on("1.a");
  fm_print();
  EXPECT_EQ(commands(1), (Commands{"lpr '1.a' '2.b' 'none' "}));
  EXPECT_STREQ(gConfig->print, "lpr @");
  EXPECT_EQ(status_text(), "3 items printed");
  select({"2.b"});
  focus_on("2.b");
  fm_print();
  EXPECT_EQ(commands(1), (Commands{"lpr '2.b' "}));
  EXPECT_EQ(status_text(), "'2.b' printed");
  select({"2.b", "sub"});
  focus_on("2.b");
  const std::string before = status_text();
  fm_print();
  select({});
  fm_print();
  EXPECT_TRUE(programs_.calls(0).empty());
}

TEST_F(FileMenu, TheMenuIsEnabledForTheSelection) {
  auto* menu = base_window()->findChild<QMenu*>(QStringLiteral("file_menu"));
  ASSERT_TRUE(menu);
  const struct {
    std::vector<std::string> selected;
    std::vector<const char*> enabled, disabled;
  } rows[] = {
      {{}, {"fm_new_file", "fm_new_window", "fm_exit"}, {"fm_open", "fm_view", "fm_print", "fm_inspect"}},
      {{"1.a"}, {"fm_open", "fm_view", "fm_edit", "fm_open_with", "fm_print"}, {"fm_open_another"}},
      {{"1.a", "3.c"}, {"fm_view", "fm_open_with"}, {"fm_open", "fm_edit"}},
      {{"1.a", "sub"}, {"fm_open", "fm_open_another", "fm_inspect"}, {"fm_edit", "fm_view", "fm_print"}},
      {{"run"}, {"fm_print"}, {"fm_open", "fm_view", "fm_edit", "fm_print_directory"}},
  };
  for (const auto& row : rows) {
    select(row.selected);
    fm_setup(menu);
    for (const char* name : row.enabled) EXPECT_TRUE(menu_item(name)->isEnabled()) << name;
    for (const char* name : row.disabled) EXPECT_FALSE(menu_item(name)->isEnabled()) << name;
  }
}

TEST_F(FileMenu, KeysReachTheCommands) {
  select({"1.a"});
  focus_on("1.a");
  back_to_list();
  press(Qt::Key_E, Qt::ControlModifier);
  EXPECT_EQ(commands(1), (Commands{"edit a '1.a' "}));
  programs_.clear();
  press(Qt::Key_Return);
  EXPECT_EQ(commands(1), (Commands{"open a '1.a' "}));
  programs_.clear();
  press(Qt::Key_Return, Qt::ShiftModifier);
  ASSERT_TRUE(dialog("open_with"));
  press(Qt::Key_Escape);
  back_to_list();
  press(Qt::Key_F4);
  ASSERT_TRUE(dialog("new_dlg"));
  EXPECT_EQ(dialog("new_dlg")->windowTitle(), QStringLiteral("Create New Folder"));
  press(Qt::Key_Escape);
  back_to_list();
  fl_unselect_all();
  focus_on("2.b");
  press(Qt::Key_Return);  // nothing selected: the focused entry
  EXPECT_EQ(commands(1), (Commands{"open b '2.b' "}));
}
