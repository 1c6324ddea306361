#include "fileops/ui/slots.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTest>
#include <filesystem>

#include "core/state.h"
#include "fileops/start.h"
#include "fileops/ui/clipboard.h"
#include "fileops/ui/slot_row.h"
#include "tests/support/temp_dir.h"

namespace {
QWidget* holder() {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->isVisible() && widget->windowTitle() == QStringLiteral("ZAN: File Operations")) return widget;
  return nullptr;
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

template <class T>
T* part(SlotRow* row, const char* name) {
  return row->findChild<T*>(QString::fromUtf8(name));
}

QList<QWidget*> questions(const char* title, const QString& about = {}) {
  QList<QWidget*> found;
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (widget->isVisible() && widget->windowTitle() == QString::fromUtf8(title) &&
        widget->accessibleDescription().contains(about))
      found.append(widget);
  return found;
}

bool until(const std::function<bool()>& done) {
  return QTest::qWaitFor(done, 240000);
}

class Slots : public testing::Test {
 protected:
  void SetUp() override {
    before_ = *gConfig;
    settings_defaults(gConfig);
    gConfig->flags &= ~static_cast<uint32_t>(SET_OVERWRITE);
    std::filesystem::create_directory(dir_ / "to");
  }
  void TearDown() override {
    EXPECT_TRUE(until([] { return slot_running() == 0; }));
    EXPECT_EQ(holder(), nullptr);
    *gConfig = before_;
  }
  int copy(const std::string& name) { return _file_op(FOP_COPY, {dir_.path(), {name}, false}, dir_ / "to"); }
  void make_tree(int files) {
    std::filesystem::create_directory(dir_ / "tree");
    for (int i = 0; i < files; ++i) write_file(dir_ / ("tree/" + std::to_string(i)), std::string(4096, 'x'));
  }
  int copied() const {
    std::error_code none;
    std::filesystem::directory_iterator entries(dir_ / "to/tree", none);
    return none ? 0 : static_cast<int>(std::distance(entries, std::filesystem::directory_iterator()));
  }

  TempDir dir_;
  Settings before_;
};
}  // namespace

TEST_F(Slots, FiftyOpenQuestionsBlockNeitherOneAnotherNorTheWindow) {
  QLineEdit field;  // stands for the rest of the program
  field.show();
  for (int i = 0; i < SLOT_MOST; ++i) {
    const std::string name = "file" + std::to_string(i);
    write_file(dir_ / name, "new " + name);
    write_file(dir_ / ("to/" + name), "old " + name);
    ASSERT_EQ(copy(name), 0) << i;
  }
  write_file(dir_ / "one more", "new");
  EXPECT_EQ(copy("one more"), -1);
  EXPECT_EQ(errno, ENOMEM);
  ASSERT_TRUE(until([] { return questions("Copy/Move").size() == SLOT_MOST; }));
  QTest::keyClicks(&field, QStringLiteral("goes on"));
  EXPECT_EQ(field.text(), QStringLiteral("goes on"));

  const auto all = rows();
  ASSERT_EQ(all.size(), static_cast<size_t>(SLOT_MOST));
  EXPECT_TRUE(part<QLabel>(all.front(), "slot_from_text")->text().endsWith(QStringLiteral("/file49")));
  EXPECT_TRUE(part<QLabel>(all.back(), "slot_from_text")->text().endsWith(QStringLiteral("/file0")));
  const int height = all.front()->height();
  for (size_t i = 0; i < all.size(); ++i) EXPECT_EQ(all[i]->y(), static_cast<int>(i) * height);
  EXPECT_EQ(holder()->height() % height, 0);
  EXPECT_LT(holder()->height(), height * SLOT_MOST);
  auto* area = holder()->findChild<QScrollArea*>(QStringLiteral("slots_holder"));
  EXPECT_EQ(area->verticalScrollBar()->singleStep(), height);
  EXPECT_TRUE(area->verticalScrollBar()->isVisible());
  EXPECT_EQ(area->viewport()->width(), all.front()->width());

  QTest::qWait(450);  // what was typed into the field is not typing any more
  QTest::keyClick(questions("Copy/Move", QStringLiteral("/file7'")).value(0), Qt::Key_O);
  ASSERT_TRUE(until([&] { return read_file(dir_ / "to/file7") == "new file7"; }));
  ASSERT_TRUE(until([] { return rows().size() == SLOT_MOST - 1; }));
  EXPECT_EQ(questions("Copy/Move").size(), SLOT_MOST - 1);
  EXPECT_EQ(copy("one more"), 0);  // there is room again
  for (QWidget* question : questions("Copy/Move")) QTest::keyClick(question, Qt::Key_S);
  ASSERT_TRUE(until([] { return slot_running() == 0; }));
  for (int i = 0; i < SLOT_MOST; ++i) {
    const std::string name = "file" + std::to_string(i);
    EXPECT_EQ(read_file(dir_ / ("to/" + name)), (i == 7 ? "new " : "old ") + name);
  }
  EXPECT_EQ(read_file(dir_ / "to/one more"), "new");
}

