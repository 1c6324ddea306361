#include "core/toolkit/icons.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QPainter>

#include "core/toolkit/drawing.h"

TEST(Icons, EveryImageIsDrawnWhole) {
  const QStringList names = QDir(QStringLiteral(":/icons")).entryList();
  EXPECT_GE(names.size(), 25);
  for (const QString& name : names) {
    QFile file(QStringLiteral(":/icons/") + name);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    QImage image(16, 16, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    EXPECT_TRUE(drawing_paint(file.readAll(), &painter, image.size())) << name.toStdString();
    int painted = 0;
    for (int i = 0; i < 16 * 16; ++i) painted += qAlpha(image.pixel(i % 16, i / 16)) > 32;
    EXPECT_GT(painted, 12) << name.toStdString();
  }
}
