#include "commands/ui/pattern_dlg.h"

#include <QDialog>
#include <QLineEdit>
#include <QMainWindow>

#include "core/history.h"
#include "core/texts.h"
#include "core/toolkit/dialogs.h"
#include "core/toolkit/message.h"
#include "ui_pattern_dlg.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"
#include "views/ui/path_bar.h"
#include "views/ui/status_bar.h"

int32_t gPattern_op = 0;

namespace {

class PatternDialog : public QDialog {
 public:
  PatternDialog() : QDialog(base_window()) {
    ui_.setupUi(this);
    setWindowTitle(QString::fromUtf8(text_get(gPattern_op == 0 ? "txt_016" : "txt_017")));
    ui_.ppattern->setCompleter(nullptr);  // Enter must take what was typed, not a longer pattern of old
    gPatternList->flags |= 1;             // this combo box is new, whatever an earlier one was filled with
    cl_apply(gPatternList, ui_.ppattern);
    if (const char* newest = cl_get(gPatternList, 1)) {
      ui_.ppattern->setEditText(QString::fromUtf8(newest));
      ui_.ppattern->lineEdit()->selectAll();
    }
    ui_.ppattern->lineEdit()->setAccessibleName(ui_.ppattern->accessibleName());
    ui_.ppattern->setFocus();
    connect(ui_.pattern_ok, &QPushButton::clicked, this, [this] { select(); });
    connect(ui_.pattern_cancel, &QPushButton::clicked, this, &QDialog::reject);
  }

  void done(int result) override {
    QDialog::done(result);
    wblock(base_window(), 0);
    wfocus(base_find_widget("filelist"));
  }

 private:
  void select() {
    const QByteArray pattern = ui_.ppattern->currentText().toUtf8();
    if (!pattern.isEmpty()) {
      cl_add(gPatternList, pattern.constData());
      const bool include = ui_.pinclude->isChecked();
      if (gPattern_op == 0) {
        fl_select_pattern(pattern.constData(), include);
      } else {
        fl_unselect_pattern(pattern.constData(), include);
      }
      status_bar_update();
    }
    accept();
  }

  Ui::pattern_dlg ui_;
};

}  // namespace

void pattern_dlg_open(int op) {
  if (dialog_one<PatternDialog>()) return;
  gPattern_op = op;
  wblock(base_window(), 1);
  dialog_open_one<PatternDialog>(base_window());
}
