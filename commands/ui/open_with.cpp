#include "commands/ui/open_with.h"

#include <QDialog>
#include <QLineEdit>
#include <QMainWindow>
#include <vector>

#include "core/command.h"
#include "core/history.h"
#include "core/toolkit/dialogs.h"
#include "dirmodel/dir_record.h"
#include "ui_open_with.h"
#include "views/ui/base.h"
#include "views/ui/path_bar.h"

namespace {
// The names first: while a command is started, the list may be read anew.
std::vector<std::string> selected_file_names() {
  std::vector<std::string> names;
  for (int32_t i = 0; i < gDir.count; ++i) {
    const DirEntry& entry = *gDir.entries[i];
    if ((entry.flags & ENTRY_SELECTED) && !dir_entry_is_directory(entry)) names.push_back(entry.name);
  }
  return names;
}

class OpenWithDialog : public QDialog {
 public:
  OpenWithDialog() : QDialog(base_window()) {
    ui_.setupUi(this);
    ui_.ow_command->setCompleter(nullptr);  // Enter must take what was typed
    gWithList->flags |= 1;                  // this combo box is new, whatever an earlier one was filled with
    cl_apply(gWithList, ui_.ow_command);
    if (const char* newest = cl_get(gWithList, 1)) ui_.ow_command->setEditText(QString::fromUtf8(newest));
    ui_.ow_command->lineEdit()->selectAll();
    ui_.ow_command->lineEdit()->setAccessibleName(ui_.ow_command->accessibleName());
    ui_.ow_command->setFocus();
    connect(ui_.ow_open, &QPushButton::clicked, this, [this] { fm_open_with_cb(); });
    connect(ui_.ow_cancel, &QPushButton::clicked, this, &QDialog::reject);
  }

 private:
  void fm_open_with_cb() {
    const QByteArray command = ui_.ow_command->currentText().toUtf8();
    if (gDir.count > 0 && !command.isEmpty()) {
      cl_add(gWithList, command.constData());
      for (const std::string& name : selected_file_names()) file_cmd(command.constData(), name.c_str());
    }
    accept();
  }

  Ui::open_with ui_;
};

}  // namespace

void open_with_open() {
  dialog_open_one<OpenWithDialog>(base_window());
}
