#include "fileops/ui/dir_menus.h"

#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QMenu>

#include "fileops/ui/dir_menu.h"
#include "fileops/ui/slots.h"
#include "tests/face/main_window.h"
#include "tests/support/hung_mount.h"
#include "views/hotlist.h"

namespace {
using Labels = std::vector<std::string>;

bool wait_for(const std::function<bool()>& done) {
  return QTest::qWaitFor(done, 20000);
}

class DirMenusTest : public MainWindowTest {
 protected:
  // One file "f" beside the directories that the test made, selected, and the roots in the hotlist.
  void start(const Labels& roots) {
    write_file(dir / "f", "content");
    QCursor::setPos(0, 0);
    open(dir.path());
    gTree.paths.clear();
    for (const std::string& root : roots) tree_add(&gTree, (dir / root).c_str());
    fl_select_index(index_of("f"));
    mgen_work_insert(&outer);
  }
  void TearDown() override {
    outer.close();
    wait_for([] { return slot_running() == 0; });
    gTree.paths.clear();
    MainWindowTest::TearDown();
  }
  // Opens Copy To (0) or Move To (1) by keys.
  QMenu* open_cascade(int which) {
    outer.popup(QPoint(20, 20));
    for (int i = 0; i <= which; ++i) QTest::keyClick(&outer, Qt::Key_Down);
    QTest::keyClick(&outer, Qt::Key_Right);
    QMenu* cascade = outer.actions()[which]->menu();
    EXPECT_TRUE(cascade->isVisible());
    return cascade;
  }
  static Labels labels(const QMenu* menu) {
    Labels all;
    for (const QAction* action : menu->actions()) all.push_back(action->text().toStdString());
    return all;
  }
  static DirButton* entry(QMenu* menu, const char* label) {
    for (QAction* action : menu->actions())
      if (action->text() == QString::fromUtf8(label)) return dynamic_cast<DirButton*>(action);
    return nullptr;
  }
  // Lets the pointer rest on an entry until its submenu is filled.
  static QMenu* cascade_of(QMenu* menu, DirButton* item) {
    menu->setActiveAction(item);
    EXPECT_TRUE(wait_for([&] { return item->menu() && item->menu()->isVisible(); }));
    EXPECT_TRUE(
        wait_for([&] { return !item->menu() || dynamic_cast<DirButton*>(item->menu()->actions()[0]); }));
    return item->menu();
  }
  // Does something, waits for the modal window that it brings up, and lets deal deal with it.
  template <class Act, class Deal>
  static void dealing(Act act, Deal deal) {
    bool dealt = false;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
      QWidget* window = QApplication::activeModalWidget();
      if (!window || dealt) return;
      dealt = true;
      deal(window);
    });
    timer.start(5);
    act();
    EXPECT_TRUE(wait_for([&] { return dealt && !QApplication::activeModalWidget(); }));
  }
  // The same for a question, answered by a button. Its title and text.
  template <class Act>
  static std::string question(Act act, const char* button) {
    std::string text;
    dealing(act, [&](QWidget* window) {
      text = window->windowTitle().toStdString() + ": ";
      for (QLabel* label : window->findChildren<QLabel*>()) text += label->text().toStdString();
      for (QPushButton* one : window->findChildren<QPushButton*>())
        if (one->text() == QLatin1String(button)) return one->click();
      ADD_FAILURE() << "no button " << button;
      window->close();
    });
    // Alerts make paths breakable with zero-width spaces.
    for (size_t at; (at = text.find("\xe2\x80\x8b")) != std::string::npos;) text.erase(at, 3);
    while (!text.empty() && text.back() == '\n') text.pop_back();
    return text;
  }

  QMenu outer;
};
}  // namespace

TEST_F(DirMenusTest, WithNothingSelectedNothingIsAdded) {
  open(dir.path());
  mgen_work_insert(&outer);
  EXPECT_TRUE(outer.actions().isEmpty());
}

