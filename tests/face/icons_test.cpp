#include "core/toolkit/icons.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QPainter>

#include "core/toolkit/drawing.h"

namespace {

int painted_pixels(const QImage& image) {
  int count = 0;
  for (int y = 0; y < image.height(); ++y)
    for (int x = 0; x < image.width(); ++x) count += qAlpha(image.pixel(x, y)) > 32;
  return count;
}

TEST(Icons, EveryImageIsDrawnWholeAtAnySize) {
  const QStringList names = QDir(QStringLiteral(":/icons")).entryList();
  EXPECT_GE(names.size(), 25);
  for (const QString& name : names) {
    QFile file(QStringLiteral(":/icons/") + name);
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    const QByteArray source = file.readAll();
    for (int side : {16, 36, 128}) {
      QImage image(side, side, QImage::Format_ARGB32_Premultiplied);
      image.fill(Qt::transparent);
      QPainter painter(&image);
      EXPECT_TRUE(drawing_paint(source, &painter, image.size())) << name.toStdString();
      painter.end();
      EXPECT_GT(painted_pixels(image), side * side / 20) << name.toStdString();
    }
  }
}

TEST(Icons, AnythingElseIsRefusedAndHarmless) {
  for (const char* source :
       {"", "<svg", "<svg viewBox='0 0 0 0'/>", "<svg viewBox='0 0 9 9'><text/></svg>",
        "<svg viewBox='0 0 9 9'><path d='M1 1Q2 2 3 3'/></svg>", "<svg viewBox='0 0 9 9'><path d='L'/></svg>",
        "<svg viewBox='0 0 9 9'><path d='M1'/></svg>",
        "<svg viewBox='0 0 9 9'><path d='M1 1a2 2 0'/></svg>"}) {
    QImage image(9, 9, QImage::Format_ARGB32_Premultiplied);
    QPainter painter(&image);
    EXPECT_FALSE(drawing_paint(source, &painter, image.size())) << source;
  }
}

TEST(Icons, ArcsBendTheRightWay) {
  const struct {
    const char* path;
    bool above, below;  // of the line between the arc's ends, at its middle
  } rows[] = {
      {"M2 8a6 6 0 0 1 12 0z", true, false}, {"M2 8a6 6 0 0 0 12 0z", false, true},
      {"M14 8A6 6 0 0 1 2 8z", false, true}, {"M6 8a6 6 0 1 1 4 0z", true, false},
      {"M6 8a6 6 0 1 0 4 0z", false, true},
  };
  for (const auto& row : rows) {
    QImage image(16, 24, QImage::Format_ARGB32_Premultiplied);
    image.fill(Qt::transparent);
    QPainter painter(&image);
    painter.translate(0, 4);
    const QByteArray source = QByteArray("<svg viewBox='0 0 16 16'><path d='") + row.path + "'/></svg>";
    EXPECT_TRUE(drawing_paint(source, &painter, QSize(16, 16)));
    painter.end();
    EXPECT_EQ(qAlpha(image.pixel(8, 8)) > 128, row.above) << row.path;
    EXPECT_EQ(qAlpha(image.pixel(8, 16)) > 128, row.below) << row.path;
  }
}

TEST(Icons, InkFollowsTheState) {
  const QImage normal = icon_get("tb_up").pixmap(QSize(20, 20), QIcon::Normal).toImage();
  const QImage disabled = icon_get("tb_up").pixmap(QSize(20, 20), QIcon::Disabled).toImage();
  EXPECT_GT(painted_pixels(normal), 20);
  EXPECT_NE(normal, disabled);
}

}  // namespace
