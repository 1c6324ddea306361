// A menu of directories and its entries, which cascade into menus of their subdirectories.
#pragma once

#include <QAction>
#include <QMenu>
#include <QPointer>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "fileops/dir_scan.h"

using dtm_choose = std::function<void(const char* path)>;

class DirButton;

// Scrolls where it is longer than the screen, and takes thousands of entries.
class DirMenu : public QMenu {
 public:
  explicit DirMenu(QWidget* parent = nullptr);
  // Adds entries without laying out the menu for each; lay_out is due afterwards.
  void append(const QList<QAction*>& actions);
  // Fits a menu that is shown to its entries again, on the screen and off its parent.
  void lay_out();
  // The same for one that is as high as the screen already: it stays where it is scrolled to.
  void lengthen();

 protected:
  void initStyleOption(QStyleOptionMenuItem* option, const QAction* action) const override;
  void actionEvent(QActionEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;

 private:
  DirButton* pressed_entry(const QMouseEvent* event);
};

// What an entry and all below it have in common.
struct DirMenuKind {
  unsigned flags = 0;  // DIR_SCAN_ flags of the scans
  dtm_choose on_choose;
  size_t most = SIZE_MAX;  // entries shown of a submenu; an inert item tells that there are more
  bool greyed = true;      // entries are grey until it is known whether they have subdirectories
  // Where set, arming an entry scans it at once; called as soon as the submenu of an armed entry is filled.
  std::function<void(QMenu* submenu)> armed;
};

// One directory. Its submenu is made when the entry is armed, and scanned when first shown.
class DirButton : public QAction {
 public:
  DirButton(QMenu* menu, const std::string& path, const std::string& label,
            std::shared_ptr<const DirMenuKind> kind);
  ~DirButton() override;

  bool grey() const { return state_ == UNKNOWN && kind_->greyed; }
  bool cascades() const { return state_ == CASCADE || submenu_; }
  bool scanned() const { return scanned_; }
  const std::string& path() const { return path_; }
  const dtm_choose& on_choose() const { return kind_->on_choose; }
  void set_known(bool has_subdirectories);
  // Looks in the background whether it has a subdirectory.
  void probe();
  // Fills the submenu before it is shown. listed is called once, unless the entry goes before.
  void prepare(std::function<void()> listed);

 private:
  enum State { UNKNOWN, CASCADE, PLAIN };
  void arm();
  void start_scan();
  void listed(const DirNames& names);
  void add_some();
  void add_inert_end();
  bool pointed_at() const;
  void looked(size_t first, const std::vector<char>& has);
  void drop_submenu();

  std::string path_;
  std::shared_ptr<const DirMenuKind> kind_;
  State state_ = UNKNOWN;
  int probe_ = 0;
  bool scanned_ = false;
  bool armed_ = false;
  std::shared_ptr<DirScan> scan_;
  QPointer<DirMenu> submenu_;
  std::function<void()> when_listed_;
  QAction* placeholder_ = nullptr;
  DirNames names_;                 // of the submenu, all of them
  std::vector<char> has_;          // per name: 1, 0, or -1 while unknown
  std::vector<DirButton*> items_;  // of the submenu, as far as added
};

// Chooses an entry: closes all menus, then calls on_choose with its path. One that cascades only when forced.
void dtm_activate(DirButton* entry, bool force);

// A notice with the one button "&Close". Any thread; does not wait.
void dtm_errinfo(const std::string& title, const std::string& message);
