#include "fileops/ui/dir_menus.h"

#include "commands/ui/directory_menu.h"
#include "fileops/ui/dir_menu.h"
#include "tests/face/window_test.h"
#include "views/hotlist.h"

namespace {

class DirMenus : public WindowTest {
 protected:
  // What a shell command makes in dir_ beside a file "f", which is selected; the roots are in the hotlist.
  void start(const std::string& command, const Texts& roots) {
    dir_.shell(command);
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
    press(which == 0 ? "Down Right" : "Down Down Right", &outer_);
    QMenu* cascade = outer_.actions()[which]->menu();
    EXPECT_TRUE(cascade->isVisible());
    return cascade;
  }
  static DirButton* entry(QMenu* menu, int i) { return dynamic_cast<DirButton*>(menu->actions()[i]); }
  static DirButton* root(QMenu* cascade, int i = 0) { return entry(cascade, 2 + i); }
  // Whether an entry cascades, once that is known.
  static bool cascades(DirButton* item) {
    EXPECT_TRUE(wait_for([item] { return !item->grey(); }));
    return item->cascades();
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
  for (int i = 0; i < 3; ++i) EXPECT_EQ(cascades(root(copy, i)), i == 0);
  QMenu* below = cascade_of(copy, root(copy));
  EXPECT_EQ(labels(below), (Texts{"2", "10", "a"}));
  EXPECT_TRUE(cascades(entry(below, 2)) && !entry(below, 1)->cascades());
  EXPECT_EQ(labels(cascade_of(below, entry(below, 2))), Texts{"deep"});
  close_menus();
  dir_.shell("mkdir 'r&1/new'");
  copy = open_cascade(0);  // reads anew
  EXPECT_EQ(labels(cascade_of(copy, root(copy))), (Texts{"2", "10", "a", "new"}));
}

TEST_F(DirMenus, ChoosingAPlainEntryAsksAndThenCopies) {
  start("mkdir -p root/into", {"root"});
  for (const std::string answer : {"N", "Esc", "Y"}) {
    QMenu* copy = open_cascade(0);
    QMenu* below = cascade_of(copy, root(copy));
    EXPECT_FALSE(cascades(entry(below, 0)));
    const QPoint place = below->actionGeometry(entry(below, 0)).center();
    QTest::mouseMove(below, place);
    expect_message("Do you want to copy f to\n'" + dir_ / "root/into" + "'\n", answer.c_str());
    QTest::mouseClick(below, Qt::LeftButton, {}, place);
    EXPECT_FALSE(QApplication::activePopupWidget());
    EXPECT_EQ(held(), answer == "Y" ? "f:f root/ root/into/ root/into/f:f " : "f:f root/ root/into/ ");
  }
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
  expect_message("Do you want to move f to\n'" + dir_ / "root" + "'\n", "Y");
  press_at(200100);
  EXPECT_EQ(held(), "root/ root/f:f root/sub/ ");
}

TEST_F(DirMenus, OtherTakesATypedDestinationWithoutAQuestion) {
  start("mkdir typed", {});
  const std::pair<std::string, bool> rows[] = {{"Return", false},
                                               {"'" + dir_ / "typed" + "' Esc", false},
                                               {"'" + dir_ / "typed" + "' Return", true},
                                               {"'./typed' Return", true}};
  for (const auto& row : rows) {
    dir_.shell("rm -f typed/f");
    ASSERT_EQ(chdir("/"), 0);  // a typed place is one below the directory shown, whatever happens meanwhile
    press("Return", open_cascade(0));
    bool dealt = false;
    QTimer::singleShot(50, [&] {
      QWidget* field = line(windows("Copy to").value(0), "destination");
      press(row.first, field);
      dealt = true;
    });
    EXPECT_TRUE(wait_for([&] { return dealt && !QApplication::activeModalWidget(); }));
    EXPECT_EQ(held(), row.second ? "f:f typed/ typed/f:f " : "f:f typed/ ");
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
