// The header of a list's columns.
#pragma once

#include <QHeaderView>

// Measures its sections in the weight they are painted in: QHeaderView has a bold font loaded for it, which
// no list shows, and measures every section again for each layout.
class PlainHeader : public QHeaderView {
 public:
  explicit PlainHeader(QWidget* parent) : QHeaderView(Qt::Horizontal, parent) {}
  QSize sizeHint() const override;

 protected:
  QSize sectionSizeFromContents(int section) const override;
};
