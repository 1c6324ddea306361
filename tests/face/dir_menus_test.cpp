#include "fileops/ui/dir_menus.h"

#include "commands/ui/directory_menu.h"
#include "fileops/ui/dir_menu.h"
#include "tests/face/window_test.h"
#include "views/hotlist.h"

namespace {

class DirMenus : public WindowTest {
 protected:
  // The directories that a shell command makes, in dir_ beside a file "f", which is selected; the roots are
  // in the hotlist.
  void start(const std::string& command, const Texts& roots) {
    ASSERT_EQ(run_shell("cd " + dir_.path() + " && " + command), 0);
    QCursor::setPos(0, 0);
    show({"f"}, {"f"});
    gTree.paths.clear();
    for (const std::string& root : roots) tree_add(&gTree, (dir_ / root).c_str());
    mgen_work_insert(&outer_);
  }
  void TearDown() override {
    close_menus();
    gTree.paths.clear();
    WindowTest::TearDown();
  }
  static void close_menus() {
    while (QWidget* popup = QApplication::activePopupWidget()) popup->close();
    QCoreApplication::processEvents();
  }
  // Opens Copy To (0) or Move To (1) by keys.
  QMenu* open_cascade(int which) {
    outer_.popup(QPoint(20, 20));
    for (int i = 0; i <= which; ++i) QTest::keyClick(&outer_, Qt::Key_Down);
    QTest::keyClick(&outer_, Qt::Key_Right);
    QMenu* cascade = outer_.actions()[which]->menu();
    EXPECT_TRUE(cascade->isVisible());
    return cascade;
  }
  static DirButton* entry(QMenu* menu, int i) { return dynamic_cast<DirButton*>(menu->actions()[i]); }
  static DirButton* root(QMenu* cascade, int i = 0) { return entry(cascade, 2 + i); }
  static bool known(DirButton* item) {
    return wait_for([item] { return !item->grey(); });
  }
  // Lets the pointer rest on an entry until its submenu is filled.
  static QMenu* cascade_of(QMenu* menu, DirButton* item) {
    menu->setActiveAction(item);
    EXPECT_TRUE(
        wait_for([&] { return item->menu() && item->menu()->isVisible() && entry(item->menu(), 0); }));
    return item->menu();
  }

