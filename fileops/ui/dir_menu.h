// A menu of directories and its entries, which cascade into menus of their subdirectories.
#pragma once

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <memory>
#include <string>
#include <vector>

#include "fileops/dir_scan.h"

using dtm_choose = void (*)(const char* path);

// Scrolls where it is longer than the screen, and takes thousands of entries.
class DirMenu : public QMenu {
 public:
  explicit DirMenu(QWidget* parent = nullptr);
  // Adds entries without laying out the menu for each; lay_out is due afterwards.
  void append(const QList<QAction*>& actions);
  // Fits a menu that is shown to its entries again, on the screen and off its parent.
  void lay_out();

 protected:
  void initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const override;
  void actionEvent(QActionEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
};

// One directory. It is grey until it is known whether it has subdirectories; its submenu is made when the
// entry is armed and scanned when first shown.
class DirButton : public QAction {
 public:
  DirButton(QMenu* menu, const std::string& path, const std::string& label, unsigned flags,
            dtm_choose on_choose);
  ~DirButton() override;

  bool known() const { return state_ != UNKNOWN; }
  bool cascades() const { return state_ == CASCADE || submenu_; }
  const std::string& path() const { return path_; }
  dtm_choose on_choose() const { return on_choose_; }
  void set_known(bool has_subdirectories);

 private:
  enum State { UNKNOWN, CASCADE, PLAIN };
  void arm();
  void start_scan();
  void listed(const DirNames& names);
  void add_some();
  void looked(size_t first, const std::vector<char>& has);
  void drop_submenu();

  std::string path_;
  unsigned flags_;
  dtm_choose on_choose_;
  State state_ = UNKNOWN;
  int probe_ = 0;
  bool scanned_ = false;
  std::shared_ptr<DirScan> scan_;
  QPointer<DirMenu> submenu_;
  QAction* placeholder_ = nullptr;
  DirNames names_;                 // of the submenu, all of them
  std::vector<char> has_;          // per name: 1, 0, or -1 while unknown
  std::vector<DirButton*> items_;  // of the submenu, as far as added
};

// Chooses an entry: closes all menus, then calls on_choose with its path. One that cascades only when forced.
void dtm_activate(DirButton* entry, bool force);

// A notice with the one button "&Close". Any thread; does not wait.
void dtm_errinfo(const std::string& title, const std::string& message);
