// The main window on a directory of a test's own, with default settings, nothing saved and a HOME of its own.
// Keys and pointer drive it; a message that no test expects fails the test.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

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
#include "tests/support/temp_dir.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"
#include "views/ui/file_list_parts.h"
#include "views/ui/navigation.h"

using Texts = std::vector<std::string>;

// Lets events run until done. False when that does not come.
bool wait_for(const std::function<bool()>& done);

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
  static std::string current_name();  // the entry that the list's cursor is on
  static std::string status(int pane);
  static bool settled();  // waits until no operation runs

  static QWidget* ground() { return fl_view()->viewport(); }
  static QPoint place_of(int i);
  static void click(int i, Qt::KeyboardModifiers modifiers = {});
  static void key(Qt::Key which, Qt::KeyboardModifiers modifiers = {});    // for the list
  static void press(Qt::Key which, Qt::KeyboardModifiers modifiers = {});  // for what has the focus
  static void type(const std::string& text);

  // The next message must have this text, and gets key.
  void expect_message(const std::string& text, Qt::Key key = Qt::Key_Return);
  bool answered() const;  // waits until every expected message came and went
  // The open dialog of that name, ready for keys; null when there is none.
  static QDialog* dialog(const char* name);
  // Tabs until the widget of that name has the focus. False when it is never reached.
  static bool tab_to(QDialog* in, const char* name);
  // The same, and presses it.
  static void toggle(QDialog* in, const char* name);
  static Texts labels(const QMenu* menu);

  TempDir dir_, config_, home_;

 private:
  struct Expected {
    std::string text;
    Qt::Key key;
  };
  void answer_message();

  std::vector<Expected> expected_;
  Texts unexpected_;
  QTimer* watch_ = nullptr;
};
