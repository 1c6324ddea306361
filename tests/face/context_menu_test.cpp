#include "commands/ui/context_menus.h"

#include "fileops/ui/clipboard.h"
#include "tests/face/shown_window.h"

namespace {
std::string labels_of(const QMenu& menu) {
  std::string text;
  for (QAction* action : menu.actions())
    if (!action->isSeparator()) text += action->text().remove(QLatin1Char('&')).toStdString() + ", ";
  return text;
}
}  // namespace

TEST(ContextMenu, HoldsWhatTheSelectionAndTheClipboardAllow) {
  ShownWindow window({"a.unknown", "b.txt", "c.txt", "d/", "e/"});
  apat.clear();
  apat.push_back(std::make_unique<Association>(Association{"*.txt", "open @", "", " "}));
  apat_ctr = apat_max = 1;
  const std::string end = "Inspect, Copy To, Move To, ", one = "Delete, Rename, Symlink, " + end;
  const struct {
    std::vector<std::string> selection;
    bool clipboard;
    std::string labels;
  } rows[] = {
      {{}, false, ""},
      {{}, true, "Paste, "},
      {{"a.unknown"}, false, "Open With, Print, Cut, Copy, " + one},
      {{"b.txt"}, true, "Open, Open With, Print, Cut, Copy, Paste, " + one},
      {{"b.txt", "c.txt"}, false, "Open, Open With, Print, Cut, Copy, Delete, " + end},
      {{"a.unknown", "b.txt"}, false, "Open With, Print, Cut, Copy, Delete, " + end},
      {{"d"}, false, "Open, Open In Window, Cut, Copy, " + one},
      {{"b.txt", "d"}, false, "Open, Open In Window, Cut, Copy, Delete, " + end},
  };
  for (const auto& row : rows) {
    QApplication::clipboard()->setMimeData(new QMimeData);
    if (row.clipboard) clipboard_put({"/d", {"x"}, false}, true);
    window.select(row.selection);
    list_cmenu_open(QPoint(10, 10));
    auto* menu = window.menu("list_cmenu");
    EXPECT_TRUE(menu->isVisible());
    EXPECT_EQ(labels_of(*menu), "New, " + row.labels);
    menu->hide();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  }
}

TEST(ContextMenu, AnItemActsOnTheSelection) {
  ShownWindow window({"a", "b"});
  window.select({"a", "b"});
  list_cmenu_open(QPoint(10, 10));
  auto* menu = window.menu("list_cmenu");
  for (QAction* action : menu->actions())
    if (action->text() == QStringLiteral("Copy")) menu->setActiveAction(action);
  QTest::keyClick(menu, Qt::Key_Return);
  EXPECT_FALSE(menu->isVisible());
  EXPECT_EQ(clipboard_get().lists.at(0).names.size(), 2u);
}