TEST_F(DirMenusTest, CascadesListTheRootsWhenArmedAndTheirSubdirectoriesWhenShown) {
  run_shell("cd " + dir.path() +
            " && mkdir -p 'r&1/a/deep' r\\&1/10 r\\&1/2 r\\&1/.dot none && touch none/file");
  start({"r&1", "none", "missing"});
  EXPECT_EQ(labels(&outer), (Labels{"Copy To", "Move To"}));
  EXPECT_EQ(labels(outer.actions()[0]->menu()), Labels{"Other..."});
  mgen_work_insert(&outer);  // again, for the next opening
  EXPECT_EQ(outer.actions().size(), 2);
  QMenu* copy = open_cascade(0);
  EXPECT_EQ(labels(copy), (Labels{"Other...", "", dir / "r&&1", dir / "none", dir / "missing"}));
  auto* root = dynamic_cast<DirButton*>(copy->actions()[2]);
  auto* none = dynamic_cast<DirButton*>(copy->actions()[3]);
  auto* missing = dynamic_cast<DirButton*>(copy->actions()[4]);
  EXPECT_TRUE(root->grey());
  EXPECT_TRUE(wait_for([&] { return !root->grey() && !none->grey() && !missing->grey(); }));
  EXPECT_TRUE(root->cascades() && !none->cascades() && !missing->cascades());
  QMenu* below = cascade_of(copy, root);
  EXPECT_EQ(labels(below), (Labels{"2", "10", "a"}));
  EXPECT_TRUE(wait_for([&] { return !entry(below, "a")->grey(); }));
  EXPECT_TRUE(entry(below, "a")->cascades() && !entry(below, "10")->cascades());
  EXPECT_EQ(labels(cascade_of(below, entry(below, "a"))), Labels{"deep"});
  // What is there after the menus were closed is read anew.
  while (QWidget* popup = QApplication::activePopupWidget()) popup->close();
  run_shell("mkdir " + dir / "'r&1/new'");
  QCoreApplication::processEvents();
  copy = open_cascade(0);
  EXPECT_EQ(labels(cascade_of(copy, dynamic_cast<DirButton*>(copy->actions()[2]))),
            (Labels{"2", "10", "a", "new"}));
}

TEST_F(DirMenusTest, AnEntryThatProvesEmptyBecomesAPlainItem) {
  run_shell("mkdir -p " + dir / "root/only/sub");
  start({"root"});
  QMenu* copy = open_cascade(0);
  QMenu* below = cascade_of(copy, dynamic_cast<DirButton*>(copy->actions()[2]));
  DirButton* only = entry(below, "only");
  EXPECT_TRUE(wait_for([&] { return !only->grey(); }));
  run_shell("rmdir " + dir / "root/only/sub");
  below->setActiveAction(only);
  EXPECT_TRUE(wait_for([&] { return !only->cascades(); }));
  EXPECT_FALSE(only->menu());
  EXPECT_TRUE(below->isVisible());
}

TEST_F(DirMenusTest, ChoosingAPlainEntryAsksAndThenCopies) {
  run_shell("mkdir -p " + dir / "root/into");
  start({"root"});
  for (const auto& [button, copied] : {std::pair{"&No", false}, std::pair{"&Yes", true}}) {
    QMenu* copy = open_cascade(0);
    QMenu* below = cascade_of(copy, dynamic_cast<DirButton*>(copy->actions()[2]));
    DirButton* into = entry(below, "into");
    EXPECT_TRUE(wait_for([&] { return !into->grey(); }));
    QTest::mouseMove(below, below->actionGeometry(into).center());
    const auto click = [&] {
      QTest::mouseClick(below, Qt::LeftButton, {}, below->actionGeometry(into).center());
    };
    EXPECT_EQ(question(click, button), "copy: Do you want to copy f to\n'" + dir / "root/into" + "'");
    EXPECT_FALSE(QApplication::activePopupWidget());
    QTest::qWait(50);
    if (copied) {
      EXPECT_TRUE(wait_for([&] { return read_file(dir / "root/into/f") == "content"; }));
    }
    EXPECT_EQ(path_exists(dir / "root/into/f"), copied);
  }
  EXPECT_TRUE(path_exists(dir / "f"));
}

TEST_F(DirMenusTest, ADoubleClickChoosesAnEntryThatCascades) {
  run_shell("mkdir -p " + dir / "root/sub");
  start({"root"});
  QMenu* move = open_cascade(1);
  auto* root = dynamic_cast<DirButton*>(move->actions()[2]);
  QMenu* below = cascade_of(move, root);
  EXPECT_EQ(labels(below), Labels{"sub"});
  // The submenu is up and so gets the click that falls on the menu behind it.
  const QPoint at = move->mapToGlobal(move->actionGeometry(root).center());
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
  EXPECT_EQ(question([&] { press_at(200100); }, "&No"),
            "move: Do you want to move f to\n'" + dir / "root" + "'");
  move = open_cascade(1);
  root = dynamic_cast<DirButton*>(move->actions()[2]);
  below = cascade_of(move, root);
  const auto click_twice = [&] { QTest::mouseDClick(below, Qt::LeftButton, {}, below->mapFromGlobal(at)); };
  EXPECT_EQ(question(click_twice, "&Yes"), "move: Do you want to move f to\n'" + dir / "root" + "'");
  EXPECT_TRUE(wait_for([&] { return read_file(dir / "root/f") == "content" && !path_exists(dir / "f"); }));
}

