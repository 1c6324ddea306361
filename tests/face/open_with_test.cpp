#include "commands/ui/open_with.h"

#include <QApplication>
#include <QComboBox>

#include "commands/associations.h"
#include "core/history.h"
#include "dirmodel/dir_record.h"
#include "tests/face/dialog_fixture.h"
#include "tests/support/stand_ins.h"

namespace {
class OpenWith : public DialogTest {
 protected:
  void SetUp() override {
    DialogTest::SetUp();
    programs_.add("terminal");
  }
  std::vector<std::string> commands(size_t count) {
    std::vector<std::string> list;
    for (const StandIns::Call& call : programs_.calls_of("terminal", count)) list.push_back(call.back());
    std::sort(list.begin(), list.end());
    return list;
  }
  StandIns programs_;
};
}  // namespace

TEST_F(OpenWith, RunsOnceForEachSelectedFile) {
  for (const char* name : {"a", "b c", "d"}) write_file(dir_ / name, "");
  ASSERT_EQ(run_shell("mkdir '" + (dir_ / "sub") + "'"), 0);
  show_directory({"a", "b c", "sub"});
  gDir.current = -1;
  open_with_open();
  ASSERT_TRUE(dialog("open_with"));
  type("wc -l @ | less");
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("open_with"));
  EXPECT_EQ(commands(2), (std::vector<std::string>{"wc -l 'a'  | less", "wc -l 'b c'  | less"}));

  open_with_open();  // the last command stands there, and typing replaces it
  auto* field = find<QComboBox>(dialog("open_with"), "ow_command");
  EXPECT_EQ(field->currentText(), QStringLiteral("wc -l @ | less"));
  type("w");
  EXPECT_EQ(field->currentText(), QStringLiteral("w"));
  press(Qt::Key_Escape);
  EXPECT_FALSE(dialog("open_with"));
  EXPECT_EQ(gWithList->count, 1);
  EXPECT_EQ(programs_.calls(2).size(), 2u);
}

TEST_F(OpenWith, AnEmptyListOnlyCloses) {
  show_directory();
  open_with_open();
  ASSERT_TRUE(dialog("open_with"));
  type("touch canary");
  press(Qt::Key_Return);
  EXPECT_FALSE(dialog("open_with"));
  EXPECT_TRUE(programs_.calls(0).empty());
}
