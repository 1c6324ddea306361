#include "views/ui/file_list_dnd.h"

#include <QDropEvent>
#include <QHeaderView>
#include <QScrollBar>
#include <QTimer>

#include "fileops/ui/files_mime.h"
#include "fileops/ui/slots.h"
#include "fileops/uri_list.h"
#include "tests/face/shown_window.h"

namespace {
const char kHeader[] = "/header";

// What is under the pointer at a place.
QWidget* ground_of(const ShownWindow& window, const std::string& name) {
  return name == kHeader ? window.list()->header()->viewport() : window.list()->viewport();
}

// The middle of the row of a name ("" the part below the rows).
QPoint place_of(const ShownWindow& window, const std::string& name) {
  QAbstractItemModel* model = window.list()->model();
  const int last = model->rowCount() - 1;
  if (name == kHeader) return {20, 5};
  if (name.empty()) return window.list()->visualRect(model->index(last, 0)).bottomLeft() + QPoint(10, 10);
  for (int row = 0; row <= last; ++row) {
    const QModelIndex index = model->index(row, 0);
    if (index.data().toString().toStdString() == name) return window.list()->visualRect(index).center();
  }
  ADD_FAILURE() << "no row " << name;
  return {};
}

const Qt::DropActions kBoth = Qt::CopyAction | Qt::MoveAction;

// Drags over the place; what a drop there would do, IgnoreAction when it would be refused.
Qt::DropAction hover(const ShownWindow& window, const QMimeData& mime, const std::string& over,
                     Qt::KeyboardModifiers modifiers = {}, Qt::DropActions possible = kBoth) {
  QWidget* ground = ground_of(window, over);
  const QPoint place = place_of(window, over);
  QDragEnterEvent enter(place, possible, &mime, Qt::LeftButton, modifiers);
  QApplication::sendEvent(ground, &enter);
  if (!enter.isAccepted()) return Qt::IgnoreAction;  // no moves would follow
  QDragMoveEvent move(place, possible, &mime, Qt::LeftButton, modifiers);
  QApplication::sendEvent(ground, &move);
  return move.isAccepted() ? move.dropAction() : Qt::IgnoreAction;
}

Qt::DropAction drop(const ShownWindow& window, const QMimeData& mime, const std::string& over,
                    Qt::KeyboardModifiers modifiers = {}, Qt::DropActions possible = kBoth) {
  const Qt::DropAction hovered = hover(window, mime, over, modifiers, possible);
  QDropEvent event(place_of(window, over), possible, &mime, Qt::LeftButton, modifiers);
  QApplication::sendEvent(ground_of(window, over), &event);
  EXPECT_FALSE(hovered == Qt::IgnoreAction && event.isAccepted()) << over;
  return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
}

std::unique_ptr<FilesMime> carried(const std::string& dir, std::vector<std::string> names) {
  return std::make_unique<FilesMime>(
      std::make_shared<SharedFiles>(TransferList{dir, std::move(names), false}), FilesUse::dragged);
}

bool settled() {
  return QTest::qWaitFor([] { return slot_running() == 0; }, 30000);
}
}  // namespace

TEST(DragAndDrop, OnlyDirectoriesAndTheEmptyPartAreTargets) {
  ShownWindow window({"d/", "e/", "file"});
  TempDir other;
  const auto own = carried(window.path(), {"d", "file"}), foreign = carried(other.path(), {"x"});
  const struct {
    const FilesMime* mime;
    const char* over;
    bool target;
  } rows[] = {
      {own.get(), "e", true},      {own.get(), "..", true},        {own.get(), "d", false},
      {own.get(), "file", false},  {own.get(), "", false},         {foreign.get(), "e", true},
      {foreign.get(), "..", true}, {foreign.get(), "", true},      {foreign.get(), "file", false},
      {own.get(), kHeader, false}, {foreign.get(), kHeader, true},
  };
  QDragEnterEvent enter(place_of(window, "d"), kBoth, own.get(), Qt::LeftButton, {});
  QApplication::sendEvent(window.list()->viewport(), &enter);
  EXPECT_TRUE(enter.isAccepted()) << "a drag begins over what is dragged, and goes on from there";
  for (const auto& row : rows)
    EXPECT_EQ(hover(window, *row.mime, row.over), row.target ? Qt::MoveAction : Qt::IgnoreAction) << row.over;
  QMimeData words;
  words.setText(QStringLiteral("/etc/passwd"));
  EXPECT_EQ(hover(window, words, "e"), Qt::IgnoreAction);
}

