#include "core/toolkit/fonts.h"

#include <QFontDatabase>
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

bool is_digit(QChar c) {
  return c >= QLatin1Char('0') && c <= QLatin1Char('9');
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
  // Stem, up to three digits, letters, read from the end.
  qsizetype letters = name.size();
  const bool italic = letters > 0 && name[letters - 1] == QLatin1Char('i');
  letters -= italic;
  const bool bold = letters > 0 && name[letters - 1] == QLatin1Char('b');
  letters -= bold;
  qsizetype digits = letters;
  while (digits > 0 && letters - digits < 3 && is_digit(name[digits - 1])) --digits;
  if (digits == letters) return stem_font(name);
  QFont font = stem_font(name.left(digits));
  if (const int size = QStringView(name).mid(digits, letters - digits).toInt(); size > 0)
    font.setPointSize(size);
  font.setBold(bold);
  font.setItalic(italic);
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
