#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QAbstractItemView>
#include <QComboBox>
#include <QLineEdit>
#include <QToolButton>

#include "tests/face/main_window.h"
#include "views/hotlist.h"
#include "views/ui/path_bar.h"

namespace {

class Navigation : public MainWindowTest {
 protected:
  std::string make_dir(const std::string& name) {
    mkdir((dir / name).c_str(), 0755);
    return dir / name;
  }
  QLineEdit* path_field() { return base_find<QComboBox>("tb_curpath")->lineEdit(); }
  QLineEdit* filter_field() { return base_find<QComboBox>("tb_filespec")->lineEdit(); }
  void type(QLineEdit* field, const std::string& text) {
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, QString::fromStdString(text));
  }
  void go(const std::string& text) {
    type(path_field(), text);
    path_field()->setText(QString::fromStdString(text));  // whatever completion made of it
    QTest::keyClick(path_field(), Qt::Key_Return);
  }
  bool enabled(const char* name) { return base_find<QToolButton>(name)->isEnabled(); }
};

TEST_F(Navigation, HistoriesHoldTenPathsAndForgetTheOldest) {
  std::string paths[13];
  for (int i = 0; i < 13; ++i) paths[i] = make_dir("d" + std::to_string(i));
  open(paths[0]);
  const int before = fl_get_back_count();
  for (int i = 1; i < 13; ++i) EXPECT_EQ(fl_newpath(paths[i].c_str()), 0);
  EXPECT_EQ(fl_get_back_count(), 10);
  for (int i = 11; i >= 2; --i) {
    fl_back();
    EXPECT_EQ(gDir.path, paths[i]);
  }
  fl_back();
  EXPECT_EQ(gDir.path, paths[2]) << "the two oldest are gone";
  EXPECT_EQ(fl_get_forward_count(), 10);
  fl_forward();
  EXPECT_EQ(gDir.path, paths[3]);
  EXPECT_EQ(fl_newpath(paths[0].c_str()), 0);
  EXPECT_EQ(fl_get_forward_count(), 0);
  const int depth = fl_get_back_count();
  fl_forward();  // nothing to go to: the current path is pushed all the same, once
  EXPECT_EQ(fl_get_back_count(), depth + 1);
  fl_forward();
  EXPECT_EQ(fl_get_back_count(), depth + 1);
  EXPECT_EQ(gDir.path, paths[0]);
  EXPECT_LE(before, 10);
}

TEST_F(Navigation, RefusesWhatItCannotShowAndSaysWhy) {
  open(dir.path());
  write_file(dir / "file", "");
  const std::string closed = make_dir("closed");
  const struct {
    std::string typed, message;
  } rows[] = {
      {dir / "none", "Directory '" + dir / "none" + "', not found"},
      {dir / "file", "Path '" + dir / "file" + "' not found"},
      {dir / "file/", "Path '" + dir / "file" + "' not found"},
      {dir / "file/x", "Directory '" + dir / "file/x" + "', not found"},
      {dir.path(), ""},
      {dir.path() + "//", ""},
  };
  const int depth = fl_get_back_count();
  for (const auto& row : rows) {
    EXPECT_EQ(message_of([&] { go(row.typed); }), row.message) << row.typed;
    EXPECT_EQ(gDir.path, dir.path());
    EXPECT_EQ(fl_get_back_count(), depth);
  }
  if (geteuid() != 0) {
    chmod(closed.c_str(), 0);
    EXPECT_EQ(message_of([&] { go(closed); }), "Cannot access directory '" + closed + "'");
  }
}

