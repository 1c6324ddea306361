#include "fileops/ui/long_filename_dlg.h"

#include <QApplication>
#include <QKeyEvent>
#include <cstring>

#include "core/toolkit/alert.h"
#include "platform/desktop.h"
#include "platform/qt/desktop_qt.h"
#include "ui_long_filename_dlg.h"
#include "views/fname.h"

namespace {
enum : int { sSkip = 1, sRename = 2 };

// Bytes of the name that the shown text stands for.
size_t long_filename_bytes(const QString& text) {
  const QByteArray utf8 = text.toUtf8();
  const char* name = fname_encode(utf8.constData());
  return name != nullptr ? std::strlen(name) : static_cast<size_t>(utf8.size());
}

// Takes whole characters off in front of cursor until the name is short enough. True when it took any.
bool long_filename_trim(QString* text, int* cursor) {
  const QString before = *text;
  while (*cursor > 0 && long_filename_bytes(*text) > LONG_FILENAME_MOST) {
    const int units = *cursor > 1 && (*text)[*cursor - 1].isLowSurrogate() ? 2 : 1;
    text->remove(*cursor - units, units);
    *cursor -= units;
  }
  return *text != before;
}
}  // namespace

LongFilenameDialog::LongFilenameDialog(const QString& oldfile, const QString& proposal,
                                       std::function<void(const QString*)> answered)
    : ui_(new Ui::long_filename_dlg), newfile_(proposal), answered_(std::move(answered)) {
  int end = static_cast<int>(newfile_.size());
  long_filename_trim(&newfile_, &end);
  ui_->setupUi(this);
  ui_->long_filename_oldname->setText(oldfile);
  connect(ui_->long_filename_newname, &QLineEdit::textEdited, this, [this] { limit_bytes(); });
  connect(ui_->long_filename_rename, &QPushButton::clicked, this, [this] { long_filename_rename(); });
  connect(ui_->long_filename_skip, &QPushButton::clicked, this, &QDialog::reject);
  long_filename_setup();
}

LongFilenameDialog::~LongFilenameDialog() {
  answer();
}

void LongFilenameDialog::long_filename_setup() {
  ui_->long_filename_oldname->setCursorPosition(0);
  QLineEdit* field = ui_->long_filename_newname;
  field->setText(newfile_);
  field->setMinimumWidth(field->fontMetrics().averageCharWidth() * (LONG_FILENAME_MOST + 6));
  field->setFocus();
}

// What does not fit is taken off at the cursor, so that a name pasted into the middle loses its own end.
void LongFilenameDialog::limit_bytes() {
  QLineEdit* field = ui_->long_filename_newname;
  QString text = field->text();
  int cursor = field->cursorPosition();
  if (!long_filename_trim(&text, &cursor)) return;
  desk_bell();
  field->setText(text);
  field->setCursorPosition(cursor);
}

void LongFilenameDialog::long_filename_rename() {
  const QString text = ui_->long_filename_newname->text();
  if (!text.isEmpty()) newfile_ = text;
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
  const QString shown = QString::fromStdString(old_name), proposal = QString::fromStdString(*new_name);
  const auto open = [shown, proposal, chosen](const std::function<void(int)>& answered) {
    auto* dialog = new LongFilenameDialog(shown, proposal, [chosen, answered](const QString* newfile) {
      if (newfile != nullptr) *chosen = newfile->toStdString();
      answered(newfile != nullptr ? sRename : sSkip);
    });
    alert_open(dialog, nullptr, Qt::NonModal);
    return dialog;
  };
  if (desktop_qt_ask(sSkip, open) != sRename) return false;
  *new_name = *chosen;
  return true;
}
