// The main window on a temporary directory, with a HOME and settings of its own. Names that end in '/' are
// made as directories. The working directory and gDir are the window's while it lives.
#pragma once

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QApplication>
#include <QClipboard>
#include <QLabel>
#include <QMainWindow>
#include <QMenu>
#include <QMimeData>
#include <QTest>
#include <QTreeView>
#include <string>
#include <vector>

#include "commands/associations.h"
#include "core/command_line.h"
#include "core/interp.h"
#include "core/state.h"
#include "dirmodel/dir_record.h"
#include "tests/support/temp_dir.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"

class ShownWindow {
 public:
  explicit ShownWindow(const std::vector<std::string>& names = {}) {
    setenv("HOME", home_.path().c_str(), 1);
    mkdir((home_ / ".vr").c_str(), 0700);
    for (const std::string& name : names) make(name);
    std::string program = "zan", path = dir_.path();
    char* arguments[] = {program.data(), path.data(), nullptr};
    state_init(2, arguments);
    init_read_associations(nullptr, "none");
    QApplication::clipboard()->setMimeData(new QMimeData);
    interp_clear();
    base_window_closed = 0;
    base_create();
    base_open(CommandLine());
    base_window()->activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(base_window()));
    list()->setFocus();
  }
  ~ShownWindow() {
    base_destroy();
    chdir("/");
  }

  void make(const std::string& name) const {
    if (name.back() == '/')
      mkdir((dir_ / name).c_str(), 0755);
    else
      write_file(dir_ / name, name);
  }
  QTreeView* list() const { return base_find<QTreeView>("filelist"); }
  QMenu* menu(const char* name) const { return base_window()->findChild<QMenu*>(QString::fromLatin1(name)); }
  std::string status(const char* pane) const { return base_find<QLabel>(pane)->text().toStdString(); }

  static int index_of(const std::string& name) {
    for (int i = 0; i < gDir.count; ++i)
      if (name == gDir.entries[i]->name) return i;
    ADD_FAILURE() << "not listed: " << name;
    return -2;
  }
  // Exactly these are selected afterwards.
  static void select(const std::vector<std::string>& names) {
    fl_unselect_all();
    for (const std::string& name : names) fl_select_index(index_of(name));
  }
  static std::string selected() {
    std::string names;
    for (int i = 0; i < gDir.count; ++i)
      if (gDir.entries[i]->flags & ENTRY_SELECTED) names += std::string(gDir.entries[i]->name) + " ";
    return names;
  }

  std::string operator/(const std::string& name) const { return dir_ / name; }
  const std::string& path() const { return dir_.path(); }

 private:
  TempDir home_, dir_;
};
