#include "views/ui/tree_pane.h"

#include <QContextMenuEvent>
#include <QDragEnterEvent>
#include <QMenu>
#include <QMimeData>
#include <QTreeWidget>

#include "core/toolkit/icons.h"
#include "tests/face/main_window.h"
#include "tests/support/hung_mount.h"
#include "views/hotlist.h"
#include "views/ui/hotlist_menu.h"

namespace {
using Texts = std::vector<std::string>;

class TreePaneTest : public MainWindowTest {
 protected:
  void start(const Texts& paths) {
    open(dir.path());
    tree_remove(&gTree, "/");
    for (const std::string& path : paths) ASSERT_EQ(tree_add(&gTree, path.c_str()), 0);
  }
  QTreeWidget* tree() { return base_find<QTreeWidget>("tree"); }
  QTreeWidgetItem* top(int i) { return tree()->topLevelItem(i); }
  Texts texts(QTreeWidgetItem* under = nullptr) {
    if (!under) under = tree()->invisibleRootItem();
    Texts all;
    for (int i = 0; i < under->childCount(); ++i) all.push_back(tree_item_text(under->child(i)));
    return all;
  }
  static bool has_image(QTreeWidgetItem* item, const char* name) {
    return item->icon(0).pixmap(16).toImage() == icon_get(name).pixmap(16).toImage();
  }
  static bool expandable(QTreeWidgetItem* item) {
    return item->childIndicatorPolicy() == QTreeWidgetItem::ShowIndicator;
  }
  QPoint place(QTreeWidgetItem* item, bool lower_half = false) {
    const QRect row = tree()->visualItemRect(item);
    return {row.left() + 8, lower_half ? row.bottom() - 1 : row.top() + 1};
  }
  void press_on(QTreeWidgetItem* item) {
    QTest::mousePress(tree()->viewport(), Qt::LeftButton, {}, place(item));
  }
  // Drags what was pressed over a place and drops it. Whether the drop was welcome there.
  bool drag_to(const QPoint& at, const char* type = "zan-hotlist", bool drop = true) {
    QMimeData data;
    data.setData(QString::fromLatin1(type), "This is zan hotlist entry");
    QDragEnterEvent enter(at, Qt::MoveAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(tree()->viewport(), &enter);
    EXPECT_EQ(enter.isAccepted(), std::string(type) == "zan-hotlist");
    QDragMoveEvent move(at, Qt::MoveAction, &data, Qt::LeftButton, {});
    QApplication::sendEvent(tree()->viewport(), &move);
    QDropEvent event(at, Qt::MoveAction, &data, Qt::LeftButton, {});
    if (drop) QApplication::sendEvent(tree()->viewport(), &event);
    return move.isAccepted();
  }
};

bool wait_for(const std::function<bool()>& done) {
  return QTest::qWaitFor(done, 20000);
}
}  // namespace

TEST_F(TreePaneTest, FollowsTheHotlistAndIsTheRootAloneWithoutAFile) {
  open(dir.path());
  EXPECT_EQ(texts(), Texts{"/"});
  tree_add(&gTree, "/usr");
  hm_add();
  EXPECT_EQ(texts(), (Texts{"/", "/usr", dir.path()}));
  EXPECT_EQ(tree_add(&gTree, "/usr"), -1);
  tree_remove(&gTree, "/usr");
  hm_remove();
  EXPECT_EQ(texts(), Texts{"/"});
  write_file(dir / "hotlist.001", "/b\n/a\n");
  tree_load(dir.path().c_str(), "hotlist.001");
  EXPECT_EQ(texts(), (Texts{"/b", "/a"}));
}

TEST_F(TreePaneTest, ShownItemsGetTheirImagesByAProbe) {
  run_shell("cd " + dir.path() + " && mkdir -p some/sub none && touch none/file plain");
  const struct {
    const char *name, *image;
    bool expandable;
  } rows[] = {{"some", "closed_folder", true},
              {"none", "closed_folder", false},
              {"plain", "file", false},
              {"missing", "file", false}};
  Texts paths;
  for (const auto& row : rows) paths.push_back(dir / row.name);
  start(paths);
  EXPECT_TRUE(wait_for([&] { return has_image(top(3), "file"); }));
  EXPECT_TRUE(wait_for([&] { return expandable(top(0)); }));
  for (int i = 0; i < 4; ++i) {
    EXPECT_TRUE(has_image(top(i), rows[i].image)) << rows[i].name;
    EXPECT_EQ(expandable(top(i)), rows[i].expandable) << rows[i].name;
  }
}

TEST_F(TreePaneTest, ADeadPathHoldsUpNeitherStartNorOtherItems) {
  run_shell("cd " + dir.path() + " && mkdir -p dead live/sub shown");
  HungMount hung(dir / "dead");
  if (!hung.mounted()) GTEST_SKIP() << "needs to mount";
  gTree.paths.clear();
  open(dir / "shown");
  tree_remove(&gTree, "/");
  tree_add(&gTree, (dir / "dead").c_str());
  tree_add(&gTree, (dir / "live").c_str());
  QMenu menu;
  hm_populate(&menu);
  EXPECT_EQ(menu.actions().size(), 3);
  EXPECT_TRUE(wait_for([&] { return expandable(top(1)); }));
  EXPECT_TRUE(has_image(top(0), "closed_folder"));  // still unknown
  // While its reading hangs, events run; it then expands to nothing.
  int ticks = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
  timer.start(100);
  top(0)->setExpanded(true);
  EXPECT_GT(ticks, 20);
  EXPECT_EQ(top(0)->childCount(), 0);
  EXPECT_TRUE(wait_for([&] { return has_image(top(0), "file"); }));
}

TEST_F(TreePaneTest, ExpandsIntoSubdirectoriesAndReadsAgainEachTime) {
  run_shell("cd " + dir.path() +
            " && mkdir -p top/b/deep top/a top/.dot top/10 top/9 && touch top/file && ln -s b top/link");
  start({dir / "top"});
  EXPECT_TRUE(wait_for([&] { return expandable(top(0)); }));
  tree()->setCurrentItem(top(0), 0, QItemSelectionModel::NoUpdate);
  tree()->setFocus();
  QTest::keyClick(tree(), Qt::Key_Right);
  EXPECT_EQ(texts(top(0)), (Texts{"10", "9", "a", "b", "link"}));
  EXPECT_TRUE(has_image(top(0), "open_folder"));
  EXPECT_TRUE(wait_for([&] { return expandable(top(0)->child(3)); }));
  std::string path;
  const int length = x_get_fullpath(top(0)->child(3), &path);
  EXPECT_EQ(path, dir / "top/b");
  EXPECT_EQ(length, static_cast<int>(path.size()));
  QTest::keyClick(tree(), Qt::Key_Left);
  EXPECT_EQ(top(0)->childCount(), 0);
  run_shell("rm -r " + dir / "top/b" + " && mkdir " + dir / "top/new");
  gOptions |= OPT_TREE_DOT;
  QTest::keyClick(tree(), Qt::Key_Right);
  EXPECT_EQ(texts(top(0)), (Texts{".dot", "10", "9", "a", "new"}));
  top(0)->setExpanded(false);
  run_shell("rm -r " + dir / "top");
  top(0)->setExpanded(true);
  EXPECT_EQ(top(0)->childCount(), 0);
}

TEST_F(TreePaneTest, ThousandsOfSubdirectoriesComeWholeWhileEventsRun) {
  run_shell("mkdir " + dir / "top" + " && cd " + dir / "top" + " && seq 1 1600 | xargs mkdir");
  start({dir / "top"});
  int ticks = 0;
  QTimer timer;
  QObject::connect(&timer, &QTimer::timeout, [&] { ++ticks; });
  timer.start(0);
  top(0)->setExpanded(true);
  EXPECT_GT(ticks, 2);
  const Texts all = texts(top(0));
  EXPECT_EQ(all.size(), 1600U);
  EXPECT_TRUE(std::is_sorted(all.begin(), all.end()));
  EXPECT_EQ(status(1), "1600 read");
  // What events do to the item meanwhile is borne: here it goes away.
  top(0)->setExpanded(false);
  QTimer::singleShot(0, [&] { tree_remove(&gTree, (dir / "top").c_str()); });
  top(0)->setExpanded(true);
  EXPECT_EQ(tree()->topLevelItemCount(), 0);
}

TEST_F(TreePaneTest, AddsSortedBeforeTheFirstGreaterAndNoTextTwice) {
  start({"/p"});
  const struct {
    const char* text;
    bool sorted;
    Texts all;
  } rows[] = {
      {"..", true, {".."}},
      {"m", true, {"..", "m"}},
      {"!", true, {"..", "!", "m"}},
      {"m", true, {"..", "!", "m"}},
      {"a", false, {"..", "!", "m", "a"}},
      {"b", true, {"..", "!", "b", "m", "a"}},
      {"m", false, {"..", "!", "b", "m", "a", "m"}},
  };
  for (const auto& row : rows) {
    x_add_item(tree(), top(0), row.text, row.sorted);
    EXPECT_EQ(texts(top(0)), row.all) << row.text;
  }
  std::string path;
  x_get_fullpath(top(0)->child(0), &path);
  EXPECT_EQ(path, "/");
  EXPECT_EQ(x_branch_contains_double_dot(top(0)->child(0)), 0);
  QTreeWidgetItem* up = x_add_item(tree(), nullptr, "..", false);
  EXPECT_EQ(x_branch_contains_double_dot(x_add_item(tree(), up, "x", false)), 1);
}

TEST_F(TreePaneTest, AClickOrEnterShowsTheDirectoryAnArrowDoesNot) {
  run_shell("cd " + dir.path() + " && mkdir one two");
  start({dir / "one", dir / "two", "/no/such"});
  QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, place(top(0)));
  EXPECT_EQ(gDir.path, dir / "one");
  EXPECT_EQ(fl_get_back_count(), 1);
  EXPECT_TRUE(tree()->selectedItems().isEmpty());
  tree()->setFocus();
  QTest::keyClick(tree(), Qt::Key_Down);
  EXPECT_EQ(gDir.path, dir / "one");
  QTest::keyClick(tree(), Qt::Key_Return);
  EXPECT_EQ(gDir.path, dir / "two");
  top(0)->setSelected(true);
  EXPECT_EQ(gDir.path, dir / "one");
  EXPECT_TRUE(tree()->selectedItems().isEmpty());
  const std::string message =
      message_of([&] { QTest::mouseClick(tree()->viewport(), Qt::LeftButton, {}, place(top(2))); });
  EXPECT_NE(message.find("not found"), std::string::npos) << message;
  EXPECT_EQ(gDir.path, dir / "one");
}

