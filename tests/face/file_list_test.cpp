#include "views/ui/file_list.h"

#include <QHeaderView>
#include <random>

#include "commands/ui/menus.h"
#include "dirmodel/dir_sort.h"
#include "tests/face/window_test.h"
#include "views/find.h"
#include "views/ui/file_list_hooks.h"

namespace {

class FileList : public WindowTest {
 protected:
  static std::string cell(int i, int column = 0) {
    return fl_model()->index(fl_model()->row_of(i), column).data().toString().toStdString();
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
    const bool marked = !current_name().empty() && gDir.entries[gDir.current]->flags & ENTRY_CURRENT;
    EXPECT_EQ(marks, marked) << after;
    const std::string text = std::to_string(selected) + " selected item";
    EXPECT_EQ(status().substr(0, text.size()), selected ? text : "") << after;
  }
};

// A click on a selected row chooses it alone when the button is released: it may begin a drag of all. The
// menu button chooses its row, and keeps a selection that it hits.
TEST_F(FileList, MouseAndKeysSelectWhatTheySay) {
  show({"a/", "b", "c", "d/", "e"});
  gFileListHooks.context_menu = nullptr;
  for (const auto& [step, expected] :
       steps("click b = b; Ctrl+click d = b d; Ctrl+click b = d; click a = a; Shift+click c = a b c; "
             "Ctrl+click e = a b c e; click b = b; Down = c; Shift+Down = c d; "
             "Shift+Down = c d e; Shift+Up = c d; Shift+Home = a b c; Ctrl+A = a b c d e; press d = a b c d "
             "e; release d = d; click - = ; "
             "menu b = b; menu c = c; Ctrl+click b = b c; menu c = b c; menu - = ")) {
    act(step);
    EXPECT_EQ(selected(), expected) << step;
    expect_consistent(step);
  }
}

TEST_F(FileList, ABandTakesTheRowsThatItCoversAndNoMore) {
  show({"a/", "b", "c", "d/", "e"});
  const QPoint below(20, place_of(index_of("e")).y() + 40);
  // What it is drawn over one after the other; "": below the rows again.
  const std::tuple<Qt::KeyboardModifier, Texts, const char*> rows[] = {
      {Qt::NoModifier, {"d"}, "d e"},           {Qt::NoModifier, {"b", "d"}, "d e"},
      {Qt::NoModifier, {"b", ""}, ""},          {Qt::ControlModifier, {"d"}, "b d e"},
      {Qt::ControlModifier, {"a", "e"}, "b e"}, {Qt::ShiftModifier, {"a", ""}, "b"}};
  for (const auto& [modifiers, over, expected] : rows) {
    act("click b");
    QTest::mousePress(ground(), Qt::LeftButton, modifiers, below);
    for (const std::string& name : over) {
      const QPoint to = name.empty() ? below + QPoint(30, 0) : place_of(index_of(name));
      QMouseEvent move(QEvent::MouseMove, to, ground()->mapToGlobal(to), Qt::NoButton, Qt::LeftButton,
                       modifiers);
      QApplication::sendEvent(ground(), &move);
      expect_consistent(name);
    }
    QTest::mouseRelease(ground(), Qt::LeftButton, modifiers, below);
    EXPECT_EQ(selected(), expected) << over.front();
  }
}

TEST_F(FileList, ShiftStretchesFromWhereTheListStandsNow) {
  show({"sub/", "sub/a", "sub/b", "sub/c", "sub/d", "y", "z"});
  act("click z");  // the fourth row
  fl_newpath((dir_ / "sub").c_str());
  key("Shift+Down");
  EXPECT_EQ(selected(), "a") << "from the row of the parent directory";
  fl_goto_index(index_of("c"));
  key("Shift+Down");
  EXPECT_EQ(selected(), "c d");
  act("click a");
  fl_sort_cb(0);
  ASSERT_EQ(index_of("a"), 3);
  act("Shift+click b");
  EXPECT_EQ(selected(), "b a") << "it went with its entry";
}

TEST_F(FileList, CountsHoldAfterAnySequenceOfCommands) {
  for (int i = 0; i < 40; ++i) make({"entry" + std::to_string(i) + (i % 3 ? "" : "/")});
  open();
  std::mt19937 random(7);
  void (*const on_entry[])(int) = {fl_select_index, fl_unselect_index, fl_invert_index, fl_goto_index};
  const char* const keys[] = {"Down", "Shift+PgUp", "Ctrl+Space", "Ctrl+A", "Ctrl+U", "Ctrl+I"};
  const std::function<void()> commands[] = {
      [&] { on_entry[random() % std::size(on_entry)](int(random() % 44) - 2); },
      [&] { fl_select_pattern("*1*", random() % 2); },
      [&] { fl_unselect_pattern("entry?", random() % 2); },
      [&] { key(keys[random() % std::size(keys)]); },
      [&] { fl_sort_cb(int(random() % 7)); },
      [&] {
        act((random() % 2 ? "Shift+click " : "Ctrl+click ") + std::string(gDir.entries[random() % 8]->name));
      },
      fl_refresh};
  for (int step = 0; step < 600 && !HasFailure(); ++step) {
    const size_t which = random() % std::size(commands);
    commands[which]();
    expect_consistent("step " + std::to_string(step) + ", command " + std::to_string(which));
  }
}

TEST_F(FileList, HeadersAndKeysSortBothWays) {
  show({"aaa", "b", "cc"});
  QHeaderView* header = fl_view()->header();
  const QPoint on_size(header->sectionViewportPosition(1) + 10, header->height() / 2);
  for (const auto& [how, names] :
       steps("click = aaa cc b; click = b cc aaa; Ctrl+1 = cc b aaa; Ctrl+1 = aaa b cc")) {
    if (how == "click")
      QTest::mouseClick(header->viewport(), Qt::LeftButton, {}, on_size);
    else
      key(how);
    EXPECT_EQ(cell(0) + " " + cell(1) + " " + cell(2), names);
  }
}

TEST_F(FileList, RefreshKeepsTheFirstSelectedEntryCurrent) {
  show({"b", "c", "d"}, {"c", "d"});
  make({"a"});
  fl_refresh();
  EXPECT_EQ(current_name() + selected(), "c");  // shown selected, and not so
  EXPECT_TRUE(fl_row_selected(fl_model()->row_of(gDir.current)));
  fl_refresh();  // told by another operation that ended
  EXPECT_EQ(current_name(), "c");
  dir_.shell("rm c");
  fl_select_index(index_of("c"));
  for (int times = 0; times < 2; ++times) {
    fl_refresh();
    EXPECT_EQ(gDir.current, -2);
    EXPECT_EQ(fl_view()->currentIndex().row(), fl_model()->row_of(index_of("d")));  // where c was
  }
}

// Also with keys that belong to menus: a name that is being typed gets them first.
TEST_F(FileList, TypingFindsNames) {
  show({"rebuild", "readme", "sub/", "beta"});
  // What is typed in the list; the directory below dir_, the current entry and the status then.
  const auto state = [this] {
    return gDir.path.substr(dir_.path().size()) + " " + current_name() + " " + status();
  };
  key("'reb'");
  EXPECT_EQ(state(), " rebuild /reb");
  menu_item("em_copy")->trigger();
  EXPECT_EQ(selected(), "rebuild");  // what is shown selected is what a command takes
  key("Backspace");
  EXPECT_EQ(state(), " readme /re") << "it edits while a name is typed";
  key("Esc");
  EXPECT_EQ(status(), "");
  key("'/sub' Return");
  EXPECT_EQ(gDir.path, dir_ / "sub");
  key("Backspace");
  EXPECT_EQ(gDir.path, dir_.path()) << "idle again, it goes up";
  gConfig->type_ahead_ms = 1;  // a pause forgets what was typed
  key("R");
  EXPECT_TRUE(wait_for([] { return status() != "/r"; }));
  gConfig->type_ahead_ms = 60000;
  key("B");
  EXPECT_EQ(current_name(), "beta");
  static int menus = 0;
  gFileListHooks.context_menu = [](const QPoint&) { ++menus; };
  key("Shift+F10");
  EXPECT_EQ(menus, 1) << "where there is no menu key";
  key("Shift+Return");
  EXPECT_TRUE(dialog("open_with")) << "while a name is typed";
}

TEST_F(FileList, ShowsEveryByteThatANameMayHoldAndOpensByDoubleClick) {
  for (int byte = 1; byte < 256; ++byte)
    if (byte != '/' && byte != '.') make({"n" + std::string(1, char(byte))});
  dir_.shell("ln -s nowhere broken");
  show({"\xff folder/"});
  EXPECT_EQ(gDir.count, 255);
  ground()->grab();
  for (int i = -1; i < gDir.count; ++i) EXPECT_FALSE(cell(i).empty());
  EXPECT_EQ(cell(index_of("n\n")), "n\u240a");
  EXPECT_STREQ(fl_row_image(*gDir.entries[index_of("broken")]), "image_broken_link");
  const int folder = index_of("\xff folder");
  fl_view()->scrollTo(fl_model()->index(fl_model()->row_of(folder), 0));
  QTest::mouseDClick(ground(), Qt::LeftButton, {}, place_of(folder));
  EXPECT_EQ(gDir.path, dir_ / "\xff folder");
  QTest::mouseDClick(ground(), Qt::LeftButton, {}, place_of(-1));
  EXPECT_EQ(gDir.path, dir_.path());
}

}  // namespace
