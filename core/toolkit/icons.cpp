#include "core/toolkit/icons.h"

#include <QApplication>
#include <QFile>
#include <QHash>
#include <QIconEngine>
#include <QPainter>
#include <QPalette>
#include <QPixmapCache>
#include <QResource>
#include <cstring>

#include "core/toolkit/icon_pack.h"

namespace {

struct ThemeName {
  const char* name;
  const char* freedesktop;
};
// Only whole families are taken from a theme: row images have no freedesktop names for their link and cut
// forms, and a list half in one style and half in another is harder to read.
const ThemeName kThemeNames[] = {
    {"tb_back", "go-previous"},
    {"tb_forward", "go-next"},
    {"tb_up", "go-up"},
    {"tb_home", "go-home"},
    {"tb_refresh", "view-refresh"},
    {"tb_add", "bookmark-new"},
    {"tb_hotlist", "view-sidetree"},
    {"tb_cut", "edit-cut"},
    {"tb_copy", "edit-copy"},
    {"tb_paste", "edit-paste"},
    {"alert_question", "dialog-question"},
    {"alert_notice", "dialog-information"},
};

QColor ink_color(QIcon::Mode mode) {
  const QPalette palette = QApplication::palette();
  if (mode == QIcon::Disabled) return palette.color(QPalette::Disabled, QPalette::ButtonText);
  if (mode == QIcon::Selected) return palette.color(QPalette::HighlightedText);
  return palette.color(QPalette::Active, QPalette::ButtonText);
}

// The toolkit's SVG reader is a plugin that costs more to load than all else that a window shows: it is asked
// only for sizes that the build has not drawn.
QImage drawn_icon(const QString& name, const QSize& size, const QColor& ink) {
  QFile file(QStringLiteral(":/icons/%1.svg").arg(name));
  if (!file.open(QIODevice::ReadOnly)) return {};
  return icon_draw(file.readAll(), size, ink.name().toLatin1());
}

QImage unpacked(const uchar* data, int side, const QColor& colour) {
  QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
  const uchar* ink = data + side * side * 4;
  const uint add = colour.rgb() & 0xffffff;
  for (int y = 0; y < side; ++y) {
    QRgb* line = reinterpret_cast<QRgb*>(image.scanLine(y));
    std::memcpy(line, data + y * side * 4, size_t(side) * 4);
    for (int x = 0; x < side; ++x, ++ink) {
      const uint part = *ink;
      if (part == 0 || add == 0) continue;
      line[x] += ((add >> 16) * part / 255) << 16 | ((add >> 8 & 0xff) * part / 255) << 8 |
                 (add & 0xff) * part / 255;
    }
  }
  return image;
}

// The image as the build has drawn it, with the ink's colour; with no side, of any size. Null when there is
// none.
QImage packed_icon(const QString& name, int side, const QColor& ink) {
  static const QResource pack(QStringLiteral(":/icons.pack"));
  const uchar* data = pack.data();
  uint32_t count = 0;
  if (data) std::memcpy(&count, data, sizeof count);
  for (uint32_t i = 0; i < count; ++i) {
    PackedIcon icon;
    std::memcpy(&icon, data + sizeof count + i * sizeof icon, sizeof icon);
    if ((side == 0 || int(icon.side) == side) && name == QLatin1String(icon.name))
      return unpacked(data + icon.offset, int(icon.side), ink);
  }
  return {};
}

QImage icon_image(const QString& name, const QSize& size, const QColor& ink) {
  QImage image = size.width() == size.height() ? packed_icon(name, size.width(), ink) : QImage();
  if (image.isNull()) image = drawn_icon(name, size, ink);
  if (image.isNull())
    image = packed_icon(name, 0, ink).scaled(size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
  return image;
}

class SvgEngine : public QIconEngine {
 public:
  explicit SvgEngine(const QString& name) : name_(name) {}
  QIconEngine* clone() const override { return new SvgEngine(name_); }
  QString iconName() override { return name_; }

  // What a window's image is made in; without these, sizes that hardly a window manager shows are drawn, too.
  QList<QSize> availableSizes(QIcon::Mode, QIcon::State) override { return {{16, 16}, {32, 32}, {48, 48}}; }

  QPixmap pixmap(const QSize& size, QIcon::Mode mode, QIcon::State state) override {
    return scaledPixmap(size, mode, state, 1.0);
  }

  // size is in device pixels here, as for every engine.
  QPixmap scaledPixmap(const QSize& size, QIcon::Mode mode, QIcon::State, qreal) override {
    const QColor ink = ink_color(mode);
    const QString key = QStringLiteral("zan:%1:%2x%3:%4:%5")
                            .arg(name_)
                            .arg(size.width())
                            .arg(size.height())
                            .arg(mode == QIcon::Disabled)
                            .arg(ink.name());
    QPixmap pixmap;
    if (QPixmapCache::find(key, &pixmap)) return pixmap;
    pixmap = draw(size, mode, ink);
    QPixmapCache::insert(key, pixmap);
    return pixmap;
  }

  void paint(QPainter* painter, const QRect& rect, QIcon::Mode mode, QIcon::State state) override {
    const qreal ratio = painter->device()->devicePixelRatio();
    painter->drawPixmap(rect, scaledPixmap(rect.size() * ratio, mode, state, ratio));
  }

 private:
  QPixmap draw(const QSize& size, QIcon::Mode mode, const QColor& ink) const {
    const QImage image = icon_image(name_, size, ink);
    if (mode != QIcon::Disabled) return QPixmap::fromImage(image);
    QImage faded(image.size(), QImage::Format_ARGB32_Premultiplied);
    faded.fill(Qt::transparent);
    QPainter painter(&faded);
    painter.setOpacity(0.45);
    painter.drawImage(0, 0, image);
    painter.end();
    return QPixmap::fromImage(faded);
  }

  QString name_;
};

// Looking into the bare fallback theme costs milliseconds, and none of these images is in it.
bool has_theme() {
  static const bool has = !QIcon::themeName().isEmpty() && QIcon::themeName() != QLatin1String("hicolor");
  return has;
}

QIcon icon_from_theme(const QString& name) {
  if (!has_theme()) return {};
  for (const ThemeName& known : kThemeNames) {
    if (name != QLatin1String(known.name)) continue;
    const QString freedesktop = QLatin1String(known.freedesktop);
    return QIcon::hasThemeIcon(freedesktop) ? QIcon::fromTheme(freedesktop) : QIcon();
  }
  return {};
}

}  // namespace

QIcon icon_get(const char* name) {
  static QHash<QString, QIcon> icons;
  const QString key = QString::fromLatin1(name);
  auto found = icons.constFind(key);
  if (found != icons.constEnd()) return *found;
  QIcon icon = icon_from_theme(key);
  if (icon.isNull()) icon = QIcon(new SvgEngine(key));
  icons.insert(key, icon);
  return icon;
}
