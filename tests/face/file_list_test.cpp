#include <sys/stat.h>
#include <unistd.h>

#include <QHeaderView>
#include <QTextDocument>
#include <random>

#include "commands/ui/menus.h"
#include "tests/face/main_window.h"
#include "views/find.h"
#include "views/ui/file_list_hooks.h"

namespace {

class FileList : public MainWindowTest {
 protected:
  void make(std::initializer_list<const char*> names) {
    for (const std::string name : names) {
      if (name.back() == '/')
        mkdir((dir / name).c_str(), 0755);
      else
        write_file(dir / name, std::string(name.size(), 'x'));
    }
  }

  // What the counts claim must be what the flags say, and what the widget draws.
  void expect_consistent(const std::string& after) {
    int selected = 0, dirs = 0, marks = 0;
    for (int i = 0; i < gDir.count; ++i) {
      const DirEntry& entry = *gDir.entries[i];
      const bool on = entry.flags & ENTRY_SELECTED;
      selected += on;
      dirs += on && dir_entry_is_directory(entry);
      marks += bool(entry.flags & ENTRY_CURRENT);
      EXPECT_TRUE(!on || fl_row_selected(fl_model()->row_of(i))) << after;
    }
    EXPECT_EQ(gDir.sel_count, selected) << after;
    EXPECT_EQ(gDir.sel_dir_count, dirs) << after;
    EXPECT_LE(marks, 1) << after;
    const bool marked =
        gDir.current >= 0 && gDir.current < gDir.count && (gDir.entries[gDir.current]->flags & ENTRY_CURRENT);
    EXPECT_EQ(marks, marked) << after;
    const std::string text = std::to_string(selected) + " selected item";
    EXPECT_EQ(status(1).substr(0, text.size()), selected ? text : "") << after;
  }
};

TEST_F(FileList, ShowsEachKindOfEntryWithItsImageAndTexts) {
  make({"a dir/", "file", "cut file", "cut dir/", "run"});
  chmod((dir / "run").c_str(), 0755);
  const struct {
    const char *target, *name;
  } links[] = {{"a dir", "link to dir"},
               {"file", "link to file"},
               {"run", "link to run"},
               {"nowhere", "link to none"}};
  for (const auto& link : links) ASSERT_EQ(symlink(link.target, (dir / link.name).c_str()), 0);
  write_file(dir / "two\nlines", std::string(1234567, 'x'));
  open(dir.path());
  gFileListHooks.is_cut = [](const char*, const char* name) {
    return int(std::string(name).rfind("cut", 0) == 0);
  };
  const struct {
    const char *name, *image, *link;
  } rows[] = {
      {"a dir", "closed_folder", ""},
      {"file", "file", ""},
      {"run", "exec", ""},
      {"link to dir", "linked_folder", "a dir"},
      {"link to file", "linked_file", "file"},
      {"link to run", "linked_exec", "run"},
      {"link to none", "image_broken_link", "nowhere"},
      {"cut file", "image_file_cut", ""},
      {"cut dir", "image_dir_cut", ""},
  };
  for (const auto& row : rows) {
    const int i = index_of(row.name);
    ASSERT_GE(i, 0) << row.name;
    EXPECT_STREQ(fl_row_image(*gDir.entries[i]), row.image) << row.name;
    EXPECT_EQ(cell(fl_model()->row_of(i), 6), row.link) << row.name;
  }
  EXPECT_EQ(cell(0), "..");
  const int i = index_of("two\nlines");
  EXPECT_EQ(cell(fl_model()->row_of(i), 0), "two\u240alines");
  EXPECT_EQ(cell(fl_model()->row_of(i), 1), "1,234,567");
  const std::string text = fl_row_text(*gDir.entries[i]);
  EXPECT_EQ(std::count(text.begin(), text.end(), '\t'), 5) << text;
  gFileListHooks.is_cut = nullptr;
}

TEST_F(FileList, MouseAndKeysSelectWhatTheySay) {
  make({"a/", "b", "c", "d/", "e"});
  open(dir.path());
  const int a = 0, b = 1, c = 2, d = 3, e = 4;
  EXPECT_EQ(selected_names(), "");
  click(b);
  EXPECT_EQ(selected_names(), "b");
  EXPECT_EQ(status(1), "1 selected item, 1 bytes");
  click(d, Qt::ControlModifier);
  EXPECT_EQ(selected_names(), "b d");
  EXPECT_EQ(gDir.sel_dir_count, 1);
  click(b, Qt::ControlModifier);
  EXPECT_EQ(selected_names(), "d");
  click(a);
  click(c, Qt::ShiftModifier);
  EXPECT_EQ(selected_names(), "a b c");
  click(e, Qt::ControlModifier);
  EXPECT_EQ(selected_names(), "a b c e");
  click(b);  // on a selected row: the release chooses it alone
  EXPECT_EQ(selected_names(), "b");
  key(Qt::Key_Down);
  EXPECT_EQ(selected_names(), "c");
  EXPECT_EQ(gDir.current, c);
  key(Qt::Key_Down, Qt::ShiftModifier);
  key(Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(selected_names(), "c d e");
  key(Qt::Key_Up, Qt::ShiftModifier);
  EXPECT_EQ(selected_names(), "c d");
  key(Qt::Key_Home, Qt::ShiftModifier);
  EXPECT_EQ(selected_names(), "a b c");
  key(Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(selected_names(), "a b c d e");
  expect_consistent("select all");
  QTest::mouseClick(ground(), Qt::LeftButton, {}, QPoint(20, ground()->height() - 5));
  EXPECT_EQ(selected_names(), "");
  EXPECT_EQ(status(1), "");
}

TEST_F(FileList, ABandTakesTheRowsThatItCoversAndNoMore) {
  make({"a/", "b", "c", "d/", "e"});
  open(dir.path());
  const QPoint below(20, place_of(index_of("e")).y() + 40);
  const struct {
    Qt::KeyboardModifiers modifiers;
    std::vector<const char*> over;  // one after the other; "": below the rows again
    const char* selected;
  } rows[] = {
      {{}, {"d"}, "d e"},
      {{}, {"b", "d"}, "d e"},
      {{}, {"b", ""}, ""},
      {Qt::ControlModifier, {"d"}, "b d e"},
      {Qt::ControlModifier, {"a", "e"}, "b e"},
      {Qt::ShiftModifier, {"a", ""}, "b"},
  };
  for (const auto& row : rows) {
    click(index_of("b"));
    QTest::mousePress(ground(), Qt::LeftButton, row.modifiers, below);
    for (const std::string name : row.over) {
      const QPoint to = name.empty() ? below + QPoint(30, 0) : place_of(index_of(name));
      QMouseEvent move(QEvent::MouseMove, to, ground()->mapToGlobal(to), Qt::NoButton, Qt::LeftButton,
                       row.modifiers);
      QApplication::sendEvent(ground(), &move);
      expect_consistent(name);
    }
    QTest::mouseRelease(ground(), Qt::LeftButton, row.modifiers, below);
    EXPECT_EQ(selected_names(), row.selected) << row.over.front();
  }
}

TEST_F(FileList, ShiftStretchesFromWhereTheListStandsNow) {
  make({"sub/", "sub/a", "sub/b", "sub/c", "sub/d", "y", "z"});
  open(dir.path());
  click(index_of("z"));  // the fourth row
  fl_newpath((dir / "sub").c_str());
  key(Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(selected_names(), "a") << "from the row of the parent directory";
  fl_goto_index(index_of("c"));
  key(Qt::Key_Down, Qt::ShiftModifier);
  EXPECT_EQ(selected_names(), "c d");
  click(index_of("a"));
  fl_sort_cb(0);
  ASSERT_EQ(index_of("a"), 3);
  click(index_of("b"), Qt::ShiftModifier);
  EXPECT_EQ(selected_names(), "b a") << "it went with its entry";
}

TEST_F(FileList, CountsHoldAfterAnySequenceOfCommands) {
  for (int i = 0; i < 40; ++i) {
    const std::string name = "entry" + std::to_string(i);
    if (i % 3)
      write_file(dir / name, name);
    else
      mkdir((dir / name).c_str(), 0755);
  }
  open(dir.path());
  std::mt19937 random(7);
  const std::function<void()> commands[] = {
      [&] { fl_select_index(int(random() % 44) - 2); },
      [&] { fl_unselect_index(int(random() % 44) - 2); },
      [&] { fl_invert_index(int(random() % 44) - 2); },
      [&] { fl_invert_all(); },
      [&] { fl_goto_index(int(random() % 44) - 2); },
      [&] { fl_select_pattern("*1*", random() % 2); },
      [&] { fl_unselect_pattern("entry?", random() % 2); },
      [&] {
        key(random() % 2 ? Qt::Key_Down : Qt::Key_PageUp, random() % 2 ? Qt::ShiftModifier : Qt::NoModifier);
      },
      [&] { key(Qt::Key_Space, Qt::ControlModifier); },
      [&] { fl_sort_cb(int(random() % 7)); },
      [&] { click(int(random() % 8), random() % 2 ? Qt::ShiftModifier : Qt::ControlModifier); },
      [&] { fl_refresh(); },
      [&] { fl_select_all(); },
      [&] { fl_unselect_all(); },
  };
  for (int step = 0; step < 600 && !HasFailure(); ++step) {
    const size_t which = random() % std::size(commands);
    commands[which]();
    expect_consistent("step " + std::to_string(step) + ", command " + std::to_string(which));
  }
}

TEST_F(FileList, HeadersSortBothWaysAndCarryTheMarker) {
  make({"aaa", "b", "cc"});
  open(dir.path());
  const struct {
    int column;
    const char *first, *last;
    int order;
  } clicks[] = {
      {1, "aaa", "b", 1},
      {1, "b", "aaa", 0},
      {0, "cc", "aaa", 0},
      {0, "aaa", "cc", 1},
  };
  QHeaderView* header = list()->header();
  for (const auto& step : clicks) {
    const int x = header->sectionViewportPosition(step.column) + 10;
    QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, QPoint(x, header->height() / 2));
    EXPECT_EQ(std::string(gDir.entries[0]->name), step.first);
    EXPECT_EQ(cell(3), step.last);
    EXPECT_EQ(sSortOrder, step.order);
    for (int column = 0; column < FL_COLUMNS; ++column) {
      const QVariant image = fl_model()->headerData(column, Qt::Horizontal, Qt::DecorationRole);
      EXPECT_EQ(!image.isNull(), column == step.column) << column;
    }
  }
}

TEST_F(FileList, RefreshKeepsTheFirstSelectedEntryCurrent) {
  make({"b", "c", "d"});
  open(dir.path());
  fl_select_index(index_of("c"));
  fl_select_index(index_of("d"));
  make({"a"});
  fl_refresh();
  EXPECT_EQ(gDir.count, 4);
  EXPECT_EQ(gDir.current, index_of("c"));
  EXPECT_EQ(gDir.sel_count, 0);  // shown selected, and not so
  EXPECT_TRUE(fl_row_selected(fl_model()->row_of(gDir.current)));
  fl_refresh();  // told by another operation that ended
  EXPECT_EQ(gDir.current, index_of("c"));
  unlink((dir / "c").c_str());
  fl_select_index(index_of("c"));
  for (int times = 0; times < 2; ++times) {
    fl_refresh();
    EXPECT_EQ(gDir.current, -2);
    EXPECT_EQ(list()->currentIndex().row(), fl_model()->row_of(index_of("d")));  // where c was
  }
}

TEST_F(FileList, GoingToAnEntryMarksAllButTheFirst) {
  make({"a", "b", "c"});
  open(dir.path());
  fl_select_all();
  fl_goto_index(0);
  EXPECT_EQ(gDir.current, 0);
  EXPECT_FALSE(gDir.entries[0]->flags & ENTRY_CURRENT);
  EXPECT_EQ(gDir.sel_count, 0);
  fl_goto_index(99);
  EXPECT_EQ(gDir.current, 2);
  EXPECT_TRUE(gDir.entries[2]->flags & ENTRY_CURRENT);
  click(1, Qt::ControlModifier);  // adds to what is shown selected
  EXPECT_EQ(selected_names(), "b c");
  EXPECT_EQ(fl_goto("b", 0, FIND_EXACT), 1);
  EXPECT_EQ(fl_goto("..", 0, FIND_EXACT), -1);
  EXPECT_EQ(list()->currentIndex().row(), 0);
  EXPECT_EQ(fl_goto("nothing", 0, FIND_EXACT), -2);
  EXPECT_EQ(fl_open(gDir.current), -1);
}

TEST_F(FileList, OpensByDoubleClickAndEnter) {
  make({"sub/", "sub/inner/", "other"});
  open(dir.path());
  QTest::mouseDClick(ground(), Qt::LeftButton, {}, place_of(index_of("sub")));
  EXPECT_EQ(gDir.path, dir / "sub");
  QTest::mouseDClick(ground(), Qt::LeftButton, {}, place_of(-1));
  EXPECT_EQ(gDir.path, dir.path());
  EXPECT_EQ(selected_names(), "sub");  // what was left is made current and selected
  EXPECT_EQ(gDir.current, index_of("sub"));
}

TEST_F(FileList, TypingFindsNames) {
  make({"alpha", "readme", "rebuild", "beta"});
  open(dir.path());
  QTest::keyClicks(list(), QStringLiteral("reb"));
  EXPECT_EQ(gDir.current, index_of("rebuild"));
  EXPECT_EQ(status(1), "/reb");
  menu_item("em_copy")->trigger();
  EXPECT_EQ(selected_names(), "rebuild");  // what is shown selected is what a command takes
  key(Qt::Key_Backspace);
  EXPECT_EQ(gDir.current, index_of("readme"));
  key(Qt::Key_Escape);
  EXPECT_EQ(status(1), "");
  gConfig->type_ahead_ms = 1;
  QTest::keyClicks(list(), QStringLiteral("be"));
  QTRY_VERIFY(status(1).empty());
  EXPECT_EQ(gDir.current, index_of("beta"));
}

TEST_F(FileList, MenuButtonChoosesItsRowAndKeepsASelectionItHits) {
  make({"a", "b", "c"});
  open(dir.path());
  gFileListHooks.context_menu = nullptr;
  auto press = [&](const QPoint& place) { QTest::mouseClick(ground(), Qt::RightButton, {}, place); };
  press(place_of(1));
  EXPECT_EQ(selected_names(), "b");
  EXPECT_EQ(gDir.current, 1);
  fl_select_all();
  press(place_of(2));
  EXPECT_EQ(selected_names(), "a b c");
  EXPECT_EQ(gDir.current, 2);
  press(QPoint(20, ground()->height() - 5));
  EXPECT_EQ(selected_names(), "");
}

TEST_F(FileList, ColumnWidthsComeBackAsSetAtAnyFontSize) {
  open(dir.path());
  for (int points : {6, 8, 11, 17, 30}) {
    QFont font = list()->font();
    font.setPointSize(points);
    list()->setFont(font);
    for (int width : {20, 50, 53, 105, 125, 999}) {
      fl_set_column_width(3, width);
      EXPECT_EQ(fl_get_column_width(3), width) << points;
    }
  }
  EXPECT_EQ(fl_get_column_width(0), -1);
  EXPECT_EQ(fl_get_column_width(8), -1);
}

// A tool tip takes what looks like markup for markup, and nothing else.
TEST_F(FileList, ToolTipsShowNamesAsTheyStand) {
  const char* names[] = {"Rock & Roll", "say \"x\"", "<b>bold<", "a < b > c", "&lt;", "&amp;"};
  for (const char* name : names) make({name});
  open(dir.path());
  ASSERT_EQ(gDir.count, int(std::size(names)));
  for (int i = 0; i < gDir.count; ++i) {
    const QString tip = fl_model()->index(fl_model()->row_of(i), 0).data(Qt::ToolTipRole).toString();
    QTextDocument page;
    page.setHtml(tip);
    EXPECT_EQ((Qt::mightBeRichText(tip) ? page.toPlainText() : tip).toStdString(), gDir.entries[i]->name);
  }
}

TEST_F(FileList, ShowsEveryByteAName_MayHold) {
  for (int byte = 1; byte < 256; ++byte)
    if (byte != '/' && byte != '.') write_file(dir / ("n" + std::string(1, char(byte))), "");
  mkdir((dir / "\xff"
               "dir")
            .c_str(),
        0755);
  open(dir.path());
  EXPECT_EQ(gDir.count, 254);
  ground()->grab();
  for (int row = 0; row < fl_model()->rows(); ++row) EXPECT_FALSE(cell(row).empty());
  EXPECT_EQ(fl_newpath(fl_get_fullpath(index_of("\xff"
                                                "dir"))
                           .c_str()),
            0);
  EXPECT_EQ(gDir.path, dir /
                           "\xff"
                           "dir");
}

}  // namespace
