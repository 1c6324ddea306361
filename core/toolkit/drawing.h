// Draws the program's own SVG images. The toolkit's SVG reader is a plugin that costs more to load than all
// of the window's images cost to draw, and that may be missing.
#pragma once

class QByteArray;
class QPainter;
class QSize;

// Draws source, filling size from the painter's origin. It knows what our images are made of: svg with a
// viewBox, g, path (M L H V C A Z and their relative forms; arcs of circles), rect and circle, with fill,
// stroke, stroke-width, stroke-linecap, stroke-linejoin and opacity. False when something else stands in it.
bool drawing_paint(const QByteArray& source, QPainter* painter, const QSize& size);
