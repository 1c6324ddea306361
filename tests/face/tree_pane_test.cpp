#include "views/ui/tree_pane.h"

#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QTreeWidget>

#include "core/toolkit/icons.h"
#include "tests/face/window_test.h"
#include "tests/support/hung_mount.h"
#include "views/hotlist.h"
#include "views/ui/hotlist_menu.h"

namespace {

class TreePane : public WindowTest {
 protected:
  // Opens the window with these paths in the hotlist.
  void start(const Texts& paths) {
    open();
    tree_remove(&gTree, "/");
    for (const std::string& path : paths) ASSERT_EQ(tree_add(&gTree, path.c_str()), 0);
  }
  static QTreeWidget* tree() { return base_find<QTreeWidget>("tree"); }
  static QTreeWidgetItem* top(int i) { return tree()->topLevelItem(i); }
  static Texts texts(QTreeWidgetItem* under = tree()->invisibleRootItem()) {
    Texts all;
    for (int i = 0; i < under->childCount(); ++i) all.push_back(tree_item_text(under->child(i)));
    return all;
  }
  // Of the pane and of the hotlist, which are the same.
  static Texts order() {
    EXPECT_EQ(texts(), gTree.paths);
    return texts();
  }
  static bool has_image(QTreeWidgetItem* item, const char* name) {
    return item->icon(0).pixmap(16).toImage() == icon_get(name).pixmap(16).toImage();
  }
  static bool expandable(QTreeWidgetItem* item) {
    return item->childIndicatorPolicy() == QTreeWidgetItem::ShowIndicator;
  }
  static QPoint place(QTreeWidgetItem* item, bool lower_half = false) {
    const QRect row = tree()->visualItemRect(item);
    return {row.left() + 8, lower_half ? row.bottom() - 1 : row.top() + 1};
  }
  static QPoint nowhere() { return {20, tree()->viewport()->height() - 3}; }
  static void click_on(QTreeWidgetItem* item) {
    QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, place(item));
  }
  // Presses an item, drags it over a place and drops it. Whether the drop was welcome there.
  static bool drag(QTreeWidgetItem* item, const QPoint& at, const char* type = "zan-hotlist") {
    QTest::mousePress(tree()->viewport(), Qt::LeftButton, {}, place(item));
    QMimeData data;
    data.setData(QString::fromLatin1(type), "This is zan hotlist entry");
    const auto entered = ::drag<QDragEnterEvent>(tree()->viewport(), at, data, {}, Qt::MoveAction);
    EXPECT_EQ(entered == Qt::MoveAction, std::string(type) == "zan-hotlist");
    const auto welcome = ::drag<QDragMoveEvent>(tree()->viewport(), at, data, {}, Qt::MoveAction);
    ::drag<QDropEvent>(tree()->viewport(), at, data, {}, Qt::MoveAction);
    return welcome == Qt::MoveAction;
  }
};

TEST_F(TreePane, FollowsTheHotlistAndIsTheRootAloneWithoutAFile) {
  open();
  EXPECT_EQ(texts(), Texts{"/"});
  tree_add(&gTree, "/usr");
  hm_add();
  EXPECT_EQ(texts(), (Texts{"/", "/usr", dir_.path()}));
  hm_remove();
  EXPECT_EQ(texts(), (Texts{"/", "/usr"}));
  write_file(config_ / "hotlist.001", "/b\n/a\n");
  tree_load(gConfigPath, "hotlist.001");
  EXPECT_EQ(texts(), (Texts{"/b", "/a"}));
}

TEST_F(TreePane, ADeadPathHoldsUpNeitherStartNorOtherItems) {
  make({"dead/", "live/", "live/sub/", "shown/"});
  HungMount hung(dir_ / "dead");
  if (!hung.mounted()) GTEST_SKIP() << "needs to mount";
  write_file(config_ / "hotlist.001", (dir_ / "dead") + "\n" + (dir_ / "live") + "\n");
  open(dir_ / "shown");
  QMenu menu;
  hm_populate(&menu);
  EXPECT_EQ(menu.actions().size(), 3);
  EXPECT_TRUE(wait_for([&] { return expandable(top(1)); }));
  EXPECT_TRUE(has_image(top(0), "closed_folder"));  // still unknown
  // While its reading hangs, events run; it then expands to nothing.
  bool ran = false;
  QTimer::singleShot(100, [&] {
    ran = true;
    hung.release();
  });
  top(0)->setExpanded(true);
  EXPECT_TRUE(ran);
  EXPECT_EQ(top(0)->childCount(), 0);
  EXPECT_TRUE(wait_for([&] { return has_image(top(0), "file"); }));
}

TEST_F(TreePane, ExpandsIntoSubdirectoriesAndReadsAgainEachTime) {
  dir_.shell("mkdir -p top/b/deep top/a top/.dot top/10 top/9 && touch top/file && ln -s b top/link");
  start({dir_ / "top", dir_ / "missing"});
  EXPECT_TRUE(wait_for([&] { return expandable(top(0)) && has_image(top(1), "file"); }));
  EXPECT_FALSE(expandable(top(1)));
  tree()->setCurrentItem(top(0), 0, QItemSelectionModel::NoUpdate);
  press("Right", tree());
  EXPECT_EQ(texts(top(0)), (Texts{"10", "9", "a", "b", "link"}));
  EXPECT_TRUE(has_image(top(0), "open_folder"));
  EXPECT_TRUE(wait_for([&] { return expandable(top(0)->child(3)); }));
  top(0)->setExpanded(false);
  dir_.shell("rm -r top/b && mkdir top/new");
  gOptions |= OPT_TREE_DOT;
  press("Right", tree());
  EXPECT_EQ(texts(top(0)), (Texts{".dot", "10", "9", "a", "new"}));
  top(0)->setExpanded(false);
  dir_.shell("rm -r top");
  top(0)->setExpanded(true);
  EXPECT_EQ(top(0)->childCount(), 0);
}

