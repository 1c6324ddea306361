// Draws SVG images in the sizes that windows show, for core/toolkit/icons.cpp to take without an SVG reader.
// Usage: icon_pack OUTPUT SVG...
#include "core/toolkit/icon_pack.h"

#include <QCoreApplication>
#include <QFile>
#include <QFileInfo>
#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

// The rows of lists and the toolbars; a window's own image is shown larger, too.
const int kSides[] = {16, 18, 20}, kWindowSides[] = {16, 32, 48};

// The pixels with black ink, and what white ink adds to them: all between is a sum of the two.
bool append_pixels(const QByteArray& source, int side, QByteArray* pixels) {
  const QSize size(side, side);
  const QImage black = icon_draw(source, size, "#000000"), white = icon_draw(source, size, "#ffffff");
  if (black.size() != size || white.size() != size) return false;
  QByteArray ink;
  for (int y = 0; y < side; ++y) {
    const QRgb* dark = reinterpret_cast<const QRgb*>(black.constScanLine(y));
    const QRgb* light = reinterpret_cast<const QRgb*>(white.constScanLine(y));
    pixels->append(reinterpret_cast<const char*>(dark), side * qsizetype(sizeof *dark));
    for (int x = 0; x < side; ++x) ink.append(char(std::max(0, qRed(light[x]) - qRed(dark[x]))));
  }
  pixels->append(ink);
  return true;
}

int pack(const QStringList& arguments) {
  QByteArray pixels;
  QList<PackedIcon> icons;
  for (const QString& path : arguments.mid(2)) {
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) return std::fprintf(stderr, "no %s\n", qPrintable(path)), 1;
    const QByteArray source = file.readAll(), name = QFileInfo(path).completeBaseName().toLatin1();
    const auto add = [&](int side) {
      PackedIcon icon = {};
      std::strncpy(icon.name, name.constData(), sizeof icon.name - 1);
      icon.side = uint32_t(side);
      icon.offset = uint32_t(pixels.size());
      icons.append(icon);
      return append_pixels(source, side, &pixels);
    };
    const bool whole = name == "zan" ? std::all_of(std::begin(kWindowSides), std::end(kWindowSides), add)
                                     : std::all_of(std::begin(kSides), std::end(kSides), add);
    if (!whole) return std::fprintf(stderr, "cannot draw %s\n", qPrintable(path)), 1;
  }
  const uint32_t count = uint32_t(icons.size()), head = uint32_t(sizeof count + count * sizeof(PackedIcon));
  for (PackedIcon& icon : icons) icon.offset += head;
  QFile out(arguments.at(1));
  const bool written =
      out.open(QIODevice::WriteOnly) && out.write(reinterpret_cast<const char*>(&count), sizeof count) > 0 &&
      out.write(reinterpret_cast<const char*>(icons.constData()), count * sizeof(PackedIcon)) > 0 &&
      out.write(pixels) == pixels.size() && out.flush();
  return written ? 0 : (std::fprintf(stderr, "cannot write %s\n", qPrintable(arguments.at(1))), 1);
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  const QStringList arguments = QCoreApplication::arguments();
  return arguments.size() > 2 ? pack(arguments) : (std::fputs("usage: icon_pack OUTPUT SVG...\n", stderr), 2);
}
