#include "fileops/ui/slot_row.h"

#include "core/toolkit/message.h"
#include "fileops/fop_progress.h"
#include "ui_slot.h"
#include "views/fname.h"

namespace {
QString shown_name(const std::string& name) {
  return QString::fromUtf8(fname_decode(name.c_str()));
}
}  // namespace

SlotRow::SlotRow(int kind, const std::string& source_dir, const std::vector<std::string>& names,
                 const std::string& destination)
    : ui_(new Ui::slot) {
  ui_->setupUi(this);
  setFixedHeight(sizeHint().height());
  info.slot = this;
  describe(kind, source_dir, names, destination);
  connect(ui_->slot_pause, &QPushButton::toggled, this, [this] { slot_pause_cb(); });
  connect(ui_->cancel_button, &QPushButton::clicked, this, [this] { slot_cancel_cb(); });
}

SlotRow::~SlotRow() {
  if (question_) question_->close();
}

// What a screen reader says of the row and its buttons, of which there may be many alike.
void SlotRow::describe(int kind, const std::string& source_dir, const std::vector<std::string>& names,
                       const std::string& destination) {
  static const char* const verbs[] = {"Copying", "Moving", "Deleting"};
  QString what = QString::fromUtf8(verbs[kind >= 0 && kind <= 2 ? kind : 0]) + QLatin1Char(' ');
  what += names.size() == 1 ? shown_name(names.front()) : QStringLiteral("%1 items").arg(names.size());
  what += QStringLiteral(" from ") + shown_name(source_dir);
  if (!destination.empty()) what += QStringLiteral(" to ") + shown_name(destination);
  setAccessibleName(what);
  ui_->slot_pause->setAccessibleName(QStringLiteral("Pause: ") + what);
  ui_->cancel_button->setAccessibleName(QStringLiteral("Cancel: ") + what);
  ui_->slot_progress_bar->setAccessibleName(what);
}

void SlotRow::show_info(const fop_info& shown) {
  ui_->slot_header_text->setText(QString::fromUtf8(shown.header));
  ui_->slot_from_text->setText(QString::fromStdString(fop_from_line(shown)));
  ui_->slot_to_text->setText(QString::fromStdString(fop_to_line(shown)));
  ui_->slot_n_text->setText(QString::fromStdString(fop_count_text(shown)));
  ui_->slot_progress_bar->setValue(shown.percent);
  ui_->slot_time_text->setText(QString::fromStdString(fop_time_text(shown.time_left)));
}

void SlotRow::bind(std::shared_ptr<fop_control> control) {
  control_ = std::move(control);
}

QWidget* SlotRow::first_stop() const {
  return ui_->slot_pause;
}

QWidget* SlotRow::last_stop() const {
  return ui_->cancel_button;
}

void SlotRow::slot_pause_cb() {
  if (!control_) return;
  const bool paused = ui_->slot_pause->isChecked();
  control_->pause = paused;
  // A toggle that is down hardly differs from one that is up in dark colours.
  ui_->slot_progress_bar->setFormat(paused ? QStringLiteral("%p% paused") : QStringLiteral("%p%"));
}

// The worker holds still while the user decides; the row's buttons wait for the answer, other rows do not.
void SlotRow::slot_cancel_cb() {
  if (!control_ || question_) return;
  const int pause = control_->pause.exchange(1);
  ui_->slot_pause->setEnabled(false);
  ui_->cancel_button->setEnabled(false);
  const QPointer<SlotRow> alive(this);
  const auto control = control_;
  question_ = walert_open(window(), QStringLiteral("File Operation"),
                          QStringLiteral("Do you want to terminate this operation ? "), "@&Yes|#&No",
                          [alive, control, pause](int button) {
                            if (button == 1) control->cancel = 1;
                            control->pause = pause;
                            if (alive) alive->cancel_answered(button);
                          });
}

void SlotRow::cancel_answered(int button) {
  question_ = nullptr;
  ui_->slot_pause->setEnabled(button != 1);
  ui_->cancel_button->setEnabled(button != 1);
  if (button != 1) ui_->cancel_button->setFocus();
}
