#include "fileops/ui/long_filename_dlg.h"

#include <QApplication>
#include <QKeyEvent>

#include "core/toolkit/alert.h"
#include "platform/desktop.h"
#include "platform/qt/desktop_qt.h"
#include "ui_long_filename_dlg.h"
#include "views/fname.h"

namespace {
constexpr int sOldNameMost = 255;  // bytes of the old name that are shown
enum : int { sSkip = 1, sRename = 2 };

// Where the last whole character that fits into most bytes ends.
size_t long_filename_end(const std::string& name, size_t most) {
  if (name.size() <= most) return name.size();
  size_t end = most;
  while (end > 0 && most - end < 3 && (name[end] & 0xc0) == 0x80) --end;
  return (name[end] & 0xc0) == 0x80 ? most : end;  // stray continuation bytes: no character to keep whole
}

// The bytes that the shown text stands for; null when it cannot be written.
const char* long_filename_bytes(const QString& text) {
  return fname_encode(text.toUtf8().constData());
}
}  // namespace

std::string long_filename_cut(const std::string& name) {
  return name.substr(0, long_filename_end(name, LONG_FILENAME_MOST));
}

LongFilenameDialog::LongFilenameDialog(const std::string& oldfile, const std::string& proposal,
                                       std::function<void(const std::string*)> answered)
    : ui_(new Ui::long_filename_dlg),
      oldfile_(oldfile.substr(0, long_filename_end(oldfile, sOldNameMost))),
      newfile_(long_filename_cut(proposal)),
      answered_(std::move(answered)) {
  ui_->setupUi(this);
  connect(ui_->long_filename_newname, &QLineEdit::textEdited, this, [this] { limit_bytes(); });
  connect(ui_->long_filename_rename, &QPushButton::clicked, this, [this] { long_filename_rename(); });
  connect(ui_->long_filename_skip, &QPushButton::clicked, this, &QDialog::reject);
  long_filename_setup();
}

LongFilenameDialog::~LongFilenameDialog() {
  answer();
}

void LongFilenameDialog::long_filename_setup() {
  ui_->long_filename_oldname->setText(QString::fromUtf8(fname_decode(oldfile_.c_str())));
  ui_->long_filename_oldname->setCursorPosition(0);
  proposal_shown_ = QString::fromUtf8(fname_decode(newfile_.c_str()));
  QLineEdit* field = ui_->long_filename_newname;
  field->setText(proposal_shown_);
  field->setMinimumWidth(field->fontMetrics().averageCharWidth() * (LONG_FILENAME_MOST + 6));
  field->setFocus();
}

// What does not fit is taken off behind the cursor, so that a name pasted into the middle loses its own end.
void LongFilenameDialog::limit_bytes() {
  QLineEdit* field = ui_->long_filename_newname;
  QString text = field->text();
  int cursor = field->cursorPosition();
  const auto too_long = [&] {
    const char* bytes = long_filename_bytes(text);
    return (bytes != nullptr ? std::string(bytes).size() : text.toUtf8().size()) > LONG_FILENAME_MOST;
  };
  if (!too_long()) return;
  while (cursor > 0 && too_long()) {
    const int units = cursor > 1 && text[cursor - 1].isLowSurrogate() ? 2 : 1;
    text.remove(cursor - units, units);
    cursor -= units;
  }
  desk_bell();
  field->setText(text);
  field->setCursorPosition(cursor);
}

void LongFilenameDialog::long_filename_rename() {
  const QString text = ui_->long_filename_newname->text();
  if (!text.isEmpty() && text != proposal_shown_) {  // the proposal's own bytes may be no text at all
    const char* bytes = long_filename_bytes(text);
    if (bytes == nullptr) return desk_bell();
    newfile_ = long_filename_cut(bytes);
  }
  do_rename_ = true;
  accept();
}

void LongFilenameDialog::keyPressEvent(QKeyEvent* event) {
  if (event->modifiers() == Qt::NoModifier && event->key() == Qt::Key_S) return reject();
  if (event->modifiers() == Qt::NoModifier && event->key() == Qt::Key_R) return long_filename_rename();
  QDialog::keyPressEvent(event);
}

void LongFilenameDialog::done(int result) {
  QDialog::done(result);
  answer();
}

void LongFilenameDialog::answer() {
  if (!answered_) return;
  const auto answered = std::move(answered_);
  answered_ = nullptr;
  hide();
  deleteLater();
  answered(do_rename_ ? &newfile_ : nullptr);
}

bool desk_long_name(const std::string& old_name, std::string* new_name) {
  auto chosen = std::make_shared<std::string>();
  const std::string proposal = new_name->empty() ? old_name : *new_name;
  const auto open = [old_name, proposal, chosen](std::function<void(int)> answered) {
    auto* dialog = new LongFilenameDialog(old_name, proposal, [chosen, answered](const std::string* newfile) {
      if (newfile != nullptr) *chosen = *newfile;
      answered(newfile != nullptr ? sRename : sSkip);
    });
    alert_open(dialog, nullptr, Qt::NonModal);
    return dialog;
  };
  if (desktop_qt_ask(sSkip, open) != sRename) return false;
  *new_name = *chosen;
  return true;
}
