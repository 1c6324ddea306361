#include "fileops/ui/slots.h"

#include <QDir>

#include "fileops/start.h"
#include "fileops/ui/slot_row.h"
#include "tests/face/window_test.h"

namespace {
QWidget* holder() {
  return windows("ZAN: File Operations").value(0);
}

// From top to bottom.
std::vector<SlotRow*> rows() {
  std::vector<SlotRow*> found;
  if (QWidget* window = holder())
    for (QObject* child : window->findChild<QWidget*>(QStringLiteral("slots_rows"))->children())
      if (auto* row = dynamic_cast<SlotRow*>(child)) found.push_back(row);
  std::sort(found.begin(), found.end(), [](SlotRow* a, SlotRow* b) { return a->y() < b->y(); });
  return found;
}

// Copies and moves from a directory to "to" in it, without the main window.
class Slots : public WindowTest {
 protected:
  void SetUp() override {
    WindowTest::SetUp();
    watch_->stop();
    gConfig->flags &= ~static_cast<uint32_t>(SET_OVERWRITE);
    make({"to/"});
  }
  void TearDown() override {
    EXPECT_TRUE(wait_for([] { return slot_running() == 0 && holder() == nullptr; }));
    WindowTest::TearDown();
  }
  static std::string text(SlotRow* row, const char* name) {
    return find<QLabel>(row, name)->text().toStdString();
  }
  static bool asked(const char* title, int count = 1) {
    return wait_for([=] { return windows(title).size() == count; });
  }
  static bool answer(const char* title, const char* key, const QString& about = {}) {
    const QWidgetList questions = windows(title, about);
    ::answer(questions.value(0), key);
    return !questions.isEmpty() && windows(title, about).size() < questions.size();
  }
  int start(int kind, const Texts& names) { return _file_op(kind, {dir_.path(), names, false}, dir_ / "to"); }
  // How many files of the tree have been copied.
  qsizetype copied() const {
    return QDir(QString::fromStdString(dir_ / "to/tree")).entryList(QDir::Files).size();
  }
  // Waits until the worker holds still: two looks a moment apart find the same.
  qsizetype held_at() const {
    qsizetype before = -1;
    while (before != copied()) {
      before = copied();
      QTest::qWait(100);
    }
    return before;
  }
};

TEST_F(Slots, FiftyOpenQuestionsBlockNeitherOneAnotherNorTheWindow) {
  QLineEdit field;  // stands for the rest of the program
  field.show();
  make({"one more"});
  for (int i = 0; i < SLOT_MOST; ++i) {
    const std::string name = "file" + std::to_string(i);
    make({name});
    write_file(dir_ / "to/" + name, "old");
    ASSERT_EQ(start(FOP_COPY, {name}), 0) << i;
  }
  EXPECT_EQ(start(FOP_COPY, {"one more"}), -1);
  EXPECT_EQ(errno, ENOMEM);
  ASSERT_TRUE(asked("Copy/Move", SLOT_MOST));
  press("'goes on'", &field);
  EXPECT_EQ(field.text(), QStringLiteral("goes on"));

  ASSERT_EQ(rows().size(), static_cast<size_t>(SLOT_MOST));
  EXPECT_TRUE(text(rows().front(), "slot_from_text").ends_with("/file49"));
  EXPECT_TRUE(text(rows().back(), "slot_from_text").ends_with("/file0"));
  EXPECT_TRUE(answer("Copy/Move", "O", QStringLiteral("/file7'")));
  ASSERT_TRUE(wait_for([] { return rows().size() == SLOT_MOST - 1; }));
  EXPECT_EQ(windows("Copy/Move").size(), SLOT_MOST - 1);
  EXPECT_EQ(start(FOP_COPY, {"one more"}), 0);  // there is room again
  for (QWidget* question : windows("Copy/Move")) press("S", question);
  ASSERT_TRUE(settled());
  EXPECT_EQ(dir_.shell("grep -Lx old to/*"), "to/file7\nto/one more\n") << "written";
}

TEST_F(Slots, PauseHoldsStillAndTheCancelQuestionLeavesItAsItWas) {
  dir_.shell("mkdir tree && cd tree && head -c 81920000 /dev/zero | split -a 4 -b 4096");
  ASSERT_EQ(start(FOP_COPY, {"tree"}), 0);
  auto* pause = find<QPushButton>(rows().at(0), "slot_pause");
  auto* cancel = find<QPushButton>(rows().at(0), "cancel_button");
  ASSERT_TRUE(wait_for([&] { return copied() > 20; }));
  ASSERT_TRUE(activate(holder()));
  pause->setFocus();
  press("Space");
  EXPECT_TRUE(pause->isChecked());
  const qsizetype at = held_at();
  EXPECT_LT(at, 20000);

  press("Tab Space");
  ASSERT_TRUE(asked("File Operation"));
  EXPECT_FALSE(cancel->isEnabled());
  EXPECT_TRUE(answer("File Operation", "Esc"));
  EXPECT_TRUE(pause->isChecked());
  EXPECT_EQ(held_at(), at);  // still paused

  QTest::mouseClick(pause, Qt::LeftButton);
  ASSERT_TRUE(wait_for([&] { return copied() > at; }));  // goes on
  QTest::mouseClick(cancel, Qt::LeftButton);
  ASSERT_TRUE(asked("File Operation"));
  EXPECT_LT(held_at(), 20000);  // holds still while the user decides
  EXPECT_TRUE(answer("File Operation", "Y"));
  ASSERT_TRUE(wait_for([] { return rows().empty(); }));
  EXPECT_LT(copied(), 20000);
  EXPECT_EQ(dir_.shell("find to/tree -type f -not -size 4096c"), "");
}

TEST_F(Slots, RowsShowTheOperationAndStayInPlaceAsOthersGo) {
  make({"first", "second", "to/first", "to/second"});
  ASSERT_EQ(start(FOP_COPY, {"first"}) + start(FOP_MOVE, {"second"}), 0);
  ASSERT_TRUE(asked("Copy/Move") && asked("Move"));
  SlotRow *moving = rows().at(0), *copying = rows().at(1);
  EXPECT_EQ(text(copying, "slot_header_text") + text(copying, "slot_n_text"), "Copying1 of 1");
  EXPECT_TRUE(moving->accessibleName().startsWith(QStringLiteral("Moving second")));
  const QSize size = copying->size();
  EXPECT_TRUE(answer("Move", "S"));
  ASSERT_TRUE(wait_for([&] { return rows().size() == 1 && copying->pos() == QPoint(0, 0); }));
  EXPECT_EQ(copying->size(), size);
  holder()->close();  // the operation goes on, and can still be got at
  EXPECT_TRUE(holder() != nullptr && holder()->isMinimized());
  EXPECT_TRUE(answer("Copy/Move", "Esc"));
}

}  // namespace
