// The program's main window on a directory of a test's own, with default settings and nothing saved.
#pragma once

#include <gtest/gtest.h>

#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <QPushButton>
#include <QTest>
#include <QTimer>
#include <string>

#include "core/command_line.h"
#include "core/history.h"
#include "core/settings.h"
#include "core/state.h"
#include "dirmodel/dir_record.h"
#include "dirmodel/dir_sort.h"
#include "platform/qt/desktop_qt.h"
#include "tests/support/temp_dir.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"
#include "views/ui/file_list_parts.h"
#include "views/ui/navigation.h"

class MainWindowTest : public testing::Test {
 protected:
  TempDir dir;

  void SetUp() override {
    desktop_qt_setup();
    desktop_qt_reset();
    settings_defaults(gConfig);
    gConfig->flags |= SET_HIDE_DOT;
    gConfigPath = nullptr;
    gOptions = OPT_INITIAL & ~OPT_DOT_PAIR;
    init_read_cboxs(nullptr);
    sSortFunction = dir_cmp_name;
    sSortOrder = 1;
  }

  void TearDown() override {
    base_destroy();
    gDir.path.clear();
    gDir.filespec.clear();
    init_destroy_cboxs();
    base_window_closed = 0;
    if (chdir("/") != 0) ADD_FAILURE() << "no way out";
  }

  void open(const std::string& path) {
    gStartPath = path;
    base_create();
    base_open(CommandLine{});
    QApplication::setActiveWindow(base_window());
    QApplication::processEvents();
  }

  FileListView* list() { return fl_view(); }
  QWidget* ground() { return fl_view()->viewport(); }
  QPoint place_of(int i) { return list()->visualRect(fl_model()->index(fl_model()->row_of(i), 0)).center(); }
  void click(int i, Qt::KeyboardModifiers modifiers = {}) {
    QTest::mouseClick(ground(), Qt::LeftButton, modifiers, place_of(i));
  }
  void key(Qt::Key which, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(list(), which, modifiers); }
  std::string cell(int row, int column = 0) {
    return fl_model()->index(row, column).data().toString().toStdString();
  }
  std::string status(int pane) {
    return base_find<QLabel>(pane == 1 ? "status1" : "status2")->text().toStdString();
  }
  std::string selected_names() {
    std::string names;
    for (int i = 0; i < gDir.count; ++i)
      if (gDir.entries[i]->flags & ENTRY_SELECTED)
        names += (names.empty() ? "" : " ") + std::string(gDir.entries[i]->name);
    return names;
  }
  int index_of(const std::string& name) {
    for (int i = 0; i < gDir.count; ++i)
      if (name == gDir.entries[i]->name) return i;
    return -2;
  }

  // Answers the message box that comes next, and gives its texts.
  template <class Fn>
  std::string message_of(Fn act) {
    std::string seen;
    QTimer timer;
    QObject::connect(&timer, &QTimer::timeout, [&] {
      for (QWidget* window : QApplication::topLevelWidgets()) {
        if (window == base_window() || !window->isVisible()) continue;
        for (QLabel* label : window->findChildren<QLabel*>())
          if (seen.empty()) seen = label->text().remove(QChar(0x200b)).toStdString();
        if (auto* button = window->findChild<QPushButton*>()) button->click();
        return;
      }
    });
    timer.start(10);
    act();
    return seen;
  }
};
