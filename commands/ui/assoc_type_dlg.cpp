#include "commands/ui/assoc_type_dlg.h"

#include <QDialog>
#include <QLineEdit>

#include "commands/associations.h"
#include "core/toolkit/dialogs.h"
#include "core/toolkit/message.h"
#include "ui_assoc_type_dlg.h"

namespace {
// One reading of the file takes 1023 bytes, the newline included. A longer line would come back in pieces,
// and the next start would refuse the file.
constexpr int kLongestLine = 1022;

// A field's text as it can stand in a line of the file.
QByteArray field_text(const QLineEdit* field) {
  QString text = field->text();
  for (const QChar c : {QChar(u'\n'), QChar(u'\r'), QChar(u'\0'), QChar(QChar::LineSeparator),
                        QChar(QChar::ParagraphSeparator)})
    text.replace(c, QChar(u' '));
  return text.toUtf8();
}

class AssocTypeDialog : public QDialog {
 public:
  AssocTypeDialog(QWidget* parent, const std::string& line, std::function<void(const std::string&)> stored)
      : QDialog(parent), stored_(std::move(stored)) {
    ui_.setupUi(this);
    const Association old = as_parse_line(line.c_str());
    ui_.at_pattern->setText(QString::fromStdString(old.pattern));
    ui_.at_command->setText(QString::fromStdString(old.open_cmd));
    ui_.at_view_cmd->setText(QString::fromStdString(old.view_cmd));
    ui_.at_edit_cmd->setText(QString::fromStdString(old.edit_cmd));
    ui_.at_pattern->setFocus();
    connect(ui_.at_done, &QPushButton::clicked, this, [this] { at_done(); });
    connect(ui_.at_cancel, &QPushButton::clicked, this, &QDialog::reject);
    wblock(parent, 1);
  }

  void done(int result) override {
    wblock(parentWidget(), 0);
    QDialog::done(result);
  }

 private:
  void at_done() {
    QByteArray pattern = field_text(ui_.at_pattern);
    if (pattern.isEmpty() || pattern.contains('\t')) {
      complain("Pattern cannot have TABs", ui_.at_pattern);
      return;
    }
    // A line that begins with '#' would be read as a comment: the same pattern, written so that it is none.
    if (pattern.startsWith('#')) pattern.replace(0, 1, "[#]");
    const QByteArray open = field_text(ui_.at_command), view = field_text(ui_.at_view_cmd),
                     edit = field_text(ui_.at_edit_cmd);
    if (open.isEmpty() && view.isEmpty() && edit.isEmpty()) {
      complain("No actions added for Open, View or Edit", ui_.at_command);
      return;
    }
    const QByteArray line = pattern + '\t' + open + '\t' + view + '\t' + edit;
    if (line.size() > kLongestLine) {
      complain("Association too long", ui_.at_command);
      return;
    }
    accept();
    stored_(line.toStdString());
  }

  void complain(const char* message, QWidget* field) {
    wreport(this, "ZAN", "%s", message);
    field->setFocus();
  }

  Ui::assoc_type_dlg ui_;
  std::function<void(const std::string&)> stored_;
};
}  // namespace

void assoc_type_dlg_open(QWidget* parent, const std::string& line,
                         std::function<void(const std::string&)> stored) {
  dialog_open(parent, new AssocTypeDialog(parent, line, std::move(stored)));
}
