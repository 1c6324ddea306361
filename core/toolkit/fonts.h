// Font names of the settings record.
#pragma once

#include <QFont>
#include <QString>

class QWidget;

// "TextFont08", "helv12", "TextFont09i": stem, size in points, style letters (b, i). An unknown stem is the
// desktop's own family at that size. What font_name made is read back whole.
QFont font_from_name(const QString& name);
// A name, at most 254 bytes, that font_from_name turns into the same font.
QString font_name(const QFont& font);
// Gives widget the font of that name (as the record holds it, UTF-8). A null widget is ignored.
void font_apply(QWidget* widget, const char* name);
