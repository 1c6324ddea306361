#include "fileops/ui/slots.h"

#include <filesystem>

#include "fileops/start.h"
#include "fileops/ui/clipboard.h"
#include "fileops/ui/slot_row.h"
#include "tests/face/window_test.h"

namespace {
QList<QWidget*> windows(const char* title, const QString& about = {}) {
  QList<QWidget*> found = QApplication::topLevelWidgets();
  found.removeIf([&](QWidget* widget) {
    return !widget->isVisible() || widget->windowTitle() != QLatin1String(title) ||
           !widget->accessibleDescription().contains(about);
  });
  return found;
}

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
class Slots : public testing::Test {
 protected:
  void SetUp() override {
    before_ = *gConfig;
    settings_defaults(gConfig);
    gConfig->flags &= ~static_cast<uint32_t>(SET_OVERWRITE);
    std::filesystem::create_directory(dir_ / "to");
  }
  void TearDown() override {
    EXPECT_TRUE(wait_for([] { return slot_running() == 0 && holder() == nullptr; }));
    *gConfig = before_;
  }
  static std::string text(SlotRow* row, const char* name) {
    return WindowTest::find<QLabel>(row, name)->text().toStdString();
  }
  static bool asked(const char* title, int count = 1) {
    return wait_for([=] { return windows(title).size() == count; });
  }
  // Presses the key until the question takes it: under typing hands it does not.
  static bool answer(const char* title, Qt::Key key, const QString& about = {}) {
    const QPointer<QWidget> question = windows(title, about).value(0);
    return question && wait_for([&] {
             if (question && question->isVisible()) QTest::keyClick(question, key);
             return !question || !question->isVisible();
           });
  }
  int copy(const std::string& name) { return _file_op(FOP_COPY, {dir_.path(), {name}, false}, dir_ / "to"); }
  // How many files of the tree have been copied.
  int copied() const {
    std::error_code none;
    std::filesystem::directory_iterator entries(dir_ / "to/tree", none);
    return none ? 0 : static_cast<int>(std::distance(entries, std::filesystem::directory_iterator()));
  }
  // Waits until the worker holds still: two looks a moment apart find the same.
  int held() const {
    int before = -1;
    wait_for([&] {
      const int now = copied();
      QTest::qWait(100);
      return std::exchange(before, now) == now;
    });
    return copied();
  }

  TempDir dir_;
  Settings before_;
};

TEST_F(Slots, FiftyOpenQuestionsBlockNeitherOneAnotherNorTheWindow) {
  QLineEdit field;  // stands for the rest of the program
  field.show();
  const auto name = [](int i) { return "file" + std::to_string(i); };
  for (int i = 0; i < SLOT_MOST; ++i) {
    write_file(dir_ / name(i), "new " + name(i));
    write_file(dir_ / ("to/" + name(i)), "old " + name(i));
    ASSERT_EQ(copy(name(i)), 0) << i;
  }
  write_file(dir_ / "one more", "new");
  EXPECT_EQ(copy("one more"), -1);
  EXPECT_EQ(errno, ENOMEM);
  ASSERT_TRUE(asked("Copy/Move", SLOT_MOST));
  QTest::keyClicks(&field, QStringLiteral("goes on"));
  EXPECT_EQ(field.text(), QStringLiteral("goes on"));

  ASSERT_EQ(rows().size(), static_cast<size_t>(SLOT_MOST));
  EXPECT_TRUE(text(rows().front(), "slot_from_text").ends_with("/file49"));
  EXPECT_TRUE(text(rows().back(), "slot_from_text").ends_with("/file0"));
  EXPECT_TRUE(answer("Copy/Move", Qt::Key_O, QStringLiteral("/file7'")));
  ASSERT_TRUE(wait_for([] { return rows().size() == SLOT_MOST - 1; }));
  EXPECT_EQ(windows("Copy/Move").size(), SLOT_MOST - 1);
  EXPECT_EQ(copy("one more"), 0);  // there is room again
  for (QWidget* question : windows("Copy/Move")) QTest::keyClick(question, Qt::Key_S);
  ASSERT_TRUE(wait_for([] { return slot_running() == 0; }));
  for (int i = 0; i < SLOT_MOST; ++i)
    EXPECT_EQ(read_file(dir_ / ("to/" + name(i))), (i == 7 ? "new " : "old ") + name(i));
  EXPECT_EQ(read_file(dir_ / "to/one more"), "new");
}

TEST_F(Slots, PauseHoldsStillAndTheCancelQuestionLeavesItAsItWas) {
  std::filesystem::create_directory(dir_ / "tree");
  for (int i = 0; i < 20000; ++i) write_file(dir_ / ("tree/" + std::to_string(i)), std::string(4096, 'x'));
  ASSERT_EQ(copy("tree"), 0);
  auto* pause = WindowTest::find<QPushButton>(rows().at(0), "slot_pause");
  auto* cancel = WindowTest::find<QPushButton>(rows().at(0), "cancel_button");
  ASSERT_TRUE(wait_for([&] { return copied() > 20; }));
  holder()->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(holder()));
  pause->setFocus();
  QTest::keyClick(pause, Qt::Key_Space);
  EXPECT_TRUE(pause->isChecked());
  const int at = held();
  EXPECT_LT(at, 20000);

