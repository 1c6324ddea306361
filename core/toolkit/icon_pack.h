// The form of ":/icons.pack": the program's images, drawn once at build time (core/toolkit/icon_pack.cpp) in
// the sizes that its window shows at the usual scale. In native byte order: the count, so many entries, the
// pixels.
#pragma once

#include <QBuffer>
#include <QImageReader>
#include <cstdint>

// One image. From offset on stand side * side pixels (32-bit ARGB, premultiplied) drawn with black ink, and
// behind them a byte for each: how much of the ink's colour is to be added, 255 where there is nothing else.
struct PackedIcon {
  char name[24];
  uint32_t side, offset;
};

// What the drawings use where the text colour belongs.
inline constexpr char kDrawnInk[] = "#1a1a1a";

// Draws an image's SVG source in that size, with that colour ("#rrggbb") for its ink. Null when it cannot be
// drawn, as without the toolkit's SVG reader.
inline QImage icon_draw(QByteArray source, const QSize& size, const QByteArray& ink) {
  QBuffer buffer;
  buffer.setData(source.replace(kDrawnInk, ink));
  QImageReader reader(&buffer, "svg");
  reader.setScaledSize(size);
  return reader.read().convertToFormat(QImage::Format_ARGB32_Premultiplied);
}
