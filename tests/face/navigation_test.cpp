#include "views/ui/navigation.h"

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
    press("'" + text + "'", path_field());
  }
  void go(const std::string& text) {
    type_path(text);
    path_field()->setText(QString::fromStdString(text));  // whatever completion made of it
    press("Return", path_box());                          // what has the focus is the box, not the line in it
  }
  // What is shown: the path below dir_ ("!" before one outside), the selected and the current entry.
  std::string shown() const {
    const bool inside = gDir.path.starts_with(dir_.path());
    return (inside ? gDir.path.substr(dir_.path().size()) : "!" + gDir.path) + "|" + selected() + "|" +
           current_name();
  }
};

TEST_F(Navigation, HistoriesHoldTenPathsAndForgetTheOldest) {
  dir_.shell("mkdir $(seq -f d%.0f 0 12)");
  const auto path = [this](int i) { return dir_ / ("d" + std::to_string(i)); };
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
  // The path below dir_ that is then shown, and the message.
  for (const auto& [typed, result] :
       steps_here("$/none = |Directory '$/none', not found; $/file/ = |Path '$/file' not found; "
                  "$/file/x = |Directory '$/file/x', not found; $// = |; sub = /sub|; ./deep// = /sub/deep|; "
                  ". = /sub/deep|; ../../sub = /sub|; none = /sub|Directory 'none', not found; .. = |")) {
    const size_t bar = result.find('|');
    const std::string path = dir_.path() + result.substr(0, bar), message = result.substr(bar + 1);
    const int depth = fl_get_back_count(), moved = gDir.path != path;
    if (!message.empty()) expect_message(message);
    go(typed);
    EXPECT_EQ(gDir.path, path) << typed;
    EXPECT_EQ(fl_get_back_count(), depth + moved) << typed;
    EXPECT_EQ(fl_refresh(), 0) << typed << ": it is still there when it is read again";
  }
}

TEST_F(Navigation, UpAndRefreshFindTheVeryName) {
  make({"!/", "1/", "[1]/", "*/", "b sub/", "c"});
  open(dir_ / "[1]");
  for (const std::string name : {"[1]", "*", "b sub"}) {
    fl_newpath((dir_ / name).c_str());
    fl_up();
    EXPECT_EQ(shown(), "|" + name + "|" + name);
    fl_refresh();
    EXPECT_EQ(shown(), "||" + name);
  }
  fl_down();
  EXPECT_EQ(gDir.path, dir_ / "b sub");
  fl_back();
  EXPECT_EQ(selected(), "b sub") << "where one came from";
  fl_newpath("/usr");
  gDir.path = "/usr/";  // as a start path may be given
  for (int times = 0; times < 2; ++times) {
    fl_up();
    EXPECT_EQ(shown(), "!/|usr|usr");
    EXPECT_FALSE(fl_model()->has_parent_row());
  }
}

TEST_F(Navigation, TypedPathsCompleteFromTheHistory) {
  show({"one/", "other/"});
  for (const char* name : {"/one", "//other/"}) go(dir_.path() + name);
  EXPECT_EQ(cl_get(gPathList, 1), dir_ / "other");
  EXPECT_EQ(path_box()->itemText(0).toStdString(), dir_ / "other");
  type_path(dir_ / "on");
  EXPECT_EQ(path_text(), dir_ / "one");
  EXPECT_EQ(path_field()->selectedText(), QStringLiteral("e"));
  press("Backspace", path_field());  // a deletion is not completed again
  EXPECT_EQ(path_text(), dir_ / "on");
  gOptions &= ~OPT_PATH_COMPLETION;
  type_path(dir_ / "on");
  EXPECT_EQ(path_text(), dir_ / "on");
}

