// The main window on a directory of its own, for tests that drive its dialogs by keys.
#pragma once

#include <gtest/gtest.h>

#include <QDialog>
#include <QTest>
#include <string>
#include <vector>

#include "core/settings.h"
#include "tests/support/temp_dir.h"

class DialogTest : public testing::Test {
 protected:
  void SetUp() override;     // histories empty, default settings
  void TearDown() override;  // fails when a message was not expected, or an expected one did not come

  // Reads dir_ into the window, the entries of these names selected.
  void show_directory(const std::vector<std::string>& selected = {});

  // The next message must have this text, and gets key.
  void expect_message(const std::string& text, Qt::Key key = Qt::Key_Return);

  // Makes window the one that keys go to.
  static bool activate(QWidget* window);
  // The open dialog of that name, ready for keys; null when there is none.
  static QDialog* dialog(const char* name);
  template <class T>
  static T* find(QDialog* in, const char* name) {
    T* widget = in ? in->findChild<T*>(QString::fromLatin1(name)) : nullptr;
    EXPECT_TRUE(widget) << name;
    return widget;
  }
  // Keys for whatever has the focus in the active window.
  static void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {});
  static void type(const std::string& text);
  // Tabs until the widget of that name has the focus. False when it is never reached.
  static bool tab_to(QDialog* in, const char* name);
  static std::string current_name();  // the entry that the list's cursor is on

  TempDir dir_, config_;

 private:
  struct Expected {
    std::string text;
    Qt::Key key;
  };
  void answer_message();

  std::vector<Expected> expected_;
  std::vector<std::string> unexpected_;
  QTimer* watch_ = nullptr;
};
