// What all dialogs have in common.
#pragma once

#include <QDialog>
#include <QPointer>
#include <utility>

#include "dirmodel/dir_read.h"
#include "dirmodel/fs_probe.h"

// The size that a window may have on its screen, in logical pixels: the frame that the window manager adds is
// taken off.
QSize dialog_room(const QWidget* window);

// Gives dialog its natural size. Where the screen has less room, as at a large scale, all but its last row
// (the buttons) scrolls.
void dialog_fit(QDialog* dialog);

// Shows dialog at its natural size (cut to the screen's) centred over parent. It is modal over its own parent
// window and deleted when it closes.
void dialog_open(QWidget* parent, QDialog* dialog);

// The dialog of a class of which there is one at a time; null while none is open.
template <class Dialog>
Dialog* dialog_one(Dialog* opened = nullptr) {
  static QPointer<Dialog> one;
  if (opened) one = opened;
  return one && one->isVisible() ? one.data() : nullptr;
}

// Opens it, made with arguments, unless one is open.
template <class Dialog, class... Arguments>
void dialog_open_one(QWidget* parent, Arguments&&... arguments) {
  if (dialog_one<Dialog>()) return;
  auto* dialog = new Dialog(std::forward<Arguments>(arguments)...);
  dialog_open(parent, dialog);
  dialog_one(dialog);
}

// A dialog that stays open while what it was asked for is being done: events run meanwhile, and Cancel gives
// up waiting for a file system.
class BusyDialog : public QDialog {
 public:
  using QDialog::QDialog;
  void reject() override {
    if (!busy_) return QDialog::reject();
    given_up_ = true;
    fs_give_up();
    dir_read_cancel();
  }

 protected:
  // Leaves, now that the call that was given up has come back.
  void given_up() {
    busy_ = false;
    reject();
  }

  bool busy_ = false, given_up_ = false;
};

// A tool tip that shows the text as it stands, whatever markup a name in it looks like.
QString tip_text(const QString& text);

// The text with the marks that turn the direction of writing shown as signs: with one of them in it a name
// can look like another, "exe.jpg" for one that ends in "gpj.exe".
QString unturned(QString text);
