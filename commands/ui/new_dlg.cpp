#include "commands/ui/new_dlg.h"

#include <QDialog>
#include <QMainWindow>
#include <QPointer>

#include "commands/new_item.h"
#include "commands/ui/show_entry.h"
#include "core/texts.h"
#include "core/toolkit/dialogs.h"
#include "core/toolkit/message.h"
#include "dirmodel/dir_record.h"
#include "ui_new_dlg.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"
#include "views/ui/status_bar.h"

namespace {

class NewDialog : public BusyDialog {
 public:
  NewDialog() : BusyDialog(base_window()) {
    ui_.setupUi(this);
    const bool file = gNew_op == 1;
    setWindowTitle(QString::fromUtf8(text_get(file ? "txt_003" : "txt_004")));
    ui_.new_label->setText(QString::fromUtf8(text_get(file ? "txt_005" : "txt_006")));
    ui_.new_name->setAccessibleName(ui_.new_label->text());
    ui_.new_name->setFocus();
    connect(ui_.new_create, &QPushButton::clicked, this, [this] { create(); });
    connect(ui_.new_cancel, &QPushButton::clicked, this, &QDialog::reject);
  }

 private:
  // Stays open when nothing was created, so that the name can be mended.
  void create() {
    if (busy_) return;  // events run while the file system takes its time
    const QPointer<NewDialog> alive(this);
    busy_ = true;
    const NewItemResult result =
        new_item_create(gNew_op, gDir.path, ui_.new_name->text().toUtf8().toStdString());
    if (!alive) return;
    if (given_up_) return given_up();
    if (!result.message.empty()) wreport(this, "Error", "%s", result.message.c_str());
    if (!alive) return;
    if (!result.name.empty()) {
      fl_refresh();
      status_bar_update();
      show_entry(result.name, true);
    }
    if (!alive) return;
    busy_ = false;
    if (result.created) {
      accept();
      wfocus(base_find_widget("filelist"));
    } else {
      ui_.new_name->setFocus();
    }
  }

  Ui::new_dlg ui_;
};

}  // namespace

void new_dlg_open(int kind) {
  if (dialog_one<NewDialog>()) return;
  gNew_op = kind;
  dialog_open_one<NewDialog>(base_window());
}
