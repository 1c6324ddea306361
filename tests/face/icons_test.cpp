#include "core/toolkit/icons.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QBuffer>
#include <QDir>
#include <QImageReader>
#include <QPalette>

// The image as an SVG reader draws it, with that colour for its ink.
static QImage drawn(const QString& path, int side, const QColor& ink) {
  QFile file(path);
  EXPECT_TRUE(file.open(QIODevice::ReadOnly));
  QBuffer buffer;
  buffer.setData(file.readAll().replace("#1a1a1a", ink.name().toLatin1()));
  QImageReader reader(&buffer, "svg");
  reader.setScaledSize(QSize(side, side));
  return reader.read();
}

TEST(Icons, EveryImageIsDrawnInTheTextsColour) {
  const QPalette before = QApplication::palette();
  const QFileInfoList files = QDir(QStringLiteral(":/icons")).entryInfoList();
  EXPECT_GE(files.size(), 25);
  for (const QColor& ink : {QColor(26, 26, 26), QColor(Qt::white), QColor(200, 60, 20)}) {
    QPalette palette = before;
    palette.setColor(QPalette::ButtonText, ink);
    QApplication::setPalette(palette);
    for (const QFileInfo& file : files) {
      for (int side : {16, 18, 20, 33}) {
        const QString name = file.completeBaseName();
        const QImage image = icon_get(name.toLatin1()).pixmap(side).toImage();
        const QImage want = drawn(file.filePath(), side, ink);
        ASSERT_EQ(image.size(), want.size()) << name.toStdString();
        int painted = 0, apart = 0;
        for (int i = 0; i < side * side; ++i) {
          const QColor is = image.pixelColor(i % side, i / side),
                       should = want.pixelColor(i % side, i / side);
          painted += is.alpha() > 32;
          apart += should.alpha() > 64 &&
                   std::abs(is.red() - should.red()) + std::abs(is.blue() - should.blue()) > 16;
        }
        EXPECT_GT(painted, 12) << name.toStdString();
        EXPECT_EQ(apart, 0) << name.toStdString() << ' ' << side << ' ' << ink.name().toStdString();
      }
    }
  }
  QApplication::setPalette(before);
}
