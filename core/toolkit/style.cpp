#include "core/toolkit/style.h"

#include "core/toolkit/icons.h"

QIcon ZanStyle::standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const {
  if (which == SP_ToolBarHorizontalExtensionButton) return icon_get("tb_more");
  return QProxyStyle::standardIcon(which, option, widget);
}
