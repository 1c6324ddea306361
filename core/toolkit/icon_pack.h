// The form of ":/icons.pack": the program's images, drawn once at build time (core/toolkit/icon_pack.cpp) in
// the sizes that its window shows at the usual scale. In native byte order: the count, so many entries, the
// pixels.
#pragma once

#include <cstdint>

// One image. From offset on stand side * side pixels (32-bit ARGB, premultiplied) drawn with black ink, and
// behind them a byte for each: how much of the ink's colour is to be added, 255 where there is nothing else.
struct PackedIcon {
  char name[24];
  uint32_t side, offset;
};

// What the drawings use where the text colour belongs.
inline constexpr char kDrawnInk[] = "#1a1a1a";
