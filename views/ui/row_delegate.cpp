#include "views/ui/row_delegate.h"

#include <QPainter>
#include <QWidget>
#include <algorithm>

#include "core/toolkit/dialogs.h"

namespace {

QPalette::ColorGroup cell_colours(const QStyleOptionViewItem& cell) {
  if (!(cell.state & QStyle::State_Enabled)) return QPalette::Disabled;
  return cell.state & QStyle::State_Active ? QPalette::Active : QPalette::Inactive;
}

void draw_cell_icon(QPainter* painter, const QStyleOptionViewItem& cell, const QRect& room) {
  const QIcon::Mode mode = !(cell.state & QStyle::State_Enabled) ? QIcon::Disabled
                           : cell.state & QStyle::State_Selected ? QIcon::Selected
                                                                 : QIcon::Normal;
  const QRect place =
      QStyle::alignedRect(cell.direction, cell.decorationAlignment, cell.decorationSize, room);
  cell.icon.paint(painter, place, cell.decorationAlignment, mode);
}

}  // namespace

QSize RowDelegate::sizeHint(const QStyleOptionViewItem& option, const QModelIndex&) const {
  const int text = option.fontMetrics.height() + 6;
  return QSize(option.rect.width(), std::max(text, option.decorationSize.height() + 4));
}

QStaticText RowDelegate::laid_out(const QString& text, const QFont& font,
                                  Qt::LayoutDirection direction) const {
  if (font != font_ || direction != direction_) texts_.clear();
  font_ = font;
  direction_ = direction;
  if (const QStaticText* known = texts_.object(text)) return *known;
  QStaticText made(unturned(text));
  made.setTextFormat(Qt::PlainText);
  QTextOption plain;
  plain.setTextDirection(direction);
  plain.setWrapMode(QTextOption::NoWrap);
  made.setTextOption(plain);
  made.setPerformanceHint(QStaticText::AggressiveCaching);
  made.prepare({}, font);
  texts_.insert(text, new QStaticText(made));
  return made;
}

void RowDelegate::draw_text(QPainter* painter, const QStyleOptionViewItem& cell, const QRect& room) const {
  painter->setFont(cell.font);
  painter->setPen(cell.palette.color(
      cell_colours(cell), cell.state & QStyle::State_Selected ? QPalette::HighlightedText : QPalette::Text));
  QStaticText text = laid_out(cell.text, painter->font(), cell.direction);
  if (text.size().width() > room.width())
    text = laid_out(cell.fontMetrics.elidedText(cell.text, cell.textElideMode, room.width()), painter->font(),
                    cell.direction);
  const QRect place = QStyle::alignedRect(cell.direction, cell.displayAlignment, text.size().toSize(), room);
  painter->drawStaticText(place.topLeft(), text);
}

void RowDelegate::paint(QPainter* painter, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const {
  QStyleOptionViewItem cell = option;
  initStyleOption(&cell, index);
  const QStyle& style = *cell.widget->style();
  const int margin = style.pixelMetric(QStyle::PM_FocusFrameHMargin, &cell, cell.widget) + 1;
  painter->save();
  painter->setClipRect(cell.rect);
  style.drawPrimitive(QStyle::PE_PanelItemViewItem, &cell, painter, cell.widget);
  QRect room = cell.rect;
  if (!cell.icon.isNull()) {
    QRect beside = room;
    beside.setWidth(cell.decorationSize.width() + 2 * margin);
    room.setLeft(beside.right() + 1);
    draw_cell_icon(painter, cell, QStyle::visualRect(cell.direction, cell.rect, beside));
  }
  room.adjust(margin, 0, -margin, 0);
  if (!cell.text.isEmpty()) draw_text(painter, cell, QStyle::visualRect(cell.direction, cell.rect, room));
  painter->restore();
}
