#include "core/toolkit/icons.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QPainter>

#include "core/toolkit/drawing.h"

namespace {

// Draws on a canvas of 16 x 24 pixels, four from its top.
QImage drawn(const QByteArray& source, bool* whole) {
  QImage image(16, 24, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  painter.translate(0, 4);
  *whole = drawing_paint(source, &painter, QSize(16, 16));
  return image;
}

int painted_pixels(const QImage& image) {
  int count = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) count += qAlpha(image.pixel(x, y)) > 32;
  return count;
}

TEST(Icons, EveryImageIsDrawnWhole) {
  const QStringList names = QDir(QStringLiteral(":/icons")).entryList();
  EXPECT_GE(names.size(), 25);
  for (const QString& name : names) {
    QFile file(QStringLiteral(":/icons/") + name);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    bool whole;
    EXPECT_GT(painted_pixels(drawn(file.readAll(), &whole)), 12) << name.toStdString();
    EXPECT_TRUE(whole) << name.toStdString();
  }
}

TEST(Icons, AnythingElseIsRefusedAndHarmless) {
  for (const char* source :
       {"", "<svg", "<svg viewBox='0 0 0 0'/>", "<svg viewBox='0 0 9 9'><text/></svg>",
        "<svg viewBox='0 0 9 9'><path d='M1 1Q2 2 3 3'/></svg>", "<svg viewBox='0 0 9 9'><path d='L'/></svg>",
        "<svg viewBox='0 0 9 9'><path d='M1'/></svg>",
        "<svg viewBox='0 0 9 9'><path d='M1 1a2 2 0'/></svg>"}) {
    bool whole;
    drawn(source, &whole);
    EXPECT_FALSE(whole) << source;
  }
}

}  // namespace
