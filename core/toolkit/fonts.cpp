#include "core/toolkit/fonts.h"

#include <QFontDatabase>
#include <QRegularExpression>
#include <QWidget>

namespace {

constexpr int LONGEST_NAME = 254;

QFont desktop_font() {
  return QFontDatabase::systemFont(QFontDatabase::GeneralFont);
}

QFont stem_font(const QString& stem) {
  QFont font = desktop_font();
  if (stem == QLatin1String("helv")) {
    font.setFamily(QStringLiteral("sans-serif"));
    font.setStyleHint(QFont::SansSerif);
  } else if (QFontDatabase::families().contains(stem)) {
    font.setFamily(stem);
  }
  return font;
}

// Stem, size and letters, for a font that these describe whole.
QString short_name(const QFont& font) {
  const QString size = QStringLiteral("%1").arg(font.pointSize(), 2, 10, QLatin1Char('0'));
  return font.family() + size + (font.bold() ? QStringLiteral("b") : QString()) +
         (font.italic() ? QStringLiteral("i") : QString());
}

bool same_font(const QFont& a, const QFont& b) {
  return a.family() == b.family() && a.toString() == b.toString();
}

}  // namespace

QFont font_from_name(const QString& name) {
  if (name.contains(QLatin1Char(','))) {
    QFont font;
    return font.fromString(name) && !font.family().isEmpty() ? font : desktop_font();
  }
  static const QRegularExpression form(QStringLiteral("^(.*?)(\\d{1,3})(b?i?)$"));
  const QRegularExpressionMatch parts = form.match(name);
  if (!parts.hasMatch()) return stem_font(name);
  QFont font = stem_font(parts.captured(1));
  if (const int size = parts.captured(2).toInt(); size > 0) font.setPointSize(size);
  font.setBold(parts.captured(3).contains(QLatin1Char('b')));
  font.setItalic(parts.captured(3).contains(QLatin1Char('i')));
  return font;
}

QString font_name(const QFont& font) {
  const QString brief = short_name(font);
  if (brief.toUtf8().size() <= LONGEST_NAME && same_font(font_from_name(brief), font)) return brief;
  QString whole = font.toString();
  if (whole.toUtf8().size() <= LONGEST_NAME) return whole;
  // A style name can be left out: weight and slant are in the numbers before it.
  QFont plain(font);
  plain.setStyleName(QString());
  whole = plain.toString();
  return whole.toUtf8().size() <= LONGEST_NAME ? whole : short_name(QFont(QString(), font.pointSize()));
}

void font_apply(QWidget* widget, const char* name) {
  if (widget) widget->setFont(font_from_name(QString::fromUtf8(name)));
}
