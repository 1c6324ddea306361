#include "core/toolkit/drawing.h"

#include <QPainter>
#include <QPainterPath>
#include <QXmlStreamReader>
#include <cmath>

namespace {

// A number as our drawings write it, without an exponent, from *at on, which is moved behind it. The
// toolkit's reader knows every locale's form and takes ten times as long; a window paints with hundreds of
// numbers.
double plain_number(QStringView text, qsizetype* at) {
  const bool minus = *at < text.size() && text[*at] == QLatin1Char('-');
  double value = 0, unit = 1;
  bool point = false;
  for (*at += minus; *at < text.size(); ++*at) {
    const char16_t c = text[*at].unicode();
    if (c == '.' && !point) {
      point = true;
    } else if (c >= '0' && c <= '9') {
      value = value * 10 + (c - '0');
      if (point) unit *= 10;
    } else {
      break;
    }
  }
  return (minus ? -value : value) / unit;
}

double plain_number(QStringView text) {
  qsizetype at = 0;
  return plain_number(text, &at);
}

struct Style {
  QColor fill = Qt::black, stroke = Qt::transparent;
  double width = 1;
  Qt::PenCapStyle cap = Qt::FlatCap;
  Qt::PenJoinStyle join = Qt::MiterJoin;
  double opacity = 1;
};

QColor color_of(QStringView text) {
  return text == QLatin1String("none") ? QColor(Qt::transparent) : QColor(text);
}

void read_style(const QXmlStreamAttributes& attributes, Style* style) {
  for (const QXmlStreamAttribute& attribute : attributes) {
    const QStringView name = attribute.name(), value = attribute.value();
    if (name == QLatin1String("fill")) style->fill = color_of(value);
    if (name == QLatin1String("stroke")) style->stroke = color_of(value);
    if (name == QLatin1String("stroke-width")) style->width = plain_number(value);
    if (name == QLatin1String("stroke-linecap") && value == QLatin1String("round")) style->cap = Qt::RoundCap;
    if (name == QLatin1String("stroke-linejoin") && value == QLatin1String("round"))
      style->join = Qt::RoundJoin;
    if (name == QLatin1String("opacity")) style->opacity *= plain_number(value);
  }
}

// The part of a circle from one point to another, as path data describes it.
void arc_to(QPainterPath* path, double radius, bool large, bool sweep, const QPointF& end) {
  const QPointF start = path->currentPosition(), half = (start - end) / 2;
  const double distance = std::hypot(half.x(), half.y());
  if (distance == 0 || radius <= 0) return path->lineTo(end);
  radius = std::max(radius, distance);
  const double off = std::sqrt(radius * radius - distance * distance) / distance * (large == sweep ? -1 : 1);
  const QPointF centre = (start + end) / 2 + QPointF(off * half.y(), -off * half.x());
  const auto angle = [&](const QPointF& p) {
    return std::atan2(-(p.y() - centre.y()), p.x() - centre.x()) * 180 / M_PI;
  };
  double turn = angle(end) - angle(start);
  if (sweep && turn > 0) turn -= 360;
  if (!sweep && turn < 0) turn += 360;
  path->arcTo(centre.x() - radius, centre.y() - radius, 2 * radius, 2 * radius, angle(start), turn);
}

class PathReader {
 public:
  explicit PathReader(QStringView text) : text_(text) {}

  bool read(QPainterPath* path) {
    QChar command;
    while (skip()) {
      if (text_[at_].isLetter()) command = text_[at_++];
      if (command.isNull() || !step(command, path)) return false;
      if (command.toUpper() == QLatin1Char('M')) command = QChar(command.unicode() - 1);  // L or l
    }
    return true;
  }

 private:
  bool skip() {
    while (at_ < text_.size() && (text_[at_].isSpace() || text_[at_] == QLatin1Char(','))) ++at_;
    return at_ < text_.size();
  }

