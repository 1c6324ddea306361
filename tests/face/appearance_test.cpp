#include "core/toolkit/appearance.h"

#include <gtest/gtest.h>
#include <sys/stat.h>

#include <QApplication>
#include <QPalette>
#include <QProxyStyle>

#include "tests/support/temp_dir.h"

namespace {

TEST(Appearance, TakesTheShadeOfTheGtkSettingsAndKeepsOutlinesVisible) {
  TempDir dir;
  qputenv("XDG_CONFIG_HOME", dir.path().c_str());
  ASSERT_EQ(mkdir((dir / "gtk-3.0").c_str(), 0700), 0);
  const struct {
    const char *settings, *variable;
    bool dark, outlined;
  } rows[] = {
      {"", "", false, false},
      {"[Settings]\ngtk-theme-name=Adwaita\ngtk-application-prefer-dark-theme=0\n", "", false, false},
      {"[Settings]\ngtk-application-prefer-dark-theme = true\n", "", true, false},
      {"[Settings]\ngtk-theme-name=Arc-Dark", "", true, false},
      {"[Settings]\ngtk-theme-name=Arc-Dark\n", "Adwaita", false, false},
      {"", "HighContrast", false, true},
      {"[Settings]\ngtk-theme-name=HighContrastInverse\n", "", true, true},
      {"\xff\n=\ngtk-theme-name", "", false, false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.settings) + row.variable);
    appearance_set_shade(Shade::standard);
    write_file(dir / "gtk-3.0/settings.ini", row.settings);
    qputenv("GTK_THEME", row.variable);
    appearance_setup();
    const QPalette palette = QApplication::palette();
    const int window = palette.color(QPalette::Window).lightness();
    EXPECT_EQ(window < 128, row.dark);
    EXPECT_GT(std::abs(window - palette.color(QPalette::WindowText).lightness()), 140);
    EXPECT_EQ(qobject_cast<QProxyStyle*>(QApplication::style()) != nullptr, row.outlined);
    EXPECT_EQ(appearance_decided(), row.dark || row.outlined);
  }
  appearance_set_shade(Shade::standard);
  qunsetenv("XDG_CONFIG_HOME");
  qunsetenv("GTK_THEME");
}

}  // namespace
