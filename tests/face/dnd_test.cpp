#include "views/ui/file_list_dnd.h"

#include <QDropEvent>
#include <QHeaderView>

#include "fileops/ui/files_mime.h"
#include "fileops/uri_list.h"
#include "tests/face/window_test.h"

namespace {
const char kHeader[] = "/header";
const Qt::DropActions kBoth = Qt::CopyAction | Qt::MoveAction;
const Qt::DropAction kRefused = Qt::IgnoreAction;

class DragAndDrop : public WindowTest {
 protected:
  // The middle of the row of a name ("" the part below the rows).
  static QPoint place(const std::string& name) {
    if (name == kHeader) return {20, 5};
    return name.empty() ? place_of(gDir.count - 1) + QPoint(0, 30)
                        : place_of(name == ".." ? -1 : index_of(name));
  }
  static QWidget* under(const std::string& name) {
    return name == kHeader ? fl_view()->header()->viewport() : ground();
  }
  // Drags over the place; what a drop there would do.
  static Qt::DropAction hover(const QMimeData& mime, const std::string& over,
                              Qt::KeyboardModifiers modifiers = {}, Qt::DropActions possible = kBoth) {
    const auto entered = drag<QDragEnterEvent>(under(over), place(over), mime, modifiers, possible);
    if (entered == kRefused) return kRefused;  // no moves would follow
    return drag<QDragMoveEvent>(under(over), place(over), mime, modifiers, possible);
  }
  // Drops there and waits for the end. What it did.
  static Qt::DropAction drop(const QMimeData& mime, const std::string& over,
                             Qt::KeyboardModifiers modifiers = {}, Qt::DropActions possible = kBoth) {
    const Qt::DropAction hovered = hover(mime, over, modifiers, possible);
    const auto done = drag<QDropEvent>(under(over), place(over), mime, modifiers, possible);
    EXPECT_TRUE(settled() && (hovered != kRefused || done == kRefused)) << over;
    return done;
  }
  static std::unique_ptr<FilesMime> carried(const std::string& dir, Texts names) {
    auto files = std::make_shared<SharedFiles>(TransferList{dir, std::move(names), false});
    return std::make_unique<FilesMime>(std::move(files), FilesUse::dragged);
  }
  TempDir other_;
};

TEST_F(DragAndDrop, OnlyDirectoriesAndTheEmptyPartAreTargets) {
  show({"d/", "e/", "file"});
  const auto own = carried(dir_.path(), {"d", "file"}), foreign = carried(other_.path(), {"x"});
  const std::pair<const FilesMime*, Texts> targets[] = {{own.get(), {"e", ".."}},
                                                        {foreign.get(), {"d", "e", "..", "", kHeader}}};
  EXPECT_NE(drag<QDragEnterEvent>(ground(), place("d"), *own, {}, kBoth), kRefused)
      << "a drag begins over what is dragged, and goes on from there";
  for (const auto& [mime, expected] : targets) {
    Texts welcome;
    for (const char* over : {"d", "e", "file", "..", "", kHeader})
      if (hover(*mime, over) == Qt::MoveAction) welcome.push_back(over);
    EXPECT_EQ(welcome, expected);
  }
  QMimeData words;
  words.setText(QStringLiteral("/etc/passwd"));
  EXPECT_EQ(hover(words, "e"), kRefused);
}

TEST_F(DragAndDrop, MovesByDefaultAndCopiesWithCtrl) {
  show({"d/", "d/up", "moved", "copied"});
  EXPECT_EQ(drop(*carried(dir_.path(), {"moved"}), "d"), Qt::MoveAction);
  EXPECT_EQ(drop(*carried(dir_.path(), {"copied"}), "d", Qt::ControlModifier), Qt::CopyAction);
  fl_newpath((dir_ / "d").c_str());
  EXPECT_EQ(drop(*carried(dir_ / "d", {"up"}), ".."), Qt::MoveAction);
  EXPECT_EQ(held(), "copied:copied d/ d/copied:copied d/moved:moved up:d/up ");
}

TEST_F(DragAndDrop, TakesTheFilesOfOtherPrograms) {
  show({"d/"});
  TempDir second;
  write_file(other_ / "a b", "1");
  write_file(second / "c", "2");
  QMimeData mime;
  mime.setData(QString::fromLatin1(kMimeUriList),
               QByteArray::fromStdString(uri_list_encode({other_.path(), {"a b"}, false}) +
                                         uri_list_encode({second.path(), {"c"}, false})));
  // The header is there however full the list is.
  EXPECT_EQ(drop(mime, kHeader, {}, Qt::CopyAction), Qt::CopyAction) << "its owner lets nobody move it";
  EXPECT_EQ(held() + other_.listing(), "a b:1 c:2 d/ a b ");
  EXPECT_EQ(hover(mime, "", {}, Qt::LinkAction), kRefused);
  EXPECT_EQ(drop(mime, "d"), Qt::MoveAction);
  EXPECT_EQ(held() + second.listing(), "a b:1 c:2 d/ d/a b:1 d/c:2 ");
}

TEST_F(DragAndDrop, ADropSoonAfterTheDragsStartIsIgnored) {
  show({"d/", "file"}, {"file"});
  // A drag waits for the pointer: it is given up as soon as it runs.
  QTimer::singleShot(50, [] { QTest::keyClick(base_window()->windowHandle(), Qt::Key_Escape); });
  fl_dnd_start(fl_view());
  const auto mime = carried(dir_.path(), {"file"});
  EXPECT_EQ(drop(*mime, "d"), kRefused);
  EXPECT_EQ(held(), "d/ file:file ");
  EXPECT_TRUE(wait_for([&] { return drop(*mime, "d") == Qt::MoveAction; }));
  EXPECT_EQ(held(), "d/ d/file:file ");
}

}  // namespace