  QTest::keyClick(pause, Qt::Key_Tab);
  ASSERT_TRUE(cancel->hasFocus());
  QTest::keyClick(cancel, Qt::Key_Space);
  ASSERT_TRUE(asked("File Operation"));
  EXPECT_FALSE(cancel->isEnabled());
  EXPECT_TRUE(answer("File Operation", Qt::Key_Escape));
  EXPECT_TRUE(pause->isChecked());
  EXPECT_EQ(held(), at);  // still paused

  QTest::mouseClick(pause, Qt::LeftButton);
  ASSERT_TRUE(wait_for([&] { return copied() > at; }));  // goes on
  QTest::mouseClick(cancel, Qt::LeftButton);
  ASSERT_TRUE(asked("File Operation"));
  EXPECT_LT(held(), 20000);  // holds still while the user decides
  EXPECT_TRUE(answer("File Operation", Qt::Key_Y));
  ASSERT_TRUE(wait_for([] { return rows().empty(); }));
  EXPECT_LT(copied(), 20000);
  for (const auto& entry : std::filesystem::directory_iterator(dir_ / "to/tree"))
    EXPECT_EQ(entry.file_size(), 4096u) << entry.path();
}

TEST_F(Slots, RowsShowTheOperationAndStayInPlaceAsOthersGo) {
  for (const char* name : {"first", "second", "to/first", "to/second"}) write_file(dir_ / name, "x");
  ASSERT_EQ(copy("first"), 0);
  ASSERT_EQ(_file_op(FOP_MOVE, {dir_.path(), {"second"}, false}, dir_ / "to"), 0);
  ASSERT_TRUE(asked("Copy/Move") && asked("Move"));
  SlotRow *moving = rows().at(0), *copying = rows().at(1);
  EXPECT_EQ(text(copying, "slot_header_text") + text(copying, "slot_n_text"), "Copying1 of 1");
  EXPECT_TRUE(moving->accessibleName().startsWith(QStringLiteral("Moving second")));
  const QSize size = copying->size();
  EXPECT_TRUE(answer("Move", Qt::Key_S));
  ASSERT_TRUE(wait_for([&] { return rows().size() == 1 && copying->pos() == QPoint(0, 0); }));
  EXPECT_EQ(rows().at(0), copying);
  EXPECT_EQ(copying->size(), size);
  holder()->close();  // the operation goes on, and can still be got at
  EXPECT_TRUE(holder() != nullptr && holder()->isMinimized());
  EXPECT_TRUE(answer("Copy/Move", Qt::Key_Escape));
}

TEST_F(Slots, MovedItemsLeaveTheCutListBeforeTheSlotGoes) {
  const TransferList list{dir_.path(), {"a", "b", "c"}, false};
  for (const std::string& name : list.names) write_file(dir_ / name, name);
  write_file(dir_ / "to/a", "stands");
  clipboard_put(list, true);
  ASSERT_EQ(_file_op(FOP_MOVE, list, dir_ / "to"), 0);
  ASSERT_TRUE(asked("Move"));
  EXPECT_TRUE(answer("Move", Qt::Key_S));
  ASSERT_TRUE(wait_for([] { return rows().empty(); }));
  for (const std::string& name : list.names) {
    EXPECT_EQ(file_is_cut(dir_.path().c_str(), name.c_str()), name == "a");
    EXPECT_EQ(path_exists(dir_ / name), name == "a");
  }
}

}  // namespace