TEST_F(TreePane, AClickOrEnterShowsTheDirectoryAnArrowDoesNot) {
  make({"one/", "two/"});
  start({dir_ / "one", dir_ / "two", "/no/such"});
  click_on(top(0));
  EXPECT_EQ(gDir.path, dir_ / "one");
  EXPECT_EQ(fl_get_back_count(), 1);
  tree()->setFocus();
  press("Down", tree());
  EXPECT_EQ(gDir.path, dir_ / "one");
  press("Return", tree());
  EXPECT_EQ(gDir.path, dir_ / "two");
  top(0)->setSelected(true);
  EXPECT_TRUE(tree()->selectedItems().isEmpty());
  expect_message("Directory '/no/such', not found");
  click_on(top(2));
  EXPECT_EQ(gDir.path, dir_ / "one");
}

TEST_F(TreePane, DraggingReordersTopLevelItems) {
  const std::string a = dir_ / "a", raw = "/\xff";
  make({"a/", "a/x/", "a/x/y/"});
  start({a, "/b", raw});
  top(0)->setExpanded(true);
  top(0)->child(0)->setExpanded(true);
  EXPECT_TRUE(drag(top(0), place(top(2), true)));  // the lower half: behind it
  EXPECT_EQ(order(), (Texts{"/b", raw, a}));
  // What was open stays open.
  EXPECT_TRUE(top(2)->isExpanded() && top(2)->childCount() == 1 && top(2)->child(0)->isExpanded());
  EXPECT_TRUE(drag(top(2), place(top(0))));
  const Texts before{a, "/b", raw};
  EXPECT_EQ(order(), before);
  EXPECT_TRUE(drag(top(1), place(top(1))));  // onto itself
  EXPECT_FALSE(drag(top(1), place(top(0)), "text/plain"));
  EXPECT_FALSE(drag(top(1), nowhere()));
  testing::internal::CaptureStdout();
  EXPECT_FALSE(drag(top(1), place(top(0)->child(0))));
  drag(top(0)->child(0), place(top(1)));  // no drag begins on a subdirectory
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "\a");
  EXPECT_EQ(order(), before);
}

TEST_F(TreePane, KeysReorderTopLevelItemsAndMoveTheDivider) {
  start({"/a", "/b", "/c"});
  tree()->setFocus();
  tree()->setCurrentItem(top(0));
  press("Alt+Shift+Up", tree());
  EXPECT_EQ(order(), (Texts{"/a", "/b", "/c"}));
  press("Alt+Shift+Down Alt+Shift+Down Alt+Shift+Down", tree());
  EXPECT_EQ(order(), (Texts{"/b", "/c", "/a"}));
  const int width = tree()->width();
  press("Alt+Shift+Right", tree());
  EXPECT_GT(tree()->width(), width);
}

TEST_F(TreePane, TheMenuButtonChoosesWhatRemoveRemoves) {
  make({"a/", "a/x/"});
  start({"/one", dir_ / "a", "/two"});
  top(1)->setExpanded(true);
  // Nothing, a subdirectory, which is not in the hotlist, and an entry, once.
  for (const QPoint& at : {nowhere(), place(top(1)->child(0)), place(top(2))}) {
    EXPECT_EQ(texts(), (Texts{"/one", dir_ / "a", "/two"}));
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, tree()->viewport()->mapToGlobal(at));
    QApplication::sendEvent(tree()->viewport(), &event);
    EXPECT_EQ(QApplication::activePopupWidget() != nullptr, at != nowhere());
    if (QWidget* menu = QApplication::activePopupWidget()) menu->close();
    for (int i = 0; i < 2; ++i) tree_delete_cb();
  }
  EXPECT_EQ(texts(), (Texts{"/one", dir_ / "a"}));
  tree_add_cb();
  EXPECT_EQ(gTree.paths.back(), dir_.path());
}

TEST_F(TreePane, TheHotlistMenuListsThePathsAndKnowsTheCurrentOne) {
  make({"A&B/"});
  start({dir_ / "A&B", "/none"});
  auto* menu = find<QMenu>(base_window(), "hotlist_menu");
  const auto opened = [menu] {
    menu->popup(QPoint(10, 10));
    const bool add = find<QAction>(menu, "hm_add")->isEnabled();
    EXPECT_NE(find<QAction>(menu, "hm_delete")->isEnabled(), add);
    menu->close();
    return std::pair(add, labels(menu).back());
  };
  EXPECT_EQ(opened(), std::pair(true, std::string("/none")));
  EXPECT_EQ(menu->actions()[menu->actions().size() - 2]->text().toStdString(), dir_ / "A&&B");
  menu->actions()[menu->actions().size() - 2]->trigger();
  EXPECT_EQ(gDir.path, dir_ / "A&B");
  EXPECT_EQ(opened(), std::pair(false, std::string("/none")));
}

}  // namespace
