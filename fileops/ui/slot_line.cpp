#include "fileops/ui/slot_line.h"

#include <QPainter>
#include <QStyle>

#include "core/toolkit/dialogs.h"

SlotLine::SlotLine(QWidget* parent) : QLabel(parent) {
  setTextFormat(Qt::PlainText);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

QSize SlotLine::sizeHint() const {
  return {fontMetrics().averageCharWidth() * 78, fontMetrics().height()};
}

QSize SlotLine::minimumSizeHint() const {
  return {fontMetrics().averageCharWidth() * 20, fontMetrics().height()};
}

void SlotLine::paintEvent(QPaintEvent*) {
  QPainter painter(this);
  painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
  const QString whole = unturned(text());
  const QFontMetrics metrics = fontMetrics();
  const int space = metrics.horizontalAdvance(QLatin1Char(' '));
  const int column = metrics.horizontalAdvance(QStringLiteral("From:")) + space;
  const int colon = whole.indexOf(QStringLiteral(": "));
  const QString label = colon < 0 ? QString() : whole.left(colon + 1).trimmed();
  const QString path = colon < 0 ? whole.trimmed() : whole.mid(colon + 2);
  const bool known = colon >= 0 && metrics.horizontalAdvance(label) <= column;
  const QRect label_place(0, 0, column - space, height());
  const QRect path_place = known ? rect().adjusted(column, 0, 0, 0) : rect();
  if (known) painter.drawText(label_place, Qt::AlignRight | Qt::AlignVCenter | Qt::TextSingleLine, label);
  painter.drawText(path_place, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                   metrics.elidedText(known ? path : whole.trimmed(), Qt::ElideMiddle, path_place.width()));
}