TEST_F(TreePaneTest, DraggingReordersTopLevelItems) {
  run_shell("mkdir -p " + dir / "a/x/y");
  const std::string a = dir / "a", raw = "/\xff";
  start({a, "/b", raw});
  top(0)->setExpanded(true);
  top(0)->child(0)->setExpanded(true);
  press_on(top(0));
  EXPECT_TRUE(drag_to(place(top(2), true)));  // the lower half: behind it
  EXPECT_EQ(gTree.paths, (Texts{"/b", raw, a}));
  EXPECT_EQ(texts(), gTree.paths);
  // What was open stays open.
  EXPECT_TRUE(top(2)->isExpanded() && top(2)->childCount() == 1 && top(2)->child(0)->isExpanded());
  press_on(top(2));
  EXPECT_TRUE(drag_to(place(top(0))));
  EXPECT_EQ(gTree.paths, (Texts{a, "/b", raw}));
  const Texts before = gTree.paths;
  press_on(top(1));
  EXPECT_TRUE(drag_to(place(top(1))));  // onto itself
  press_on(top(1));
  EXPECT_FALSE(drag_to(place(top(0)), "text/plain"));
  press_on(top(1));
  EXPECT_FALSE(drag_to(QPoint(20, tree()->viewport()->height() - 3)));  // onto nothing
  testing::internal::CaptureStdout();
  press_on(top(1));
  EXPECT_FALSE(drag_to(place(top(0)->child(0))));
  press_on(top(0)->child(0));  // no drag begins on a subdirectory
  drag_to(place(top(1)));
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "\a");
  EXPECT_EQ(gTree.paths, before);
  EXPECT_EQ(texts(), before);
}

