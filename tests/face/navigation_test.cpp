#include "views/ui/navigation.h"

#include <fcntl.h>

#include <QAbstractItemView>

#include "core/history.h"
#include "tests/face/window_test.h"
#include "views/ui/path_bar.h"

namespace {

class Navigation : public WindowTest {
 protected:
  static QComboBox* path_box() { return base_find<QComboBox>("tb_curpath"); }
  static QLineEdit* path_field() { return path_box()->lineEdit(); }
  static std::string path_text() { return path_field()->text().toStdString(); }
  void type_path(const std::string& text) {
    path_field()->setFocus();
    path_field()->selectAll();
    QTest::keyClicks(path_field(), QString::fromStdString(text));
  }
  void go(const std::string& text) {
    type_path(text);
    path_field()->setText(QString::fromStdString(text));  // whatever completion made of it
    QTest::keyClick(path_box(), Qt::Key_Return);          // what has the focus is the box, not the line in it
  }
};

TEST_F(Navigation, HistoriesHoldTenPathsAndForgetTheOldest) {
  const auto path = [this](int i) { return dir_ / ("d" + std::to_string(i)); };
  for (int i = 0; i < 13; ++i) make({"d" + std::to_string(i) + "/"});
  open(path(0));
  for (int i = 1; i < 13; ++i) EXPECT_EQ(fl_newpath(path(i).c_str()), 0);
  for (int i = 11; i >= 1; --i) {
    EXPECT_EQ(fl_get_back_count(), i - 1);
    fl_back();
    EXPECT_EQ(gDir.path, path(std::max(i, 2))) << "the two oldest are gone";
  }
  EXPECT_EQ(fl_get_forward_count(), 10);
  fl_forward();
  EXPECT_EQ(gDir.path, path(3));
  EXPECT_EQ(fl_newpath(path(0).c_str()), 0);
  EXPECT_EQ(fl_get_forward_count(), 0);
  const int depth = fl_get_back_count();
  for (int i = 0; i < 2; ++i)
    fl_forward();  // nothing to go to: the current path is pushed all the same, once
  EXPECT_EQ(fl_get_back_count(), depth + 1);
  EXPECT_EQ(gDir.path, path(0));
}

TEST_F(Navigation, GoesWhereThePathIsMeantAndSaysWhatItCannotShow) {
  show({"sub/", "sub/deep/", "file"});
  const std::string here = dir_.path(), sub = dir_ / "sub";
  const struct {
    std::string typed, path, message;
  } rows[] = {
      {dir_ / "none", here, "Directory '" + dir_ / "none" + "', not found"},
      {dir_ / "file/", here, "Path '" + dir_ / "file" + "' not found"},
      {dir_ / "file/x", here, "Directory '" + dir_ / "file/x" + "', not found"},
      {here + "//", here, ""},
      {"sub", sub, ""},
      {"./deep//", sub + "/deep", ""},
      {".", sub + "/deep", ""},
      {"../../sub", sub, ""},
      {"none", sub, "Directory 'none', not found"},
      {"..", here, ""},
  };
  for (const auto& row : rows) {
    const int depth = fl_get_back_count(), moved = gDir.path != row.path;
    if (!row.message.empty()) expect_message(row.message);
    go(row.typed);
    EXPECT_EQ(gDir.path, row.path) << row.typed;
    EXPECT_EQ(fl_get_back_count(), depth + moved) << row.typed;
    EXPECT_EQ(fl_refresh(), 0) << row.typed << ": it is still there when it is read again";
  }
}

TEST_F(Navigation, UpAndRefreshFindTheVeryName) {
  make({"!/", "1/", "[1]/", "*/", "b sub/", "c"});
  open(dir_ / "[1]");
  for (const char* name : {"[1]", "*", "b sub"}) {
    fl_newpath((dir_ / name).c_str());
    fl_up();
    EXPECT_EQ(gDir.path, dir_.path());
    EXPECT_EQ(selected(), name);
    EXPECT_EQ(gDir.current, index_of(name));
    fl_refresh();
    EXPECT_EQ(gDir.current, index_of(name));
  }
  fl_down();
  EXPECT_EQ(gDir.path, dir_ / "b sub");
  fl_back();
  EXPECT_EQ(selected(), "b sub") << "where one came from";
  fl_newpath("/usr");
  gDir.path = "/usr/";  // as a start path may be given
  fl_up();
  EXPECT_EQ(selected(), "usr");
  EXPECT_FALSE(fl_model()->has_parent_row());
  fl_up();
  EXPECT_EQ(gDir.path, "/");
}

TEST_F(Navigation, TypedPathsCompleteFromTheHistory) {
  show({"one/", "other/"});
  for (const char* name : {"/one", "//other/"}) go(dir_.path() + name);
  EXPECT_EQ(cl_get(gPathList, 1), dir_ / "other");
  EXPECT_EQ(path_box()->itemText(0).toStdString(), dir_ / "other");
  type_path(dir_ / "on");
  EXPECT_EQ(path_text(), dir_ / "one");
  EXPECT_EQ(path_field()->selectedText(), QStringLiteral("e"));
  QTest::keyClick(path_field(), Qt::Key_Backspace);  // a deletion is not completed again
  EXPECT_EQ(path_text(), dir_ / "on");
  gOptions &= ~OPT_PATH_COMPLETION;
  type_path(dir_ / "on");
  EXPECT_EQ(path_text(), dir_ / "on");
  gOptions |= OPT_PATH_COMPLETION;
}

TEST_F(Navigation, OnlyEnterOrAPickGoesSomewhere) {
  show({"one/", "two/", "gone/"});
  for (const char* name : {"/one", "/two", "/gone", ""}) go(dir_.path() + name);
  path_field()->setFocus();
  path_field()->setText(QString::fromStdString(dir_ / "one"));
  fl_view()->setFocus();  // a known path is typed and left
  EXPECT_EQ(gDir.path, dir_.path());
  path_field()->setFocus();
  QTest::keyClick(path_field(), Qt::Key_Down);  // opens the list
  EXPECT_TRUE(path_box()->view()->isVisible());
  path_box()->hidePopup();
  EXPECT_EQ(gDir.path, dir_.path());
  rmdir((dir_ / "gone").c_str());
  expect_message("Directory '" + dir_ / "gone" + "', not found");  // once, though the path is in the list
  go(dir_ / "gone");
  path_box()->showPopup();
  QTest::keyClick(path_box()->view(), Qt::Key_Home);
  const int row = path_box()->findText(QString::fromStdString(dir_ / "two"));
  for (int i = 0; i < row; ++i) QTest::keyClick(path_box()->view(), Qt::Key_Down);
  QTest::keyClick(path_box()->view(), Qt::Key_Return);
  EXPECT_EQ(gDir.path, dir_ / "two") << "picked";
  rmdir((dir_ / "two").c_str());
  fl_refresh();
  EXPECT_EQ(status(1), "Cannot access directory '" + dir_ / "two" + "'") << "not just an empty list";
}

TEST_F(Navigation, EscapeTwiceCompletesADirectory) {
  show({"library/", "local/", "x\xc3\xa4y/", "lonely"});
  const struct {
    std::string typed;
    Qt::Key between;  // any other key ends the pair
    std::string completed;
  } rows[] = {{dir_ / "l", {}, dir_ / "l"},
              {dir_ / "li", {}, dir_ / "library/"},
              {dir_ / "li", Qt::Key_Left, dir_ / "li"},
              {dir_ / "lon", {}, dir_ / "lon"},
              {"relative", {}, "relative"},
              {dir_ / "x\xc3\xa4", {}, dir_ / "x\xc3\xa4y/"},
              {"", {}, ""}};
  path_field()->setFocus();
  for (const auto& row : rows) {
    path_field()->setText(QString::fromStdString(row.typed));
    press(Qt::Key_Escape);
    EXPECT_EQ(path_text(), row.typed);
    if (row.between) press(row.between);
    press(Qt::Key_Escape);
    EXPECT_EQ(path_text(), row.completed);
    press(Qt::Key_Left);
  }
}

TEST_F(Navigation, FilterHidesFilesAndRemembersWhatChanged) {
  show({"sub/", "a.c", "b.h"});
  auto* field = base_find<QComboBox>("tb_filespec");
  const int count = gSpecList->count;
  const struct {
    std::string text;
    int shown, remembered;
  } rows[] = {{"*.c", 2, 1}, {"*.c", 2, 1}, {"[", 1, 2}, {"|||", 1, 3}, {"^", 1, 4}, {"", 3, 5}};
  for (const auto& row : rows) {
    field->setFocus();
    field->setEditText(QString::fromStdString(row.text));
    QTest::keyClick(field, Qt::Key_Return);
    EXPECT_EQ(gDir.count, row.shown) << row.text;
    EXPECT_EQ(gSpecList->count, count + row.remembered) << row.text;
  }
  EXPECT_EQ(gDir.filespec, "*");
}

TEST_F(Navigation, ARefreshLeavesAloneWhatIsBeingTyped) {
  show({"sub/"});
  type_path("/half a pa");
  signal_refresh();
  EXPECT_EQ(path_text(), "/half a pa");
  go(dir_ / "sub");
  EXPECT_EQ(path_text(), dir_ / "sub");
  make({"sub/new"});
  base_window_closed = 1;
  signal_refresh();
  EXPECT_EQ(gDir.count, 0) << "a closed window does not refresh";
}

TEST_F(Navigation, SurvivesWhateverHappensWhileADirectoryIsRead) {
  make({"big/", "other/"});
  const std::string big = dir_ / "big", other = dir_ / "other";
  for (int i = 0; i < 20000; ++i) close(creat((big + "/f" + std::to_string(i)).c_str(), 0644));
  open();
  const struct {
    const char* name;
    std::function<void()> act;
    std::string path;
  } rows[] = {
      {"refresh", [] { fl_refresh(); }, big},
      {"elsewhere", [&] { fl_newpath(other.c_str()); }, other},
      {"back", [] { fl_back(); }, dir_.path()},
      {"signal", [] { signal_refresh(); }, big},
      {"filter", [] { fl_setspec("*7"); }, big},
      {"escape", [] { key(Qt::Key_Escape); }, big},
      {"a click", [] { QTest::mouseClick(ground(), Qt::LeftButton, {}, QPoint(30, 30)); }, big},
      {"the up button", [] { QTest::mouseClick(base_find_widget("tb_up"), Qt::LeftButton); }, dir_.path()},
  };
  for (const auto& row : rows) {
    fl_newpath(dir_.path().c_str());
    fl_setspec("*");
    bool ran_inside = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
      if (fl_reading() && !std::exchange(ran_inside, true)) row.act();
    });
    watch.start(0);
    fl_newpath(big.c_str());
    EXPECT_TRUE(wait_for([&] { return gDir.path == row.path && !fl_reading(); })) << row.name;
    QApplication::processEvents();
    EXPECT_TRUE(ran_inside) << row.name;
    EXPECT_EQ(fl_model()->rows(), gDir.count + 1) << row.name;
    EXPECT_EQ(selected(), row.path == dir_.path() ? "big" : "") << row.name;
    if (std::string(row.name) == "escape") {
      EXPECT_LT(gDir.count, 20000) << "given up";
    }
    ground()->grab();
  }
}

}  // namespace
