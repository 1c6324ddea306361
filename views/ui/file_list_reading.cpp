// Reading the directory again. dir_read lets events run, so anything may be asked for in the middle of it:
// input to the main window is taken away, but Escape and every way of going elsewhere give the reading up at
// once; a refresh that comes meanwhile is done once more afterwards; closing waits until the reading has
// unwound.
#include <QApplication>
#include <QKeyEvent>
#include <QMainWindow>
#include <QTimer>
#include <QToolButton>
#include <QWidget>

#include "core/toolkit/message.h"
#include "dirmodel/dir_read.h"
#include "dirmodel/dir_sort.h"
#include "dirmodel/fs_probe.h"
#include "platform/desktop.h"
#include "views/find.h"
#include "views/fname.h"
#include "views/ui/base.h"
#include "views/ui/file_list_parts.h"
#include "views/ui/navigation.h"

namespace {

constexpr int kLongReadingMs = 300;  // until then nothing shows that a reading is going on
constexpr int kRowsComeMs = 500;     // then what has been read shows this often

bool sReading = false, sRefreshAgain = false, sGivenUp = false;
std::function<void()> sAfter;
std::string sLastPath;  // of the last refresh

void give_up_reading() {
  sGivenUp = true;
  dir_read_cancel();
  fs_give_up_looking();
}

// Takes the input of the main window for as long as it stands.
class ReadingGuard : public QObject {
 public:
  explicit ReadingGuard(QMainWindow* window) : window_(window) {
    sReading = true;
    sGivenUp = false;
    fl_show_reading(false);
    qApp->installEventFilter(this);
    connect(&long_, &QTimer::timeout, this, [this] {
      if (!busy_) show_busy();
      long_.setInterval(kRowsComeMs);
      fl_show_rows_read();
    });
    long_.start(kLongReadingMs);
  }
  ~ReadingGuard() override {
    qApp->removeEventFilter(this);
    if (busy_) misc_block(window_, 0);
    sReading = false;
    if (close_wanted_) QMetaObject::invokeMethod(window_, &QWidget::close, Qt::QueuedConnection);
  }

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  bool is_ours(QObject* object) const {
    auto* widget = qobject_cast<QWidget*>(object);
    return widget && window_ && widget->window() == window_;
  }

  // The busy cursor would only flicker when every short reading showed it.
  void show_busy() {
    fl_show_reading(true);
    if (!window_) return;
    busy_ = true;
    misc_block(window_, 1);
    qApp->removeEventFilter(this);
    qApp->installEventFilter(this);  // in front of the block's own again
  }

  void press_key(QKeyEvent* key) {
    const bool alt = key->modifiers() & Qt::AltModifier;
    if (key->key() == Qt::Key_Escape) give_up_reading();
    if (key->key() == Qt::Key_Backspace && !key->modifiers()) gm_up();
    if (key->key() == Qt::Key_F6) gm_home();
    if (key->key() == Qt::Key_Left && alt) gm_back();
    if (key->key() == Qt::Key_Right && alt) gm_forward();
  }

  // The toolbar's way of going elsewhere. A sheet may lie over the button, so the place tells.
  void press_button(QMouseEvent* mouse) {
    static const char* const names[] = {"tb_back", "tb_forward", "tb_up", "tb_home"};
    for (const char* name : names) {
      auto* button = base_find<QToolButton>(name);
      if (!button || !button->isEnabled() || !button->isVisible()) continue;
      if (button->rect().contains(button->mapFromGlobal(mouse->globalPosition().toPoint()))) button->click();
    }
  }

  QMainWindow* window_;
  QTimer long_;
  bool busy_ = false, close_wanted_ = false;
};

bool ReadingGuard::eventFilter(QObject* object, QEvent* event) {
  switch (event->type()) {
    case QEvent::Close:
      if (object != window_) return false;
      close_wanted_ = true;
      give_up_reading();
      event->ignore();
      return true;
    default:
      if ((!misc_is_input(*event) && event->type() != QEvent::Shortcut) || !is_ours(object)) return false;
  }
  if (event->type() == QEvent::KeyPress) press_key(static_cast<QKeyEvent*>(event));
  if (event->type() == QEvent::MouseButtonPress) press_button(static_cast<QMouseEvent*>(event));
  if (event->type() == QEvent::ShortcutOverride) event->accept();  // it comes as a key press next
  return true;
}

void run_what_waited() {
  if (std::function<void()> after = std::exchange(sAfter, {})) {
    sRefreshAgain = false;
    QTimer::singleShot(0, fl_view(), after);
  } else if (std::exchange(sRefreshAgain, false)) {
    QTimer::singleShot(0, fl_view(), [] { fl_refresh(); });
  }
}

}  // namespace

bool fl_reading() {
  return sReading;
}

void fl_after_reading(std::function<void()> fn) {
  sAfter = std::move(fn);
  give_up_reading();
}

bool fl_as_reading(const std::function<void()>& fn) {
  const ReadingGuard guard(base_window());
  fn();
  return !sGivenUp;
}

int fl_refresh() {
  if (!fl_view()) return -1;
  if (sReading) {
    sRefreshAgain = true;
    return 0;
  }
  const bool same = gDir.path == sLastPath;
  sLastPath = gDir.path;
  const int kept = same ? fl_first_shown_selected() : -2;
  const std::string keep = kept >= 0 ? gDir.entries[kept]->name : std::string();
  const bool nothing_current = same && gDir.current == -2;
  const int row = kept >= 0 ? fl_model()->row_of(kept) : fl_view()->currentIndex().row();
  int result;
  {
    ReadingGuard guard(base_window());
    fl_timer_disable();
    result = dir_read(&gDir, sSortFunction, sSortOrder);
  }
  gDir.sel_count = gDir.sel_dir_count = 0;
  fl_update();
  const int found = keep.empty() ? -2 : find_name(keep.c_str());
  const bool gone = found < 0 && (kept >= 0 || nothing_current);
  fl_goto_index(found >= 0 || gone ? found : -1);
  if (gone) fl_cursor_at(row);  // a list does not jump to its top because something was deleted
  // An empty list alone would look as if the files were gone.
  const bool failed = result != 0 && !sGivenUp && !gDir.path.empty();
  desk_status(1,
              failed ? "Cannot access directory '" + std::string(fname_decode(gDir.path.c_str())) + "'" : "");
  run_what_waited();
  return result;
}
