#include "commands/ui/symlink_dlg.h"

#include <QDialog>
#include <QMainWindow>
#include <QPointer>

#include "commands/symlink.h"
#include "core/toolkit/dialogs.h"
#include "core/toolkit/message.h"
#include "dirmodel/dir_record.h"
#include "ui_symlink_dlg.h"
#include "views/fname.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"

namespace {

constexpr int OVERWRITE_OK = 2;  // in SYMLINK_BUTTONS

class SymlinkDialog : public BusyDialog {
 public:
  explicit SymlinkDialog(const char* source) : BusyDialog(base_window()), source_(source) {
    ui_.setupUi(this);
    const QString shown = QString::fromUtf8(fname_decode(source));
    ui_.symlink_src_lbl->setText(shown);
    ui_.symlink_src_lbl->setToolTip(tip_text(shown));
    ui_.symlink_dst_txt->setFocus();
    connect(ui_.symlink_create, &QPushButton::clicked, this, [this] { create(); });
    connect(ui_.symlink_cancel, &QPushButton::clicked, this, &QDialog::reject);
  }

 private:
  void create() {
    if (busy_) return;
    const QPointer<SymlinkDialog> alive(this);
    busy_ = true;
    const SymlinkStep last = run_steps();
    if (!alive) return;
    if (given_up_) return given_up();
    busy_ = false;
    if (last != SymlinkStep::DONE) return ui_.symlink_dst_txt->setFocus();
    accept();
    fl_refresh();
  }

  // Asks and tells until nothing is left to ask. The last step.
  SymlinkStep run_steps() {
    const QPointer<SymlinkDialog> alive(this);
    const std::string source = source_;  // the dialog may be gone after a question
    const std::string destination = ui_.symlink_dst_txt->text().toUtf8().toStdString();
    const bool by_path_manager = ui_.symlink_proclink_tgl->isChecked();
    bool overwrite = false;
    for (;;) {
      const SymlinkResult result = symlink_create(gDir.path, source, destination, by_path_manager, overwrite);
      if (alive && given_up_) return result.step;
      const QString title = QString::fromStdString(result.title), text = QString::fromStdString(result.text);
      if (result.step == SymlinkStep::NOTICE) walert(this, title, text, "&Close");
      if (result.step != SymlinkStep::ASK) return result.step;
      if (walert(this, title, text, SYMLINK_BUTTONS) != OVERWRITE_OK) return result.step;
      overwrite = true;
    }
  }

  Ui::symlink_dlg ui_;
  const std::string source_;  // as on disk: not every name can be had back from the text that shows it
};

const char* first_selected() {
  for (int32_t i = 0; i < gDir.count; i++) {
    if (gDir.entries[i]->flags & ENTRY_SELECTED) return gDir.entries[i]->name;
  }
  return nullptr;
}

}  // namespace

void symlink_dlg_open() {
  const char* source = first_selected();
  if (source) dialog_open_one<SymlinkDialog>(base_window(), source);
}