  double number() {
    skip();
    const qsizetype from = at_;
    const double value = plain_number(text_, &at_);
    failed_ |= at_ == from;
    return value;
  }

  bool flag() {  // one digit, which may stand without a gap before what follows
    if (!skip()) return false;
    return text_[at_++] == QLatin1Char('1');
  }

  bool step(QChar command, QPainterPath* path) {
    const QPointF base = command.isLower() ? path->currentPosition() : QPointF();
    const QPointF here = path->currentPosition();
    const auto point = [&] {
      const double x = number();
      return base + QPointF(x, number());
    };
    switch (command.toUpper().toLatin1()) {
      case 'M':
        path->moveTo(point());
        break;
      case 'L':
        path->lineTo(point());
        break;
      case 'H':
        path->lineTo(base.x() + number(), here.y());
        break;
      case 'V':
        path->lineTo(here.x(), base.y() + number());
        break;
      case 'Z':
        path->closeSubpath();
        break;
      case 'C': {
        const QPointF first = point(), second = point();
        path->cubicTo(first, second, point());
        break;
      }
      case 'A': {
        const double radius = number();
        number();  // the other radius: all of ours are circles
        number();  // and so not turned
        const bool large = flag(), sweep = flag();
        arc_to(path, radius, large, sweep, point());
        break;
      }
      default:
        return false;
    }
    return !failed_;
  }

  QStringView text_;
  qsizetype at_ = 0;
  bool failed_ = false;
};

bool shape_of(const QStringView name, const QXmlStreamAttributes& attributes, QPainterPath* path) {
  const auto number = [&](const char* key) { return plain_number(attributes.value(QLatin1String(key))); };
  if (name == QLatin1String("path")) return PathReader(attributes.value(QLatin1String("d"))).read(path);
  if (name == QLatin1String("circle")) {
    path->addEllipse(QPointF(number("cx"), number("cy")), number("r"), number("r"));
    return true;
  }
  if (name != QLatin1String("rect")) return false;
  path->addRoundedRect(number("x"), number("y"), number("width"), number("height"), number("rx"),
                       number("rx"));
  return true;
}

void paint_shape(const QPainterPath& path, const Style& style, QPainter* painter) {
  painter->setOpacity(style.opacity);
  if (style.fill.alpha() > 0) painter->fillPath(path, style.fill);
  if (style.stroke.alpha() > 0)
    painter->strokePath(path, QPen(style.stroke, style.width, Qt::SolidLine, style.cap, style.join));
}

bool scale_to(const QXmlStreamAttributes& attributes, const QSize& size, QPainter* painter) {
  const QList<QStringView> box = attributes.value(QLatin1String("viewBox")).split(QLatin1Char(' '));
  if (box.size() != 4) return false;
  const double width = plain_number(box[2]), height = plain_number(box[3]);
  if (width <= 0 || height <= 0) return false;
  painter->scale(size.width() / width, size.height() / height);
  return true;
}

}  // namespace

bool drawing_paint(const QByteArray& source, QPainter* painter, const QSize& size) {
  QXmlStreamReader reader(source);
  QList<Style> styles{Style()};
  painter->save();
  painter->setRenderHint(QPainter::Antialiasing);
  bool known = true;
  while (known && !reader.atEnd()) {
    const QXmlStreamReader::TokenType token = reader.readNext();
    if (token == QXmlStreamReader::EndElement) styles.removeLast();
    if (token != QXmlStreamReader::StartElement) continue;
    const QXmlStreamAttributes attributes = reader.attributes();
    styles.append(styles.last());
    read_style(attributes, &styles.last());
    if (reader.name() == QLatin1String("svg")) {
      known = scale_to(attributes, size, painter);
    } else if (reader.name() != QLatin1String("g")) {
      QPainterPath path;
      known = shape_of(reader.name(), attributes, &path);
      if (known) paint_shape(path, styles.last(), painter);
    }
  }
  painter->restore();
  return known && !reader.hasError();
}