TEST_F(Slots, PauseHoldsStillAndTheCancelQuestionLeavesItAsItWas) {
  make_tree(20000);
  ASSERT_EQ(copy("tree"), 0);
  SlotRow* row = rows().at(0);
  ASSERT_TRUE(until([&] { return copied() > 20; }));
  auto* pause = part<QPushButton>(row, "slot_pause");
  auto* cancel = part<QPushButton>(row, "cancel_button");
  holder()->activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(holder()));
  pause->setFocus();
  QTest::keyClick(pause, Qt::Key_Space);
  EXPECT_TRUE(pause->isChecked());
  QTest::qWait(200);
  const int at = copied();
  EXPECT_LT(at, 20000);

  QTest::keyClick(pause, Qt::Key_Tab);
  ASSERT_TRUE(cancel->hasFocus());
  QTest::keyClick(cancel, Qt::Key_Space);
  QWidget* question = questions("File Operation").value(0);
  ASSERT_NE(question, nullptr);
  EXPECT_EQ(question->accessibleDescription(), QStringLiteral("Do you want to terminate this operation ? "));
  EXPECT_FALSE(cancel->isEnabled());
  QTest::qWait(450);
  QTest::keyClick(question, Qt::Key_Escape);
  EXPECT_TRUE(pause->isChecked());
  QTest::qWait(200);
  EXPECT_EQ(copied(), at);  // still paused

  QTest::mouseClick(pause, Qt::LeftButton);
  ASSERT_TRUE(until([&] { return copied() > at; }));  // goes on
  QTest::mouseClick(cancel, Qt::LeftButton);
  question = questions("File Operation").value(0);
  ASSERT_NE(question, nullptr);
  QTest::qWait(100);
  const int asked = copied();
  QTest::qWait(100);
  EXPECT_EQ(copied(), asked);  // holds still while the user decides
  QTest::mouseClick(question->findChild<QPushButton*>(QStringLiteral("alert_button_1")), Qt::LeftButton);
  ASSERT_TRUE(until([] { return rows().empty(); }));
  EXPECT_LT(copied(), 20000);
  for (const auto& entry : std::filesystem::directory_iterator(dir_ / "to/tree"))
    EXPECT_EQ(entry.file_size(), 4096u) << entry.path();
}

TEST_F(Slots, RowsShowTheOperationAndStayInPlaceAsOthersGo) {
  const std::string deep = "a directory whose name alone fills most of a line/and another one like it/file";
  std::filesystem::create_directories(std::filesystem::path(dir_ / deep).parent_path());
  write_file(dir_ / deep, "x");
  write_file(dir_ / "first", "x");
  for (const char* name : {"first", "file"}) write_file(dir_ / ("to/" + std::string(name)), "old");
  const std::string parent = (std::filesystem::path(dir_ / deep)).parent_path();
  ASSERT_EQ(copy("first"), 0);
  ASSERT_EQ(_file_op(FOP_MOVE, {parent, {"file"}, false}, dir_ / "to"), 0);
  ASSERT_TRUE(until([] { return questions("Copy/Move").size() + questions("Move").size() == 2; }));
  SlotRow *moving = rows().at(0), *copying = rows().at(1);
  EXPECT_EQ(part<QLabel>(copying, "slot_header_text")->text(), QStringLiteral("Copying"));
  EXPECT_EQ(part<QLabel>(copying, "slot_n_text")->text(), QStringLiteral("1 of 1"));
  const QString from = part<QLabel>(moving, "slot_from_text")->text();
  EXPECT_LE(from.size(), 61);
  EXPECT_TRUE(moving->accessibleName().contains(QString::fromStdString(parent)));
  EXPECT_TRUE(
      part<QWidget>(moving, "cancel_button")->accessibleName().startsWith(QStringLiteral("Cancel: Moving")));
  const QSize size = copying->size();
  QTest::qWait(450);
  QTest::keyClick(questions("Move").value(0), Qt::Key_S);
  ASSERT_TRUE(until([] { return rows().size() == 1; }));
  QTest::qWait(20);
  EXPECT_EQ(rows().at(0), copying);
  EXPECT_EQ(copying->pos(), QPoint(0, 0));
  EXPECT_EQ(copying->size(), size);
  EXPECT_EQ(holder()->height(), size.height());
  holder()->close();  // the operation goes on, and can still be got at
  EXPECT_TRUE(holder() != nullptr && holder()->isMinimized());
  QTest::keyClick(questions("Copy/Move").value(0), Qt::Key_Escape);
}

TEST_F(Slots, MovedItemsLeaveTheCutListBeforeTheSlotGoes) {
  TransferList list{dir_.path(), {"a", "b", "c"}, false};
  for (const std::string& name : list.names) write_file(dir_ / name, name);
  write_file(dir_ / "to/a", "stands");
  clipboard_put(list, true);
  ASSERT_EQ(_file_op(FOP_MOVE, list, dir_ / "to"), 0);
  ASSERT_TRUE(until([] { return questions("Move").size() == 1; }));
  QTest::keyClick(questions("Move").value(0), Qt::Key_S);
  ASSERT_TRUE(until([] { return rows().empty(); }));
  EXPECT_EQ(file_is_cut(dir_.path().c_str(), "a"), 1);
  EXPECT_EQ(file_is_cut(dir_.path().c_str(), "b"), 0);
  EXPECT_EQ(file_is_cut(dir_.path().c_str(), "c"), 0);
  EXPECT_TRUE(path_exists(dir_ / "a"));
}

TEST_F(Slots, AnOperationThatCouldNotStartKeepsADeadSlotWhichHoldsNothingUp) {
  EXPECT_EQ(_file_op(FOP_COPY, {dir_.path(), {}, false}, dir_ / "to"), -1);
  ASSERT_EQ(rows().size(), 1u);
  EXPECT_EQ(slot_running(), 0);
  QTest::mouseClick(part<QPushButton>(rows()[0], "cancel_button"), Qt::LeftButton);
  QTest::mouseClick(part<QPushButton>(rows()[0], "slot_pause"), Qt::LeftButton);
  QTest::qWait(250);  // some sweeps
  EXPECT_EQ(rows().size(), 1u);
  EXPECT_TRUE(questions("File Operation").isEmpty());
  EXPECT_EQ(slot_remove(rows()[0]), 0);
  EXPECT_EQ(slot_remove(nullptr), -1);
}
