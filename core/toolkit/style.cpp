#include "core/toolkit/style.h"

#include <QPainter>
#include <QPixmapCache>
#include <QStyleOption>

#include "core/toolkit/icons.h"

namespace {

// So wide that the lines at both ends stand in it, and something of what is between them.
constexpr int kSlice = 8;

// What the slice of a control that looks the same from left to right depends on; empty for all others.
QString look(QStyle::ControlElement element, const QStyleOption& option, qreal ratio) {
  if (!(option.state & QStyle::State_Horizontal) || option.rect.width() <= kSlice) return {};
  int kind = 0;
  if (const auto* header = qstyleoption_cast<const QStyleOptionHeader*>(&option);
      header && element == QStyle::CE_HeaderSection)
    kind = 1 + header->position;
  if (const auto* bar = qstyleoption_cast<const QStyleOptionToolBar*>(&option);
      bar && element == QStyle::CE_ToolBar)
    kind = 100 + bar->positionOfLine + 10 * bar->positionWithinLine + 100 * bar->toolBarArea;
  if (kind == 0) return {};
  return QStringLiteral("zan-slice:%1:%2:%3:%4:%5")
      .arg(kind)
      .arg(int(option.state))
      .arg(option.rect.height())
      .arg(option.palette.cacheKey())
      .arg(ratio);
}

void draw_out(const QPixmap& slice, const QRect& all, QPainter* painter) {
  const int end = kSlice / 2, cut = slice.width() / 2, height = slice.height();
  painter->drawPixmap(QRect(all.left(), all.top(), end, all.height()), slice, QRect(0, 0, cut, height));
  painter->drawPixmap(all.adjusted(end, 0, -end, 0), slice, QRect(cut, 0, 1, height));
  painter->drawPixmap(QRect(all.right() + 1 - end, all.top(), end, all.height()), slice,
                      QRect(slice.width() - cut, 0, cut, height));
}

}  // namespace

QIcon ZanStyle::standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const {
  if (which == SP_ToolBarHorizontalExtensionButton) return icon_get("tb_more");
  return QProxyStyle::standardIcon(which, option, widget);
}

void ZanStyle::drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                           const QWidget* widget) const {
  const bool uniform = element == CE_HeaderSection || element == CE_ToolBar;
  const qreal ratio = painter->device()->devicePixelRatio();
  const QString key =
      uniform && baseStyle()->name() == QLatin1String("fusion") ? look(element, *option, ratio) : QString();
  if (key.isEmpty()) return QProxyStyle::drawControl(element, option, painter, widget);
  const QSize size(kSlice, option->rect.height());
  QPixmap slice;
  if (!QPixmapCache::find(key, &slice)) {
    slice = QPixmap(size * ratio);
    slice.setDevicePixelRatio(ratio);
    slice.fill(Qt::transparent);
    QPainter own(&slice);
    const auto draw = [&](auto narrow) {
      narrow.rect = QRect(QPoint(), size);
      QProxyStyle::drawControl(element, &narrow, &own, widget);
    };
    if (element == CE_ToolBar)
      draw(*qstyleoption_cast<const QStyleOptionToolBar*>(option));
    else
      draw(*qstyleoption_cast<const QStyleOptionHeader*>(option));
    own.end();
    QPixmapCache::insert(key, slice);
  }
  draw_out(slice, option->rect, painter);
}
