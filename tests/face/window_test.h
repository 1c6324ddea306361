// The main window on a directory of a test's own, with default settings, nothing saved and a HOME of its own.
// Keys and pointer drive it; a message that no test expects fails the test.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMenu>
#include <QMimeData>
#include <QPointer>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <functional>
#include <string>
#include <vector>

#include "core/settings.h"
#include "core/state.h"
#include "dirmodel/dir_record.h"
#include "fileops/ui/slots.h"
#include "tests/support/temp_dir.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"
#include "views/ui/file_list_parts.h"
#include "views/ui/navigation.h"

using Texts = std::vector<std::string>;

// Lets events run until done. False when that does not come.
bool wait_for(const std::function<bool()>& done);
// Works in target, or in what has the focus at each moment. What it does is said word by word: a key, named
// as in menus, a 'text' that is typed, "@name" to tab to the widget of that name in the active window.
void press(const std::string& words, QWidget* target = nullptr);
// "what is done = what is so then; ..." as pairs.
using Steps = std::vector<std::pair<std::string, std::string>>;
Steps steps(const std::string& script);
// An alert that has just opened under typing hands takes no key: presses until it is gone.
void answer(QPointer<QWidget> alert, const std::string& key);
// The visible windows of that title whose descriptions hold the text.
QWidgetList windows(const char* title, const QString& about = {});

// What target answers at a place to this event of a drag. IgnoreAction: it refuses.
template <class Event>
Qt::DropAction drag(QWidget* target, const QPoint& at, const QMimeData& mime, Qt::KeyboardModifiers modifiers,
                    Qt::DropActions possible) {
  Event event(at, possible, &mime, Qt::LeftButton, modifiers);
  QApplication::sendEvent(target, &event);
  return event.isAccepted() ? event.dropAction() : Qt::IgnoreAction;
}

class WindowTest : public testing::Test {
 public:
  // Makes window the one that keys go to.
  static bool activate(QWidget* window);
  template <class T>
  static T* find(QWidget* in, const char* name) {
    T* widget = in ? in->findChild<T*>(QString::fromLatin1(name)) : nullptr;
    EXPECT_TRUE(widget) << name;
    return widget;
  }
  // The line of a field, or of a box with a list.
  static QLineEdit* line(QWidget* in, const char* name);

 protected:
  void SetUp() override;
  void TearDown() override;

  // Files that hold their own names; a name that ends in '/' is made as a directory.
  void make(const Texts& names) const;
  // Opens the window on dir_, or on another directory.
  void open(const std::string& path = "");
  // Makes entries, shows dir_ as it is now, and selects.
  void show(const Texts& names, const Texts& selected = {});
  static void select(const Texts& names);  // exactly these
  static std::string selected();           // their names, a blank between them
  static int index_of(const std::string& name);
  // The entry that the list's cursor is on.
  static std::string current_name() {
    return gDir.current >= 0 && gDir.current < gDir.count ? gDir.entries[gDir.current]->name : "";
  }
  static std::string status() { return base_find<QLabel>("status1")->text().toStdString(); }
  static bool settled() {  // waits until no operation runs
    return wait_for([] { return slot_running() == 0; });
  }
  // All in dir_ once the expected messages came and no operation runs, sorted, a blank behind each: "d/
  // d/file:what-it-holds link@target ".
  std::string held() const;

  static QWidget* ground() { return fl_view()->viewport(); }
  static QPoint place_of(int i) {
    return fl_view()->visualRect(fl_model()->index(fl_model()->row_of(i), 0)).center();
  }
  // Presses a key in the list, or has the mouse act on a row ("-": below the rows) as in "click name",
  // "Shift+click name", "menu name" for its right button, "press name" or "release name".
  static void act(const std::string& step);
  static void key(const std::string& words) { press(words, fl_view()); }

  // Steps with the path of dir_ for each '$'.
  Steps steps_here(std::string script) const;

  // The next message must have this text, and gets key.
  void expect_message(const std::string& text, const char* key = "Return") {
    expected_.push_back({text, key});
  }
  // Waits until every expected message came and went.
  bool answered() const {
    return wait_for([this] { return expected_.empty(); });
  }
  // The open dialog of that name, ready for keys; null when there is none.
  static QDialog* dialog(const char* name);
  // Works in the open dialog of that name. Whether it is open then.
  static bool stays(const char* name, const std::string& words);
  static Texts labels(const QMenu* menu) {
    Texts all;
    for (const QAction* action : menu->actions()) all.push_back(action->text().toStdString());
    return all;
  }

  TempDir dir_, config_, home_;
  QTimer* watch_ = nullptr;  // for messages

 private:
  void answer_message();

  std::vector<std::pair<std::string, const char*>> expected_;
  Texts unexpected_;
};