TEST_F(DirMenusTest, OtherTakesATypedDestinationWithoutAQuestion) {
  run_shell("mkdir " + dir / "typed");
  start({});
  const struct {
    std::string text;
    Qt::Key key;
    bool copied;
  } rows[] = {{"", Qt::Key_Return, false},
              {dir / "typed", Qt::Key_Escape, false},
              {dir / "typed", Qt::Key_Return, true},
              {"./typed", Qt::Key_Return, true}};
  for (const auto& row : rows) {
    unlink((dir / "typed/f").c_str());
    ASSERT_EQ(chdir("/"), 0);  // a typed place is one below the directory shown, whatever happens meanwhile
    QMenu* copy = open_cascade(0);
    EXPECT_EQ(labels(copy), Labels{"Other..."});
    dealing([&] { QTest::keyClick(copy, Qt::Key_Return); },
            [&](QWidget* dialog) {
              EXPECT_EQ(dialog->windowTitle(), QStringLiteral("Copy to"));
              auto* field = dialog->findChild<QComboBox*>(QStringLiteral("destination"));
              EXPECT_GE(field->width(), 400);
              QTest::keyClicks(field->lineEdit(), QString::fromUtf8(row.text.c_str()));
              QTest::keyClick(field->lineEdit(), row.key);
            });
    EXPECT_TRUE(wait_for([&] { return path_exists(dir / "typed/f") == row.copied; }));
  }
}

TEST_F(DirMenusTest, ThousandsOfEntriesOpenScrollAndCanBeLeftAtAnyTime) {
  run_shell("mkdir " + dir / "big" + " && cd " + dir / "big" +
            " && seq 1 2500 | xargs mkdir && mkdir 2499/sub");
  start({"big"});
  for (int round = 0; round < 9; ++round) {  // left earlier or later in its scan
    QMenu* copy = open_cascade(round % 2);
    auto* root = dynamic_cast<DirButton*>(copy->actions()[2]);
    copy->setActiveAction(root);
    QTest::qWait(round * 6);
    while (QWidget* popup = QApplication::activePopupWidget()) popup->close();
    if (round % 3 == 0) mgen_work_insert(&outer);
  }
  QMenu* copy = open_cascade(0);
  QMenu* below = cascade_of(copy, dynamic_cast<DirButton*>(copy->actions()[2]));
  EXPECT_LE(below->height(), below->screen()->availableGeometry().height());
  EXPECT_TRUE(wait_for([&] { return below->actions().size() == 2500; }));
  EXPECT_EQ(below->actions().back()->text(), QStringLiteral("2500"));
  EXPECT_TRUE(wait_for([&] { return !entry(below, "2500")->grey(); }));
  EXPECT_TRUE(entry(below, "2499")->cascades());
  QTest::keyClick(below, Qt::Key_End);
  EXPECT_EQ(below->activeAction(), below->actions().back());
  EXPECT_TRUE(below->rect().contains(below->actionGeometry(below->activeAction()).center()));
}

TEST_F(DirMenusTest, AMenuOnADeadFileSystemCanBeClosed) {
  run_shell("cd " + dir.path() + " && mkdir -p m/dead m/live");  // the list does not show the dead one
  HungMount hung(dir / "m/dead");
  if (!hung.mounted()) GTEST_SKIP() << "needs to mount";
  start({"m/dead", "m/live"});
  QMenu* copy = open_cascade(0);
  auto* dead = dynamic_cast<DirButton*>(copy->actions()[2]);
  copy->setActiveAction(dead);
  EXPECT_TRUE(wait_for([&] { return dead->menu() && dead->menu()->isVisible(); }));
  EXPECT_TRUE(wait_for([&] { return !dynamic_cast<DirButton*>(copy->actions()[3])->grey(); }));
  EXPECT_TRUE(dead->grey());
  EXPECT_EQ(labels(dead->menu()), Labels{"..."});
  while (QWidget* popup = QApplication::activePopupWidget()) popup->close();
  QTest::qWait(20);
  EXPECT_EQ(outer.actions()[0]->menu()->actions().size(), 1);
}
