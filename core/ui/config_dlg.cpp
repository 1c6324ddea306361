#include "core/ui/config_dlg.h"

#include <QDialog>
#include <QFontDialog>
#include <QMainWindow>
#include <QScreen>
#include <QScrollBar>
#include <climits>
#include <cstdio>
#include <cstdlib>

#include "core/settings.h"
#include "core/state.h"
#include "core/toolkit/dialogs.h"
#include "core/toolkit/fonts.h"
#include "ui_config_dlg.h"
#include "views/charsets.h"
#include "views/fname.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"

namespace {

// One toggle of an exclusive group, with the flag bit it stands for.
struct Choice {
  QRadioButton* toggle;
  uint32_t bit;
};
using Choices = std::vector<Choice>;

// The bit of the first toggle that is on; the last one's when none is.
uint32_t chosen_bit(const Choices& choices) {
  for (const Choice& choice : choices) {
    if (choice.toggle->isChecked()) return choice.bit;
  }
  return choices.back().bit;
}

// As atoi reads it, but with a result for every text.
int32_t time_out_value(const QString& text) {
  const long value = strtol(text.toUtf8().constData(), nullptr, 10);
  return static_cast<int32_t>(std::clamp<long>(value, INT32_MIN, INT32_MAX));
}

template <size_t Size>
void store_text(char (&field)[Size], const QString& text) {
  snprintf(field, Size, "%s", text.toUtf8().constData());
}

class ConfigDialog : public QDialog {
 public:
  ConfigDialog();
  void accept() override {
    config_apply();
    QDialog::accept();
  }
  QSize sizeHint() const override;

 private:
  void stack_columns();
  std::vector<Choices> flag_groups() const;
  void fill_charsets();
  void choose_font(QLabel* label, const QPushButton* button, const QString& title);
  void config_setup();
  int config_apply();
  void apply_font(char (&field)[255], const QLabel* label, const char* widget);
  void apply_encoding();