TEST_F(TreePaneTest, TheMenuButtonChoosesWhatRemoveRemoves) {
  run_shell("mkdir -p " + dir / "a/x");
  start({"/one", dir / "a", "/two"});
  const auto ask_menu = [&](const QPoint& at) {
    QContextMenuEvent event(QContextMenuEvent::Mouse, at, tree()->viewport()->mapToGlobal(at));
    QApplication::sendEvent(tree()->viewport(), &event);
    QWidget* menu = QApplication::activePopupWidget();
    if (menu) menu->close();
    return menu != nullptr;
  };
  EXPECT_FALSE(ask_menu(QPoint(20, tree()->viewport()->height() - 3)));
  EXPECT_FALSE(tree_menu_item());
  EXPECT_TRUE(ask_menu(place(top(2))));
  EXPECT_EQ(tree_menu_item(), top(2));
  tree_delete_cb();
  EXPECT_EQ(gTree.paths, (Texts{"/one", dir / "a"}));
  EXPECT_FALSE(tree_menu_item());
  tree_delete_cb();
  top(1)->setExpanded(true);
  EXPECT_TRUE(ask_menu(place(top(1)->child(0))));
  tree_delete_cb();  // a subdirectory is not in the hotlist
  EXPECT_EQ(texts(), (Texts{"/one", dir / "a"}));
  tree_add_cb();
  EXPECT_EQ(gTree.paths.back(), dir.path());
}

TEST_F(TreePaneTest, TheHotlistMenuListsThePathsAndKnowsTheCurrentOne) {
  run_shell("cd " + dir.path() + " && mkdir 'A&B' && mkdir other");
  start({dir / "A&B", "/none"});
  QMenu menu;
  QAction* add = menu.addAction(QString());
  add->setObjectName(QStringLiteral("hm_add"));
  QAction* remove = menu.addAction(QString());
  remove->setObjectName(QStringLiteral("hm_delete"));
  hm_populate(&menu);
  hm_populate(&menu);
  ASSERT_EQ(menu.actions().size(), 5);
  EXPECT_TRUE(menu.actions()[2]->isSeparator());
  EXPECT_EQ(menu.actions()[3]->text().toStdString(), dir / "A&&B");
  hm_setup(&menu);
  EXPECT_TRUE(add->isEnabled() && !remove->isEnabled());
  menu.actions()[3]->trigger();
  EXPECT_EQ(gDir.path, dir / "A&B");
  hm_setup(&menu);
  EXPECT_TRUE(!add->isEnabled() && remove->isEnabled());
  hm_remove();
  tree_remove(&gTree, "/none");
  hm_populate(&menu);
  EXPECT_EQ(menu.actions().size(), 2);
}
