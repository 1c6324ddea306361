#include "core/toolkit/header.h"

#include <QIcon>

QSize PlainHeader::sizeHint() const {
  return QSize(0, sectionSizeFromContents(0).height());
}

QSize PlainHeader::sectionSizeFromContents(int section) const {
  QStyleOptionHeader option;
  initStyleOption(&option);
  option.section = section;
  option.fontMetrics = fontMetrics();
  if (model()) {
    option.text = model()->headerData(section, Qt::Horizontal, Qt::DisplayRole).toString();
    option.icon = qvariant_cast<QIcon>(model()->headerData(section, Qt::Horizontal, Qt::DecorationRole));
  }
  return style()->sizeFromContents(QStyle::CT_HeaderSection, &option, QSize(), this);
}