  Ui::config_dlg ui_;
};

ConfigDialog::ConfigDialog() : QDialog(base_window()) {
  ui_.setupUi(this);
  config_setup();
  stack_columns();
  ui_.cdot->setFocus();
  connect(ui_.clist_select, &QPushButton::clicked, this,
          [this] { choose_font(ui_.clist_font, ui_.clist_select, QStringLiteral("Select File List Font")); });
  connect(ui_.ctree_select, &QPushButton::clicked, this,
          [this] { choose_font(ui_.ctree_font, ui_.ctree_select, QStringLiteral("Select Tree Font")); });
  connect(ui_.capply, &QPushButton::clicked, this, [this] { accept(); });
  connect(ui_.ccancel, &QPushButton::clicked, this, &QDialog::reject);
}

// Where the columns do not fit side by side, as on a small screen at twice the scale, they stand one below
// the other.
void ConfigDialog::stack_columns() {
  if (sizeHint().width() <= screen()->availableSize().width()) return;
  ui_.config_columns->setDirection(QBoxLayout::TopToBottom);
  ui_.config_line->setFrameShape(QFrame::HLine);
}

// Big enough to show the whole page: the scroll area alone would be content with less.
QSize ConfigDialog::sizeHint() const {
  const QMargins margins = layout()->contentsMargins();
  ui_.config_page->layout()->activate();  // it was measured before its texts were set
  const QSize page = ui_.config_page->sizeHint();
  const int bar = ui_.config_scroll->verticalScrollBar()->sizeHint().width();
  return QSize(page.width() + bar + margins.left() + margins.right(),
               page.height() + ui_.capply->sizeHint().height() + layout()->spacing() + margins.top() +
                   margins.bottom());
}

std::vector<Choices> ConfigDialog::flag_groups() const {
  return {
      {{ui_.overwrite, SET_OVERWRITE}, {ui_.overwrite_prompt, 0}},
      {{ui_.sym_prompt, SET_SYM_PROMPT},
       {ui_.sym_symlinks, SET_SYM_SYMLINKS},
       {ui_.sym_files, SET_SYM_FILES}},
      {{ui_.rm1_prompt, SET_RM1_PROMPT},
       {ui_.rm1_prompt_nowr, SET_RM1_PROMPT_NOWR},
       {ui_.rm1_no_prompt, SET_RM1_NO_PROMPT}},
      {{ui_.rm_prompt, SET_RM_PROMPT}, {ui_.rm_no_prompt, SET_RM_NO_PROMPT}},
      {{ui_.rm_i_prompt, SET_RM_I_PROMPT},
       {ui_.rm_i_prompt_nowr, SET_RM_I_PROMPT_NOWR},
       {ui_.rm_i_no_prompt, SET_RM_I_NO_PROMPT}},
      {{ui_.change_owner_dialog_assume_ignore, SET_OWNER_ASSUME_IGNORE}, {ui_.change_owner_dialog_show, 0}},
      {{ui_.cenc_utf8_alternate, SET_ENC_UTF8_ALTERNATE},
       {ui_.cenc_alternate, SET_ENC_ALTERNATE},
       {ui_.cenc_utf8, 0}},
  };
}

// The first item stands for none; its data, and every other item's, is the name.
void ConfigDialog::fill_charsets() {
  ui_.cenc->addItem(QStringLiteral("(none)"), QString());
  for (const std::string& name : charset_names()) {
    ui_.cenc->addItem(QString::fromStdString(name), QString::fromStdString(name));
  }
  const QString own = QString::fromUtf8(gConfig->encoding);
  if (ui_.cenc->findData(own) < 0 && fname_charset_opens(gConfig->encoding)) ui_.cenc->addItem(own, own);
  ui_.cenc->setCurrentIndex(std::max(0, ui_.cenc->findData(own)));
}

void ConfigDialog::config_setup() {
  fill_charsets();
  ui_.cto->setText(QString::number(gConfig->type_ahead_ms));
  ui_.clist_font->setText(QString::fromUtf8(gConfig->list_font));
  ui_.ctree_font->setText(QString::fromUtf8(gConfig->tree_font));
  ui_.clist_font->setToolTip(ui_.clist_font->text());
  ui_.ctree_font->setToolTip(ui_.ctree_font->text());
  ui_.cdot->setChecked(gConfig->flags & SET_HIDE_DOT);
  ui_.cdirs->setChecked(gConfig->cdirs > 0);
  for (const Choices& choices : flag_groups()) {
    uint32_t mask = 0;
    for (const Choice& choice : choices) mask |= choice.bit;
    for (const Choice& choice : choices) {
      if (choice.bit ? gConfig->flags & choice.bit : !(gConfig->flags & mask))
        choice.toggle->setChecked(true);
    }
  }
}

void ConfigDialog::choose_font(QLabel* label, const QPushButton* button, const QString& title) {
  const QFont start = font_from_name(label->text());
  auto* chooser = new QFontDialog(start, this);
  chooser->setAttribute(Qt::WA_DeleteOnClose);
  chooser->setWindowTitle(title);
  connect(chooser, &QFontDialog::fontSelected, label, [label, start](const QFont& font) {
    if (font == start) return;
    label->setText(font_name(font));
    label->setToolTip(label->text());
  });
  const QRect desktop = button->screen()->availableGeometry();
  const QPoint corner = button->mapToGlobal(QPoint(0, 0));
  const QSize size = chooser->sizeHint();
  chooser->move(std::max(desktop.left(), std::min(corner.x(), desktop.right() - size.width())),
                std::max(desktop.top(), std::min(corner.y(), desktop.bottom() - size.height())));
  chooser->open();
}

int ConfigDialog::config_apply() {
  gConfig->cdirs = ui_.cdirs->isChecked() ? 2 : 0;
  uint32_t flags = gConfig->flags & ~SET_HIDE_DOT;
  if (ui_.cdot->isChecked()) flags |= SET_HIDE_DOT;
  gOptions = ui_.cdot->isChecked() ? gOptions & ~OPT_DOT_PAIR : gOptions | OPT_DOT_PAIR;
  for (const Choices& choices : flag_groups()) {
    for (const Choice& choice : choices) flags &= ~choice.bit;
    flags |= chosen_bit(choices);
  }
  gConfig->flags = flags;
  gConfig->type_ahead_ms = time_out_value(ui_.cto->text());
  apply_font(gConfig->tree_font, ui_.ctree_font, "tree");
  // The columns go with the font: what they showed of their texts before, they show after it.
  Settings widths = *gConfig;
  base_get_divider_metrics(&widths);
  apply_font(gConfig->list_font, ui_.clist_font, "filelist");
  base_set_divider_metrics(&widths);
  apply_encoding();
  fl_refresh();
  return 0;
}

void ConfigDialog::apply_font(char (&field)[255], const QLabel* label, const char* widget) {
  if (label->text() == QString::fromUtf8(field)) return;
  store_text(field, label->text());
  font_apply(base_find_widget(widget), field);
}

void ConfigDialog::apply_encoding() {
  std::fill(std::begin(gConfig->encoding), std::end(gConfig->encoding), '\0');
  store_text(gConfig->encoding, ui_.cenc->currentData().toString());
  gConfig->encoding_end = 0;
  fname_set_translation(gConfig->encoding);
}

}  // namespace

void config_dlg_open() {
  dialog_open_one<ConfigDialog>(base_window());
}
