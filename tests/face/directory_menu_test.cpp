#include "commands/ui/directory_menu.h"

#include <QMenu>

#include "fileops/ui/dir_menu.h"
#include "tests/face/main_window.h"
#include "tests/support/hung_mount.h"
#include "views/hotlist.h"

namespace {
class DirectoryMenuTest : public MainWindowTest {
 protected:
  void start(const std::vector<std::string>& roots) {
    open(dir.path());
    gTree.paths.clear();
    for (const std::string& root : roots) tree_add(&gTree, root.c_str());
  }
  void TearDown() override {
    menu.close();
    gTree.paths.clear();
    MainWindowTest::TearDown();
  }
  void populate() {
    ca_populate_menu(&menu, [this](QWidget* base, const char* path) {
      EXPECT_EQ(base, base_window());
      chosen = path;
    });
  }
  static bool wait_for(const std::function<bool()>& done) { return QTest::qWaitFor(done, 20000); }
  static QStringList labels(const QMenu* of) {
    QStringList all;
    for (const QAction* action : of->actions()) all.append(action->text());
    return all;
  }
  QMenu menu;
  std::string chosen;
};
}  // namespace

TEST_F(DirectoryMenuTest, IsFilledOnceWithAtMostAHundredRoots) {
  std::vector<std::string> roots;
  for (int i = 0; i < 130; ++i) roots.push_back("/none/" + std::to_string(i));
  start(roots);
  QMenu closed, below_closed(&closed);
  ca_populate_menu(&below_closed, {});
  EXPECT_TRUE(below_closed.actions().isEmpty());
  populate();
  populate();
  ASSERT_EQ(menu.actions().size(), 101);
  EXPECT_TRUE(menu.actions()[0]->isSeparator());
  EXPECT_EQ(menu.actions()[100]->text(), QStringLiteral("/none/99"));
}

TEST_F(DirectoryMenuTest, LevelsArePreparedInTheBackgroundAndCutAtAHundred) {
  run_shell("cd " + dir.path() +
            " && mkdir root empty && seq -f 'root/%03g' 1 150 | xargs mkdir && mkdir root/9 root/10" +
            " root/001/deep root/001/deep/er root/.dot && touch root/000 empty/file");
  start({dir / "root", dir / "empty"});
  populate();
  QAction* root = menu.actions()[1];
  EXPECT_TRUE(wait_for([&] { return root->menu() && root->menu()->actions().size() == 101; }));
  const QStringList names = labels(root->menu());
  EXPECT_EQ(names[0], QStringLiteral("001"));
  EXPECT_EQ(names[99], QStringLiteral("10"));
  const QAction* end = root->menu()->actions()[100];
  EXPECT_EQ(end->text(), QStringLiteral("too many items"));
  EXPECT_FALSE(end->isEnabled());
  EXPECT_TRUE(end->font().italic());
  EXPECT_TRUE(wait_for([&] { return !menu.actions()[2]->menu(); }));  // it proved empty
  // Not yet the level below: that is prepared when its button is armed.
  QAction* first = root->menu()->actions()[0];
  EXPECT_FALSE(first->menu());
  menu.popup(QPoint(10, 10));
  menu.setActiveAction(root);
  EXPECT_TRUE(wait_for([&] { return root->menu()->isVisible(); }));
  root->menu()->setActiveAction(first);
  EXPECT_TRUE(wait_for(
      [&] { return first->menu() && labels(first->menu()) == QStringList{QStringLiteral("deep")}; }));
  QAction* deep = first->menu()->actions()[0];
  EXPECT_TRUE(
      wait_for([&] { return deep->menu() && labels(deep->menu()) == QStringList{QStringLiteral("er")}; }));
  // A plain one is chosen by a click, one that cascades by a double click.
  dtm_activate(static_cast<DirButton*>(deep), false);
  QTest::qWait(20);
  EXPECT_EQ(chosen, "");
  dtm_activate(static_cast<DirButton*>(deep), true);
  EXPECT_TRUE(wait_for([&] { return chosen == dir / "root/001/deep"; }));
  EXPECT_FALSE(menu.isVisible());
}

TEST_F(DirectoryMenuTest, WithoutTheOptionNothingIsScannedUntilArmed) {
  run_shell("mkdir -p " + dir / "root/sub");
  gOptions &= ~static_cast<uint32_t>(OPT_MENU_SCAN);
  start({dir / "root"});
  populate();
  QTest::qWait(50);
  QAction* root = menu.actions()[1];
  EXPECT_FALSE(root->menu());
  menu.popup(QPoint(10, 10));
  menu.setActiveAction(root);
  EXPECT_TRUE(
      wait_for([&] { return root->menu() && labels(root->menu()) == QStringList{QStringLiteral("sub")}; }));
}

TEST_F(DirectoryMenuTest, ADeadRootHoldsUpOnlyItsTurn) {
  run_shell("cd " + dir.path() + " && mkdir -p m/dead m/live/sub");
  HungMount hung(dir / "m/dead");
  if (!hung.mounted()) GTEST_SKIP() << "needs to mount";
  start({dir / "m/dead", dir / "m/live"});
  populate();
  EXPECT_TRUE(wait_for([&] {
    return menu.actions()[2]->menu() &&
           menu.actions()[2]->menu()->actions()[0]->text() == QStringLiteral("sub");
  }));
  EXPECT_EQ(labels(menu.actions()[1]->menu()), QStringList{QStringLiteral("...")});
}
