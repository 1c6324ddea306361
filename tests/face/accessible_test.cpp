#include <QAbstractButton>
#include <QAccessible>

#include "commands/ui/associate_dlg.h"
#include "commands/ui/help.h"
#include "commands/ui/new_dlg.h"
#include "commands/ui/open_with.h"
#include "commands/ui/pattern_dlg.h"
#include "commands/ui/property_dlg.h"
#include "commands/ui/symlink_dlg.h"
#include "core/toolkit/dialogs.h"
#include "core/ui/config_dlg.h"
#include "tests/face/window_test.h"

namespace {

class Accessible : public WindowTest {
 protected:
  static std::string describe(const QWidget* widget) {
    return std::string(widget->metaObject()->className()) + " " + widget->objectName().toStdString();
  }
  static QWidgetList opened() {
    QWidgetList all = QApplication::topLevelWidgets();
    all.removeIf([](QWidget* window) { return !window->isVisible() || window == base_window(); });
    return all;
  }
  // What a screen reader can be on has a name, and no text is hidden behind another one's name.
  static void check(QWidget* window) {
    for (QWidget* widget : window->findChildren<QWidget*>()) {
      if (widget->window() != window || !widget->isVisible()) continue;
      QString heard = QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
      EXPECT_FALSE(heard.isEmpty() && widget->focusPolicy() & Qt::TabFocus && !widget->focusProxy())
          << describe(widget);
      auto* label = qobject_cast<QLabel*>(widget);
      if (!label || label->text().isEmpty() || label->textFormat() == Qt::RichText) continue;
      QString text = label->text();
      if (label->buddy()) text.remove(QLatin1Char('&'));
      EXPECT_EQ(heard.remove(QChar(0x200b)), text.remove(QChar(0x200b))) << describe(label);
    }
  }
  // Tab reaches each button that the mouse reaches, but the other toggles of an exclusive group; Shift+Tab
  // goes the same way back.
  static void walk(QWidget* window) {
    std::vector<QWidget*> way, back;
    for (int i = 0; i < 160; i++) {
      (i < 80 ? way : back).push_back(QApplication::focusWidget());
      press(i < 80 ? "Tab" : "Backtab");
    }
    back.push_back(QApplication::focusWidget());
    EXPECT_TRUE(std::equal(way.rbegin(), way.rend(), back.begin() + 1)) << describe(window);
    for (auto* button : window->findChildren<QAbstractButton*>()) {
      if (button->window() != window || !button->isVisible() || !button->isEnabled()) continue;
      if (button->autoExclusive() || button->group() || !(button->focusPolicy() & Qt::TabFocus)) continue;
      EXPECT_TRUE(std::count(way.begin(), way.end(), button)) << describe(button);
      const auto* push = qobject_cast<QPushButton*>(button);
      EXPECT_TRUE(!push || push->autoDefault()) << describe(button) << ": Enter would press another";
    }
  }
};

}  // namespace

TEST_F(Accessible, EveryWindowSpeaksIsDrivenByTabAndClosesByEscape) {
  const std::function<void()> dialogs[] = {
      [] { new_dlg_open(1); }, [] { pattern_dlg_open(0); }, help_about,
      help_quickref,           property_dlg_open,           symlink_dlg_open,
      config_dlg_open,         associate_dlg_open,          open_with_open};
  show({"a"}, {"a"});
  check(base_window());
  walk(base_window());
  QFont font = QApplication::font();
  const auto restored = qScopeGuard([font] { QApplication::setFont(font); });
  for (int times = 0; times < 2; ++times) {
    for (const auto& open_dialog : dialogs) {
      SCOPED_TRACE(&open_dialog - dialogs);
      open_dialog();
      ASSERT_EQ(opened().size(), 1);
      QWidget* window = opened().front();
      ASSERT_TRUE(activate(window));
      check(window);
      EXPECT_EQ(window->size().boundedTo(dialog_room(window)), window->size());
      walk(window);
      press("Esc");
      EXPECT_TRUE(wait_for([&] { return opened().isEmpty(); }));
    }
    font.setPointSize(font.pointSize() * 3);  // the second time as on a small screen at a large scale
    QApplication::setFont(font);
  }
}
