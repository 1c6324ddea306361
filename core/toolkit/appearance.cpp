#include "core/toolkit/appearance.h"

#include <QApplication>
#include <QFile>
#include <QIcon>
#include <QPalette>
#include <QStandardPaths>
#include <QStyle>

#include "core/toolkit/contrast_style.h"

namespace {

bool sDecided = false;

struct ShadeColour {
  QPalette::ColorRole role;
  QRgb dark, contrast_dark, contrast_light;
};
constexpr ShadeColour kShadeColours[] = {
    {QPalette::Window, 0xff2d2d2d, 0xff000000, 0xffffffff},
    {QPalette::WindowText, 0xfff0f0f0, 0xffffffff, 0xff000000},
    {QPalette::Base, 0xff202020, 0xff000000, 0xffffffff},
    {QPalette::AlternateBase, 0xff282828, 0xff000000, 0xffffffff},
    {QPalette::Text, 0xfff0f0f0, 0xffffffff, 0xff000000},
    {QPalette::PlaceholderText, 0xff9a9a9a, 0xffc0c0c0, 0xff404040},
    {QPalette::Button, 0xff383838, 0xff000000, 0xffffffff},
    {QPalette::ButtonText, 0xfff0f0f0, 0xffffffff, 0xff000000},
    {QPalette::BrightText, 0xffff8080, 0xffffff00, 0xffb00000},
    {QPalette::ToolTipBase, 0xff404040, 0xff000000, 0xffffffff},
    {QPalette::ToolTipText, 0xfff0f0f0, 0xffffffff, 0xff000000},
    {QPalette::Light, 0xff505050, 0xffffffff, 0xffffffff},
    {QPalette::Midlight, 0xff404040, 0xffc0c0c0, 0xffe0e0e0},
    {QPalette::Mid, 0xff5a5a5a, 0xffa0a0a0, 0xff606060},
    {QPalette::Dark, 0xff1a1a1a, 0xff808080, 0xff404040},
    {QPalette::Shadow, 0xff000000, 0xffffffff, 0xff000000},
    {QPalette::Highlight, 0xff2a6fb0, 0xffffff00, 0xff0000a0},
    {QPalette::HighlightedText, 0xffffffff, 0xff000000, 0xffffffff},
    {QPalette::Link, 0xff6fa8ff, 0xff80ffff, 0xff0000c0},
    {QPalette::LinkVisited, 0xffc090ff, 0xffff80ff, 0xff600080},
};

QRgb shade_colour(const ShadeColour& colour, Shade shade) {
  return shade == Shade::dark            ? colour.dark
         : shade == Shade::contrast_dark ? colour.contrast_dark
                                         : colour.contrast_light;
}

QPalette shade_palette(Shade shade) {
  QPalette palette = QApplication::style()->standardPalette();
  if (shade == Shade::standard) return palette;
  for (const ShadeColour& colour : kShadeColours)
    palette.setColor(colour.role, QColor::fromRgba(shade_colour(colour, shade)));
  const QColor faint(shade == Shade::dark            ? 0xff8c8c8c
                     : shade == Shade::contrast_dark ? 0xff90ff90
                                                     : 0xff505050);
  for (const auto role :
       {QPalette::WindowText, QPalette::Text, QPalette::ButtonText, QPalette::HighlightedText})
    palette.setColor(QPalette::Disabled, role, faint);
  return palette;
}

// What the toolkit shows when nobody has told it any colours.
bool toolkit_has_colours() {
  if (!qEnvironmentVariableIsEmpty("QT_QPA_PLATFORMTHEME")) return true;
  const QPalette now = QApplication::palette(), plain = QApplication::style()->standardPalette();
  for (const auto role : {QPalette::Window, QPalette::WindowText, QPalette::Base, QPalette::Text})
    if (now.color(role) != plain.color(role)) return true;
  return false;
}

struct GtkChoice {
  QString theme, icons;
  bool dark = false;
};

void read_gtk_settings(const QString& path, GtkChoice* choice) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return;
  for (const QByteArray& line : file.read(65536).split('\n')) {
    const qsizetype equals = line.indexOf('=');
    if (equals < 0) continue;
    const QByteArray key = line.left(equals).trimmed();
    const QString value = QString::fromUtf8(line.mid(equals + 1).trimmed());
    if (key == "gtk-theme-name") choice->theme = value;
    if (key == "gtk-icon-theme-name") choice->icons = value;
    if (key == "gtk-application-prefer-dark-theme")
      choice->dark =
          value == QLatin1String("1") || value.compare(QLatin1String("true"), Qt::CaseInsensitive) == 0;
  }
}

GtkChoice gtk_choice() {
  GtkChoice choice;
  const QString config = QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation);
  for (const char* version : {"gtk-3.0", "gtk-4.0"})
    read_gtk_settings(config + QLatin1Char('/') + QLatin1String(version) + QStringLiteral("/settings.ini"),
                      &choice);
  const QString told = qEnvironmentVariable("GTK_THEME");
  if (!told.isEmpty()) {
    choice.theme = told;
    choice.dark = false;
  }
  return choice;
}

Shade shade_of(const GtkChoice& choice) {
  const bool dark = choice.dark || choice.theme.contains(QLatin1String("dark"), Qt::CaseInsensitive) ||
                    choice.theme.contains(QLatin1String("inverse"), Qt::CaseInsensitive);
  if (choice.theme.startsWith(QLatin1String("HighContrast"), Qt::CaseInsensitive))
    return dark ? Shade::contrast_dark : Shade::contrast_light;
  return dark ? Shade::dark : Shade::standard;
}

}  // namespace

void appearance_setup() {
  const GtkChoice choice = gtk_choice();
  const QString icons = QIcon::themeName();
  if (!choice.icons.isEmpty() && (icons.isEmpty() || icons == QLatin1String("hicolor")))
    QIcon::setThemeName(choice.icons);
  sDecided = toolkit_has_colours();
  const Shade shade = shade_of(choice);
  if (!sDecided && shade != Shade::standard) {
    appearance_set_shade(shade);
    sDecided = true;
  }
  contrast_style_update();
}

bool appearance_decided() {
  return sDecided;
}

void appearance_set_shade(Shade shade) {
  QApplication::setPalette(shade_palette(shade));
  contrast_style_update();
}
