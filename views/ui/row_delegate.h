// How a cell of the file list is drawn.
#pragma once

#include <QCache>
#include <QStaticText>
#include <QStyledItemDelegate>

// Draws the background as the style does, leaves the focus to the row, and lays a text out once where the
// style does so three times at each painting: owners, dates and permissions are alike in most rows, and those
// that scroll back are known.
class RowDelegate : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override;

 private:
  QStaticText laid_out(const QString& text, const QFont& font, Qt::LayoutDirection direction) const;
  void draw_text(QPainter* painter, const QStyleOptionViewItem& cell, const QRect& room) const;

  mutable QCache<QString, QStaticText> texts_{2000};
  mutable QFont font_;  // the one that texts_ are laid out in
  mutable Qt::LayoutDirection direction_ = Qt::LeftToRight;
};