TEST(DragAndDrop, MovesByDefaultAndCopiesWithCtrl) {
  ShownWindow window({"d/", "moved", "copied"});
  EXPECT_EQ(drop(window, *carried(window.path(), {"moved"}), "d"), Qt::MoveAction);
  ASSERT_TRUE(settled());
  EXPECT_EQ(drop(window, *carried(window.path(), {"copied"}), "d", Qt::ControlModifier), Qt::CopyAction);
  ASSERT_TRUE(settled());
  EXPECT_FALSE(path_exists(window / "moved"));
  EXPECT_EQ(read_file(window / "d/moved"), "moved");
  EXPECT_TRUE(path_exists(window / "copied"));
  EXPECT_EQ(read_file(window / "d/copied"), "copied");
}

TEST(DragAndDrop, TakesTheFilesOfOtherPrograms) {
  ShownWindow window({"d/"});
  TempDir first, second;
  write_file(first / "a b", "1");
  write_file(second / "c", "2");
  QMimeData mime;
  mime.setData(QString::fromLatin1(kMimeUriList),
               QByteArray::fromStdString(uri_list_encode({first.path(), {"a b"}, false}) +
                                         uri_list_encode({second.path(), {"c"}, false})));
  EXPECT_EQ(drop(window, mime, "", {}, Qt::CopyAction), Qt::CopyAction) << "its owner lets nobody move it";
  ASSERT_TRUE(settled());
  EXPECT_EQ(read_file(window / "a b"), "1");
  EXPECT_TRUE(path_exists(first / "a b"));
  EXPECT_EQ(hover(window, mime, "", {}, Qt::LinkAction), Qt::IgnoreAction);
  EXPECT_EQ(drop(window, mime, "d"), Qt::MoveAction);
  ASSERT_TRUE(settled());
  EXPECT_EQ(read_file(window / "d/c"), "2");
  EXPECT_FALSE(path_exists(second / "c"));
}

TEST(DragAndDrop, AFullListStillTakesADropForItsOwnDirectory) {
  std::vector<std::string> names;
  for (int i = 0; i < 100; ++i) names.push_back("d" + std::to_string(i) + "/");
  ShownWindow window(names);
  TempDir other;
  write_file(other / "f", "1");
  ASSERT_GT(window.list()->verticalScrollBar()->maximum(), 0);
  EXPECT_EQ(drop(window, *carried(other.path(), {"f"}), kHeader), Qt::MoveAction);
  ASSERT_TRUE(settled());
  EXPECT_EQ(read_file(window / "f"), "1");
  EXPECT_FALSE(path_exists(other / "f"));
}

TEST(DragAndDrop, ADropWithinASecondOfTheDragsStartIsIgnored) {
  ShownWindow window({"d/", "file"});
  window.select({"file"});
  // A drag waits for the pointer: it is given up as soon as it runs.
  QTimer::singleShot(50,
                     [&window] { QTest::keyClick(window.list()->window()->windowHandle(), Qt::Key_Escape); });
  fl_dnd_start(window.list());
  const auto mime = carried(window.path(), {"file"});
  EXPECT_EQ(drop(window, *mime, "d"), Qt::IgnoreAction);
  EXPECT_TRUE(path_exists(window / "file"));
  QTest::qWait(1100);
  EXPECT_EQ(drop(window, *mime, "d"), Qt::MoveAction);
  ASSERT_TRUE(settled());
  EXPECT_TRUE(path_exists(window / "d/file"));
}

TEST(DragAndDrop, ThePictureGrowsWithTheNameOnlySoFar) {
  const QFont font = QApplication::font();
  const QSize one = fl_dnd_picture({"/d", {"a"}, false}, font, 1).size();
  const QSize longest = fl_dnd_picture({"/d", {std::string(255, 'w')}, false}, font, 1).size();
  EXPECT_GT(longest.width(), one.width());
  EXPECT_LT(longest.width(), 400);
  EXPECT_EQ(fl_dnd_picture({"/d", {"a"}, false}, font, 2).size(), one * 2);
}