TEST_F(Navigation, ARelativePathIsMeantFromTheDirectoryShown) {
  const std::string sub = make_dir("sub");
  make_dir("sub/deep");
  open(dir.path());
  const struct {
    const char* typed;
    std::string path, message;
  } rows[] = {
      {"sub", sub, ""},
      {"./deep//", sub + "/deep", ""},
      {".", sub + "/deep", ""},
      {"../../sub", sub, ""},
      {"none", sub, "Directory 'none', not found"},
      {"..", dir.path(), ""},
  };
  for (const auto& row : rows) {
    EXPECT_EQ(message_of([&] { go(row.typed); }), row.message) << row.typed;
    EXPECT_EQ(gDir.path, row.path) << row.typed;
    EXPECT_EQ(fl_refresh(), 0) << row.typed << ": it is still there when it is read again";
  }
}

TEST_F(Navigation, UpMakesTheLeftDirectoryCurrent) {
  const std::string sub = make_dir("b sub");
  make_dir("a");
  write_file(dir / "c", "");
  open(sub);
  fl_up();
  EXPECT_EQ(gDir.path, dir.path());
  EXPECT_EQ(selected_names(), "b sub");
  EXPECT_EQ(gDir.current, index_of("b sub"));
  fl_down();
  EXPECT_EQ(gDir.path, sub);
  fl_newpath("/usr");
  gDir.path = "/usr/";  // as a start path may be given
  fl_up();
  EXPECT_EQ(gDir.path, "/");
  EXPECT_EQ(selected_names(), "usr");
  EXPECT_FALSE(fl_model()->has_parent_row());
  fl_up();
  EXPECT_EQ(gDir.path, "/");
}

TEST_F(Navigation, TypedPathsCompleteFromTheHistory) {
  const std::string one = make_dir("one"), other = make_dir("other");
  open(dir.path());
  go(one);
  EXPECT_EQ(gDir.path, one);
  EXPECT_STREQ(cl_get(gPathList, 1), one.c_str());
  EXPECT_EQ(base_find<QComboBox>("tb_curpath")->itemText(0).toStdString(), one);
  go(dir.path() + "//other/");
  EXPECT_STREQ(cl_get(gPathList, 1), other.c_str());
  type(path_field(), dir / "on");
  EXPECT_EQ(path_field()->text().toStdString(), one);
  EXPECT_EQ(path_field()->selectedText(), QStringLiteral("e"));
  QTest::keyClick(path_field(), Qt::Key_Backspace);  // a deletion is not completed again
  EXPECT_EQ(path_field()->text().toStdString(), dir / "on");
  gOptions &= ~OPT_PATH_COMPLETION;
  type(path_field(), dir / "on");
  EXPECT_EQ(path_field()->text().toStdString(), dir / "on");
}

TEST_F(Navigation, OnlyEnterOrAPickGoesSomewhere) {
  const std::string one = make_dir("one"), two = make_dir("two"), gone = make_dir("gone");
  open(dir.path());
  for (const std::string& path : {one, two, gone, dir.path()}) go(path);
  ASSERT_EQ(gDir.path, dir.path());
  auto* combo = base_find<QComboBox>("tb_curpath");
  const struct {
    const char* what;
    std::function<void()> act;
  } rows[] = {
      {"a known path is typed and left",
       [&] {
         path_field()->setFocus();
         path_field()->setText(QString::fromStdString(one));
         list()->setFocus();
       }},
      {"the wheel turns over the field",
       [&] {
         const QPointF at = combo->rect().center();
         QWheelEvent turn(at, combo->mapToGlobal(at), {}, QPoint(0, -120), Qt::NoButton, {},
                          Qt::NoScrollPhase, false);
         QApplication::sendEvent(combo, &turn);
       }},
      {"an arrow key opens the list",
       [&] {
         path_field()->setFocus();
         QTest::keyClick(path_field(), Qt::Key_Down);
         EXPECT_TRUE(combo->view()->isVisible());
         combo->hidePopup();
       }},
  };
  for (const auto& row : rows) {
    row.act();
    EXPECT_EQ(gDir.path, dir.path()) << row.what;
  }
  rmdir(gone.c_str());
  int messages = 0;
  path_field()->setText(QString::fromStdString(gone));
  path_field()->setFocus();
  while (!message_of([&] {
            if (messages == 0) QTest::keyClick(path_field(), Qt::Key_Return);
            QTest::qWait(50);
          }).empty())
    ++messages;
  EXPECT_EQ(messages, 1) << "said once, though the path is in the list";
  combo->showPopup();
  QTest::keyClick(combo->view(), Qt::Key_Home);
  const int row = combo->findText(QString::fromStdString(two));
  for (int i = 0; i < row; ++i) QTest::keyClick(combo->view(), Qt::Key_Down);
  QTest::keyClick(combo->view(), Qt::Key_Return);
  EXPECT_EQ(gDir.path, two) << "picked";
}

