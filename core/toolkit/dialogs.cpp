#include "core/toolkit/dialogs.h"

#include <QBoxLayout>
#include <QDialog>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QTextDocument>
#include <algorithm>

#include "core/toolkit/message.h"

namespace {

constexpr QSize kFrame(16, 48);   // the window manager's share
constexpr int kLeastField = 160;  // pixels, where there is little room

// Puts all but the last row, the buttons, into an area that scrolls.
void dialog_scroll(QDialog* dialog) {
  auto* rows = qobject_cast<QBoxLayout*>(dialog->layout());
  if (!rows || rows->count() < 2) return;
  auto* area = new QScrollArea(dialog);
  area->setObjectName(QStringLiteral("dialog_scroll"));
  area->setFrameShape(QFrame::NoFrame);
  area->setFocusPolicy(Qt::NoFocus);
  area->setWidgetResizable(true);
  auto* page = new QWidget(dialog);
  auto* inner = new QVBoxLayout(page);
  inner->setContentsMargins(0, 0, 0, 0);
  inner->setSpacing(rows->spacing());
  while (rows->count() > 1) {
    QLayoutItem* item = rows->takeAt(0);
    if (QLayout* layout = item->layout()) {
      inner->addLayout(layout);
    } else if (QWidget* widget = item->widget()) {
      inner->addWidget(widget);
      delete item;
    } else {
      inner->addItem(item);
    }
  }
  for (auto* widget : page->findChildren<QWidget*>())
    widget->setMinimumWidth(std::min(widget->minimumWidth(), kLeastField));
  area->setWidget(page);
  rows->insertWidget(0, area, 1);
  rows->setSizeConstraint(QLayout::SetDefaultConstraint);
}

}  // namespace

QSize dialog_room(const QWidget* window) {
  const QScreen* screen = window->screen();
  return screen ? screen->availableSize() - kFrame : QSize(1024, 768);
}

void dialog_fit(QDialog* dialog) {
  const QSize room = dialog_room(dialog);
  QSize size = dialog->sizeHint().expandedTo(dialog->minimumSizeHint());
  const QSize least = dialog->minimumSizeHint();
  if (least.width() > room.width() || least.height() > room.height()) {
    dialog_scroll(dialog);
    const int bar = dialog->style()->pixelMetric(QStyle::PM_ScrollBarExtent) + 4;
    size += QSize(bar, bar);
  }
  dialog->resize(size.boundedTo(room));
}

void dialog_open(QWidget* parent, QDialog* dialog) {
  dialog->setAttribute(Qt::WA_DeleteOnClose);
  dialog->setWindowModality(Qt::WindowModal);
  dialog_fit(dialog);
  wcenter(parent, dialog);
  dialog->show();
  dialog->setAttribute(Qt::WA_KeyboardFocusChange);  // shows the focus now, not after the first Tab
}

QString tip_text(const QString& text) {
  return Qt::mightBeRichText(text) ? QLatin1String("<qt>") + text.toHtmlEscaped() : text;
}

QString unturned(QString text) {
  const auto turns = [](QChar c) {
    return (c >= QChar(0x202a) && c <= QChar(0x202e)) || (c >= QChar(0x2066) && c <= QChar(0x2069));
  };
  if (std::any_of(text.cbegin(), text.cend(), turns))
    std::replace_if(text.begin(), text.end(), turns, QChar(QChar::ReplacementCharacter));
  return text;
}
