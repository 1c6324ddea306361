// The desktop's style, without what it costs before the first paint.
#pragma once

#include <QProxyStyle>

// Every menu bar and tool bar asks its style for the image of the button that shows what found no room. Ours
// is drawn when that button is: the style's would have all image plug-ins looked through and files read for
// each start, and is dark in dark palettes.
// The toolkit's own style draws each header section anew, in lines of so many single pixels that it hands
// them to threads; here a slice of it is drawn once and drawn out to the width of the sections.
class ZanStyle : public QProxyStyle {
 public:
  // name: the style's, as the desktop has chosen it.
  explicit ZanStyle(const QString& name) : QProxyStyle(name) { setObjectName(name); }
  QIcon standardIcon(StandardPixmap which, const QStyleOption* option, const QWidget* widget) const override;
  void drawControl(ControlElement element, const QStyleOption* option, QPainter* painter,
                   const QWidget* widget) const override;
};
