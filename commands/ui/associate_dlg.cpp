#include "commands/ui/associate_dlg.h"

#include <QDialog>
#include <QKeyEvent>
#include <QMainWindow>
#include <QTreeWidget>

#include "commands/associations.h"
#include "commands/ui/assoc_type_dlg.h"
#include "core/state.h"
#include "core/toolkit/dialogs.h"
#include "ui_associate_dlg.h"
#include "views/ui/base.h"

namespace {
enum : int32_t { kAdding = 1, kChanging = 2 };

class AssociateDialog : public QDialog {
 public:
  AssociateDialog() : QDialog(base_window()) {
    ui_.setupUi(this);
    set_up_columns();
    ui_.as_list->installEventFilter(this);
    connect(ui_.as_list, &QTreeWidget::itemSelectionChanged, this, [this] { as_select(); });
    connect(ui_.as_list, &QTreeWidget::itemDoubleClicked, this, [this] { at_setup(kChanging); });
    connect(ui_.as_add, &QPushButton::clicked, this, [this] { at_setup(kAdding); });
    connect(ui_.as_edit, &QPushButton::clicked, this, [this] { at_setup(kChanging); });
    connect(ui_.as_remove, &QPushButton::clicked, this, [this] { as_remove(); });
    connect(ui_.as_done, &QPushButton::clicked, this, [this] { as_done(); });
    connect(ui_.as_cancel, &QPushButton::clicked, this, &QDialog::reject);
    as_setup();
    (atmp_.empty() ? static_cast<QWidget*>(ui_.as_add) : ui_.as_list)->setFocus();
  }

  QSize sizeHint() const override { return size_; }

  // The list's own keys: Enter changes the line, which the dialog would take for Done.
  bool eventFilter(QObject* object, QEvent* event) override {
    if (event->type() != QEvent::KeyPress) return QDialog::eventFilter(object, event);
    switch (static_cast<QKeyEvent*>(event)->key()) {
      case Qt::Key_Return:
      case Qt::Key_Enter:
        ui_.as_edit->click();
        return true;
      case Qt::Key_Delete:
        ui_.as_remove->click();
        return true;
      case Qt::Key_Insert:
        ui_.as_add->click();
        return true;
      default:
        return QDialog::eventFilter(object, event);
    }
  }

 private:
  // Wide enough for the default table at any font size.
  void set_up_columns() {
    const QFontMetrics metrics = ui_.as_list->fontMetrics();
    const int letter = metrics.averageCharWidth();
    const int letters[] = {34, 28, 28, 14};
    int width = ui_.as_add->sizeHint().width() + 8 * letter;
    for (int column = 0; column < 4; ++column) {
      ui_.as_list->setColumnWidth(column, letters[column] * letter);
      width += letters[column] * letter;
    }
    size_ = {width, 24 * metrics.lineSpacing()};
  }

  void as_setup() {
    for (int32_t i = 0; i < apat_ctr; ++i) atmp_.push_back(as_line(*apat[static_cast<size_t>(i)]));
    show_lines();
  }

  // All lines anew, the first one selected.
  void show_lines() {
    atmp_sel_ = 0;
    ui_.as_list->clear();
    for (const std::string& line : atmp_) {
      const Association association = as_parse_line(line.c_str());
      auto* item = new QTreeWidgetItem(ui_.as_list);
      int column = 0;
      for (const std::string& text :
           {association.pattern, association.open_cmd, association.view_cmd, association.edit_cmd}) {
        item->setText(column, QString::fromStdString(text));
        item->setToolTip(column++, tip_text(QString::fromStdString(text)));
      }
    }
    ui_.as_remove->setEnabled(!atmp_.empty());
    ui_.as_edit->setEnabled(!atmp_.empty());
    if (!atmp_.empty()) ui_.as_list->setCurrentItem(ui_.as_list->topLevelItem(0));
  }

  void as_select() {
    const QList<QTreeWidgetItem*> selected = ui_.as_list->selectedItems();
    atmp_sel_ = selected.isEmpty() ? 0 : ui_.as_list->indexOfTopLevelItem(selected[0]) + 1;
    ui_.as_remove->setEnabled(atmp_sel_ > 0);
    ui_.as_edit->setEnabled(atmp_sel_ > 0);
  }

  void as_remove() {
    if (atmp_sel_ == 0) return;
    const bool had_focus = ui_.as_remove->hasFocus();
    atmp_.erase(atmp_.begin() + atmp_sel_ - 1);
    show_lines();
    if (had_focus && atmp_.empty()) ui_.as_add->setFocus();
  }

  void at_setup(int32_t mode) {
    if (mode == kChanging && atmp_sel_ == 0) return;
    apat_mode_ = mode;
    const std::string line = mode == kChanging ? atmp_[static_cast<size_t>(atmp_sel_ - 1)] : "";
    assoc_type_dlg_open(this, line, [this](const std::string& stored) { store(stored); });
  }

  void store(const std::string& line) {
    if (apat_mode_ == kChanging)
      atmp_[static_cast<size_t>(atmp_sel_ - 1)] = line;
    else
      atmp_.push_back(line);
    show_lines();
  }

  void as_done() {
    as_replace(atmp_);
    as_write(gConfigPath, "associate.003");
    accept();
  }

  Ui::associate_dlg ui_;
  QSize size_;
  std::vector<std::string> atmp_;  // the working copy, one line an association
  int32_t atmp_sel_ = 0;           // from 1; 0: none
  int32_t apat_mode_ = 0;
};

}  // namespace

void associate_dlg_open() {
  dialog_open_one<AssociateDialog>(base_window());
}