TEST_F(Navigation, OnlyEnterOrAPickGoesSomewhere) {
  show({"one/", "two/", "gone/"});
  for (const char* name : {"/one", "/two", "/gone", ""}) go(dir_.path() + name);
  path_field()->setFocus();
  path_field()->setText(QString::fromStdString(dir_ / "one"));
  fl_view()->setFocus();  // a known path is typed and left
  EXPECT_EQ(gDir.path, dir_.path());
  path_field()->setFocus();
  press("Down", path_field());  // opens the list
  EXPECT_TRUE(path_box()->view()->isVisible());
  path_box()->hidePopup();
  EXPECT_EQ(gDir.path, dir_.path());
  dir_.shell("rmdir gone");
  expect_message("Directory '" + dir_ / "gone" + "', not found");  // once, though the path is in the list
  go(dir_ / "gone");
  path_box()->showPopup();
  press("Home", path_box()->view());
  const int row = path_box()->findText(QString::fromStdString(dir_ / "two"));
  for (int i = 0; i < row; ++i) press("Down", path_box()->view());
  press("Return", path_box()->view());
  EXPECT_EQ(gDir.path, dir_ / "two") << "picked";
  dir_.shell("rmdir two");
  fl_refresh();
  EXPECT_EQ(status(), "Cannot access directory '" + dir_ / "two" + "'") << "not just an empty list";
}

TEST_F(Navigation, EscapeTwiceCompletesADirectory) {
  show({"library/", "local/", "x\xc3\xa4y/", "lonely"});
  path_field()->setFocus();
  for (const auto& [typed, completed] : steps_here("$/l = $/l; $/li = $/library/; $/lon = $/lon; relative = "
                                                   "relative; $/x\xc3\xa4 = $/x\xc3\xa4y/;  = ")) {
    for (const char* between : {"Left", ""}) {  // another key ends the pair
      path_field()->setText(QString::fromStdString(typed));
      press("Esc " + std::string(between));
      EXPECT_EQ(path_text(), typed);
      press("Esc");
      EXPECT_EQ(path_text(), *between ? typed : completed);
      press("Left");
    }
  }
}

TEST_F(Navigation, FilterHidesFilesAndRemembersWhatChanged) {
  show({"sub/", "a.c", "b.h"});
  const int count = gSpecList->count;
  // How many entries are then shown, and filters remembered.
  for (const auto& [filter, numbers] :
       steps("*.c = 2, 1; *.c = 2, 1; [ = 1, 2; ||| = 1, 3; ^ = 1, 4;  = 3, 5")) {
    QLineEdit* field = line(base_window(), "tb_filespec");
    field->setFocus();
    field->setText(QString::fromStdString(filter));
    press("Return", field);
    EXPECT_EQ(std::to_string(gDir.count) + ", " + std::to_string(gSpecList->count - count), numbers)
        << filter;
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
  dir_.shell("mkdir big other && cd big && seq -f f%.0f 0 19999 | xargs touch");
  const std::string big = dir_ / "big", other = dir_ / "other";
  open();
  const std::tuple<const char*, std::function<void()>, const char*> rows[] = {
      {"refresh", fl_refresh, "/big||"},
      {"elsewhere", [&] { fl_newpath(other.c_str()); }, "/other||"},
      {"back", [] { key("Alt+Left"); }, "|big|big"},
      {"signal", signal_refresh, "/big||"},
      {"filter", [] { fl_setspec("*7"); }, "/big||"},
      {"escape", [] { key("Esc"); }, "/big||"},
      {"a click", [] { QTest::mouseClick(ground(), Qt::LeftButton, {}, QPoint(30, 30)); }, "/big||"},
      {"the up button", [] { QTest::mouseClick(base_find_widget("tb_up"), Qt::LeftButton); }, "|big|big"}};
  for (const auto& row : rows) {
    SCOPED_TRACE(std::get<0>(row));
    fl_newpath(dir_.path().c_str());
    fl_setspec("*");
    bool ran_inside = false;
    QTimer watch;
    QObject::connect(&watch, &QTimer::timeout, [&] {
      if (fl_reading() && !std::exchange(ran_inside, true)) std::get<1>(row)();
    });
    watch.start(0);
    fl_newpath(big.c_str());
    EXPECT_TRUE(wait_for([&] { return shown() == std::get<2>(row) && !fl_reading(); })) << shown();
    QApplication::processEvents();
    EXPECT_TRUE(ran_inside);
    EXPECT_EQ(fl_model()->rows(), gDir.count + 1);
    EXPECT_TRUE(gDir.count < 20000 || std::get<0>(row) != std::string("escape")) << "given up";
    ground()->grab();
  }
}

}  // namespace