  QMenu outer_;
};

TEST_F(DirMenus, CascadesListTheRootsWhenArmedAndTheirSubdirectoriesWhenShown) {
  start("mkdir -p 'r&1/a/deep' r\\&1/10 r\\&1/2 r\\&1/.dot none && touch none/file",
        {"r&1", "none", "missing"});
  EXPECT_EQ(labels(&outer_), (Texts{"Copy To", "Move To"}));
  EXPECT_EQ(labels(outer_.actions()[0]->menu()), Texts{"Other..."});
  mgen_work_insert(&outer_);  // again, for the next opening
  EXPECT_EQ(outer_.actions().size(), 2);
  QMenu* copy = open_cascade(0);
  EXPECT_EQ(labels(copy), (Texts{"Other...", "", dir_ / "r&&1", dir_ / "none", dir_ / "missing"}));
  EXPECT_TRUE(root(copy)->grey());
  for (int i = 0; i < 3; ++i) {
    EXPECT_TRUE(known(root(copy, i)));
    EXPECT_EQ(root(copy, i)->cascades(), i == 0);
  }
  QMenu* below = cascade_of(copy, root(copy));
  EXPECT_EQ(labels(below), (Texts{"2", "10", "a"}));
  EXPECT_TRUE(known(entry(below, 2)));
  EXPECT_TRUE(entry(below, 2)->cascades() && !entry(below, 1)->cascades());
  EXPECT_EQ(labels(cascade_of(below, entry(below, 2))), Texts{"deep"});
  // What is there after the menus were closed is read anew.
  close_menus();
  run_shell("mkdir " + dir_ / "'r&1/new'");
  copy = open_cascade(0);
  EXPECT_EQ(labels(cascade_of(copy, root(copy))), (Texts{"2", "10", "a", "new"}));
}

TEST_F(DirMenus, ChoosingAPlainEntryAsksAndThenCopies) {
  start("mkdir -p root/into", {"root"});
  for (const Qt::Key answer : {Qt::Key_N, Qt::Key_Escape, Qt::Key_Y}) {
    QMenu* copy = open_cascade(0);
    QMenu* below = cascade_of(copy, root(copy));
    EXPECT_TRUE(known(entry(below, 0)));
    const QPoint place = below->actionGeometry(entry(below, 0)).center();
    QTest::mouseMove(below, place);
    expect_message("Do you want to copy f to\n'" + dir_ / "root/into" + "'\n", answer);
    QTest::mouseClick(below, Qt::LeftButton, {}, place);
    EXPECT_FALSE(QApplication::activePopupWidget());
    EXPECT_TRUE(answered());
    EXPECT_TRUE(settled());
    EXPECT_EQ(read_file(dir_ / "root/into/f"), answer == Qt::Key_Y ? "f" : "");
  }
  EXPECT_TRUE(path_exists(dir_ / "f"));
}

TEST_F(DirMenus, ADoubleClickChoosesAnEntryThatCascades) {
  start("mkdir -p root/sub", {"root"});
  QMenu* move = open_cascade(1);
  QMenu* below = cascade_of(move, root(move));
  // The submenu is up and so gets the click that falls on the menu behind it.
  const QPoint at = move->mapToGlobal(move->actionGeometry(root(move)).center());
  // A display may report the second press as a first one.
  const auto press_at = [&](quint64 time) {
    QMouseEvent press(QEvent::MouseButtonPress, below->mapFromGlobal(at), at, Qt::LeftButton, Qt::LeftButton,
                      {});
    press.setTimestamp(time);
    QApplication::sendEvent(below, &press);
  };
  press_at(100000);
  press_at(200000);  // too late for a double click
  EXPECT_TRUE(move->isVisible());
  expect_message("Do you want to move f to\n'" + dir_ / "root" + "'\n", Qt::Key_Y);
  press_at(200100);
  EXPECT_TRUE(answered());
  EXPECT_TRUE(settled());
  EXPECT_EQ(read_file(dir_ / "root/f"), "f");
  EXPECT_FALSE(path_exists(dir_ / "f"));
}

TEST_F(DirMenus, OtherTakesATypedDestinationWithoutAQuestion) {
  start("mkdir typed", {});
  const struct {
    std::string text;
    Qt::Key key;
    bool copied;
  } rows[] = {{"", Qt::Key_Return, false},
              {dir_ / "typed", Qt::Key_Escape, false},
              {dir_ / "typed", Qt::Key_Return, true},
              {"./typed", Qt::Key_Return, true}};
  for (const auto& row : rows) {
    unlink((dir_ / "typed/f").c_str());
    ASSERT_EQ(chdir("/"), 0);  // a typed place is one below the directory shown, whatever happens meanwhile
    QTest::keyClick(open_cascade(0), Qt::Key_Return);
    bool dealt = false;
    QTimer::singleShot(50, [&] {
      QWidget* asked = QApplication::activeModalWidget();
      ASSERT_TRUE(asked);
      EXPECT_EQ(asked->windowTitle(), QStringLiteral("Copy to"));
      auto* field = find<QComboBox>(asked, "destination");
      QTest::keyClicks(field->lineEdit(), QString::fromUtf8(row.text.c_str()));
      QTest::keyClick(field->lineEdit(), row.key);
      dealt = true;
    });
    EXPECT_TRUE(wait_for([&] { return dealt && !QApplication::activeModalWidget(); }));
    EXPECT_TRUE(settled());
    EXPECT_EQ(path_exists(dir_ / "typed/f"), row.copied);
  }
}

// The menu that a directory button drops down.
TEST_F(DirMenus, LevelsArePreparedInTheBackgroundAndCutAtAHundred) {
  start("mkdir -p root/001/deep empty && seq -f 'root/%03g' 2 150 | xargs mkdir", {"root", "empty"});
  outer_.clear();
  std::string chosen;
  for (int i = 0; i < 2; ++i) ca_populate_menu(&outer_, [&](QWidget*, const char* path) { chosen = path; });
  ASSERT_EQ(outer_.actions().size(), 3);
  DirButton* root = entry(&outer_, 1);
  EXPECT_TRUE(wait_for([&] { return root->menu() && root->menu()->actions().size() == 101; }));
  const Texts names = labels(root->menu());
  EXPECT_EQ(names[0] + " " + names[100], "001 too many items");
  EXPECT_TRUE(wait_for([&] { return !entry(&outer_, 2)->menu(); }));  // it proved empty
  EXPECT_FALSE(entry(root->menu(), 0)->menu()) << "the level below is prepared when its button is armed";
  outer_.popup(QPoint(10, 10));
  EXPECT_EQ(labels(cascade_of(cascade_of(&outer_, root), entry(root->menu(), 0))), Texts{"deep"});
  // A plain one is chosen by a click, one that cascades by a double click.
  dtm_activate(root, false);
  EXPECT_TRUE(outer_.isVisible());
  dtm_activate(root, true);
  EXPECT_TRUE(wait_for([&] { return chosen == dir_ / "root"; }));
  EXPECT_FALSE(outer_.isVisible());
}

}  // namespace