TEST_F(Navigation, OnlyWhatWasInsertedIsCompleted) {
  const std::string sub = make_dir("subdirectory");
  open(dir.path());
  go(sub);
  const QString shown = path_field()->text();
  type(path_field(), "/x");  // the field was edited before, and shorter
  tb_curpath_set_text(sub.c_str());
  path_field()->setFocus();
  path_field()->end(false);
  QTest::keyClick(path_field(), Qt::Key_Backspace);
  EXPECT_EQ(path_field()->text(), shown.chopped(1)) << "what was deleted stays away";
  EXPECT_FALSE(path_field()->hasSelectedText());
  path_field()->selectAll();
  QTest::keyClick(path_field(), Qt::Key_Slash);  // an insertion, though the text is shorter than before
  EXPECT_EQ(path_field()->text(), shown);
}

TEST_F(Navigation, UpAndRefreshFindTheVeryName) {
  for (const char* name : {"!", "1", "[1]", "*"}) make_dir(name);
  open(dir / "[1]");
  fl_up();
  EXPECT_EQ(selected_names(), "[1]");
  fl_newpath((dir / "*").c_str());
  fl_up();
  EXPECT_EQ(selected_names(), "*");
  fl_unselect_all();
  fl_select_index(index_of("[1]"));
  fl_refresh();
  EXPECT_EQ(gDir.current, index_of("[1]"));
}

TEST_F(Navigation, EscapeTwiceCompletesADirectory) {
  make_dir("library");
  make_dir("local");
  make_dir("x\xc3\xa4y");
  write_file(dir / "lonely", "");
  open(dir.path());
  const struct {
    std::string typed, completed;
  } rows[] = {
      {dir / "l", dir / "l"},   {dir / "li", dir / "library/"},           {dir / "lon", dir / "lon"},
      {"relative", "relative"}, {dir / "x\xc3\xa4", dir / "x\xc3\xa4y/"}, {"", ""},
  };
  // A key goes to what has the focus, and that is the box, not the line in it.
  const auto press = [&](Qt::Key key) { QTest::keyClick(path_field()->window()->focusWidget(), key); };
  for (const auto& row : rows) {
    path_field()->setText(QString::fromStdString(row.typed));
    path_field()->setFocus();
    press(Qt::Key_Escape);
    EXPECT_EQ(path_field()->text().toStdString(), row.typed);
    press(Qt::Key_Escape);
    EXPECT_EQ(path_field()->text().toStdString(), row.completed);
  }
  path_field()->setText(QString::fromStdString(dir / "li"));
  press(Qt::Key_Escape);
  press(Qt::Key_Left);  // any other key ends the pair
  press(Qt::Key_Escape);
  EXPECT_EQ(path_field()->text().toStdString(), dir / "li");
}

TEST_F(Navigation, FilterHidesFilesAndRemembersWhatChanged) {
  make_dir("sub");
  write_file(dir / "a.c", "");
  write_file(dir / "b.h", "");
  open(dir.path());
  const int count = gSpecList->count;
  auto set = [&](const char* text) {
    filter_field()->setText(QString::fromLatin1(text));
    QTest::keyClick(filter_field(), Qt::Key_Return);
  };
  set("*.c");
  EXPECT_EQ(gDir.count, 2);
  EXPECT_EQ(gSpecList->count, count + 1);
  set("*.c");
  EXPECT_EQ(gSpecList->count, count + 1);
  for (const char* odd : {"[", "|||", "^"}) {
    set(odd);
    EXPECT_EQ(gDir.dir_count, 1) << odd;
  }
  set(std::string(10000, '*').c_str());
  set("");
  EXPECT_EQ(gDir.filespec, "*");
  EXPECT_EQ(gDir.count, 3);
}

