#include "core/toolkit/appearance.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QPalette>
#include <QProxyStyle>

#include "tests/support/temp_dir.h"

namespace {

TEST(Appearance, TakesTheShadeOfTheGtkSettingsAndKeepsOutlinesVisible) {
  TempDir dir;
  qputenv("XDG_CONFIG_HOME", dir.path().c_str());
  dir.shell("mkdir gtk-3.0");
  const std::tuple<const char*, const char*, bool, bool> rows[] = {
      {"", "", false, false},
      {"[Settings]\ngtk-theme-name=Adwaita\ngtk-application-prefer-dark-theme=0\n", "", false, false},
      {"[Settings]\ngtk-application-prefer-dark-theme = true\n", "", true, false},
      {"[Settings]\ngtk-theme-name=Arc-Dark", "", true, false},
      {"[Settings]\ngtk-theme-name=Arc-Dark\n", "Adwaita", false, false},
      {"", "HighContrast", false, true},
      {"[Settings]\ngtk-theme-name=HighContrastInverse\n", "", true, true},
      {"\xff\n=\ngtk-theme-name", "", false, false}};
  for (const auto& [settings, variable, dark, outlined] : rows) {
    SCOPED_TRACE(std::string(settings) + variable);
    appearance_set_shade(Shade::standard);
    write_file(dir / "gtk-3.0/settings.ini", settings);
    qputenv("GTK_THEME", variable);
    appearance_setup();
    const QPalette palette = QApplication::palette();
    const int window = palette.color(QPalette::Window).lightness();
    EXPECT_EQ(window < 128, dark);
    EXPECT_GT(std::abs(window - palette.color(QPalette::WindowText).lightness()), 140);
    EXPECT_EQ(qobject_cast<QProxyStyle*>(QApplication::style()) != nullptr, outlined);
    EXPECT_EQ(appearance_decided(), dark || outlined);
  }
  appearance_set_shade(Shade::standard);
  qunsetenv("XDG_CONFIG_HOME");
  qunsetenv("GTK_THEME");
}

}  // namespace