TEST_F(Navigation, ButtonsFollowThePath) {
  const std::string home = make_dir("home");
  const char* old_home = getenv("HOME");
  const std::string saved = old_home ? old_home : "";
  setenv("HOME", home.c_str(), 1);
  open("/");
  EXPECT_FALSE(enabled("tb_up"));
  EXPECT_TRUE(enabled("tb_home"));
  EXPECT_FALSE(enabled("tb_add")) << "/ is in the hotlist";
  gm_home();
  EXPECT_EQ(gDir.path, home);
  EXPECT_TRUE(enabled("tb_up"));
  EXPECT_FALSE(enabled("tb_home"));
  EXPECT_TRUE(enabled("tb_add"));
  EXPECT_TRUE(enabled("tb_back"));
  unsetenv("HOME");
  fl_newpath("/");
  EXPECT_FALSE(enabled("tb_home"));
  if (old_home) setenv("HOME", saved.c_str(), 1);
}

TEST_F(Navigation, ARefreshLeavesAloneWhatIsBeingTyped) {
  const std::string sub = make_dir("sub");
  open(dir.path());
  ASSERT_TRUE(QTest::qWaitForWindowActive(base_window()));
  path_field()->setFocus();
  path_field()->selectAll();
  QTest::keyClicks(path_field(), QStringLiteral("/half a pa"));
  signal_refresh();
  EXPECT_EQ(path_field()->text(), QStringLiteral("/half a pa"));
  go(sub);
  EXPECT_EQ(path_field()->text().toStdString(), sub);
  write_file(dir / "sub/new", "");
  base_window_closed = 1;
  signal_refresh();
  EXPECT_EQ(gDir.count, 0) << "a closed window does not refresh";
}

TEST_F(Navigation, SurvivesWhateverHappensWhileADirectoryIsRead) {
  const std::string big = make_dir("big"), other = make_dir("other");
  for (int i = 0; i < 20000; ++i) close(creat((big + "/f" + std::to_string(i)).c_str(), 0644));
  open(dir.path());
  const struct {
    const char* name;
    std::function<void()> act;
    std::string path;
  } rows[] = {
      {"refresh", [] { fl_refresh(); }, big},
      {"elsewhere", [&] { fl_newpath(other.c_str()); }, other},
      {"back", [] { fl_back(); }, dir.path()},
      {"signal", [] { signal_refresh(); }, big},
      {"filter", [] { fl_setspec("*7"); }, big},
      {"escape", [&] { QTest::keyClick(list(), Qt::Key_Escape); }, big},
      {"a click", [&] { QTest::mouseClick(ground(), Qt::LeftButton, {}, QPoint(30, 30)); }, big},
      {"the up button", [&] { QTest::mouseClick(base_find_widget("tb_up"), Qt::LeftButton); }, dir.path()},
  };
  for (const auto& row : rows) {
    fl_newpath(dir.path().c_str());
    fl_setspec("*");
    bool ran_inside = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
      if (!fl_reading() || std::exchange(ran_inside, true)) return;
      row.act();
    });
    watch.start(0);
    fl_newpath(big.c_str());
    QTRY_VERIFY2(gDir.path == row.path, row.name);
    QTRY_VERIFY2(!fl_reading(), row.name);
    QApplication::processEvents();
    EXPECT_TRUE(ran_inside) << row.name;
    EXPECT_EQ(fl_model()->rows(), gDir.count + 1) << row.name;
    EXPECT_EQ(gDir.sel_count, row.path == dir.path() && std::string(row.name) == "the up button" ? 1 : 0)
        << row.name;
    ground()->grab();
  }
}

}  // namespace
