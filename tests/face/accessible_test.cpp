#include <QAbstractButton>
#include <QAccessible>
#include <set>

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
  void TearDown() override {
    QApplication::setFont(font_);
    WindowTest::TearDown();
  }
  static std::string describe(const QWidget* widget) {
    return std::string(widget->metaObject()->className()) + " " + widget->objectName().toStdString();
  }
  static std::set<QWidget*> windows() {
    std::set<QWidget*> visible;
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window->isVisible()) visible.insert(window);
    return visible;
  }
  static void check(QWidget* window);
  static void walk(QWidget* window);
  const QFont font_ = QApplication::font();
};

// What a screen reader can be on has a name, and no text is hidden behind another one's name.
void Accessible::check(QWidget* window) {
  for (QWidget* widget : window->findChildren<QWidget*>()) {
    if (widget->window() != window || !widget->isVisible()) continue;
    QString heard = QAccessible::queryAccessibleInterface(widget)->text(QAccessible::Name);
    if (widget->focusPolicy() & Qt::TabFocus && !widget->focusProxy()) {
      EXPECT_FALSE(heard.isEmpty()) << describe(widget);
    }
    auto* label = qobject_cast<QLabel*>(widget);
    if (!label || label->text().isEmpty() || label->textFormat() == Qt::RichText) continue;
    QString text = label->text();
    if (label->buddy()) text.remove(QLatin1Char('&'));
    EXPECT_EQ(heard.remove(QChar(0x200b)), text.remove(QChar(0x200b))) << describe(label);
  }
}

// Tab reaches each button that the mouse reaches, but the other toggles of an exclusive group; Shift+Tab goes
// the same way back.
void Accessible::walk(QWidget* window) {
  std::vector<QWidget*> way, back;
  for (int i = 0; i < 160; i++) {
    (i < 80 ? way : back).push_back(QApplication::focusWidget());
    press(i < 80 ? Qt::Key_Tab : Qt::Key_Backtab);
  }
  back.push_back(QApplication::focusWidget());
  EXPECT_TRUE(std::equal(way.rbegin(), way.rend(), back.begin() + 1)) << describe(window);
  const std::set<QWidget*> reached(way.begin(), way.end());
  for (auto* button : window->findChildren<QAbstractButton*>()) {
    if (button->window() != window || !button->isVisible() || !button->isEnabled()) continue;
    if (button->autoExclusive() || button->group() || !(button->focusPolicy() & Qt::TabFocus)) continue;
    EXPECT_TRUE(reached.count(button)) << describe(button);
    const auto* push = qobject_cast<QPushButton*>(button);
    EXPECT_TRUE(!push || push->autoDefault()) << describe(button) << ": Enter would press another";
  }
}

}  // namespace

TEST_F(Accessible, EveryWindowSpeaksIsDrivenByTabAndClosesByEscape) {
  const std::function<void()> dialogs[] = {
      property_dlg_open,
      [] { new_dlg_open(1); },
      [] { pattern_dlg_open(0); },
      symlink_dlg_open,
      config_dlg_open,
      associate_dlg_open,
      open_with_open,
      help_about,
      help_quickref,
  };
  show({"a"}, {"a"});
  check(base_window());
  walk(base_window());
  for (size_t i = 0; i < 2 * std::size(dialogs); ++i) {
    SCOPED_TRACE(i);
    QFont large = font_;  // the second time as on a small screen at a large scale
    large.setPointSize(font_.pointSize() * (i < std::size(dialogs) ? 1 : 3));
    QApplication::setFont(large);
    const std::set<QWidget*> before = windows();
    dialogs[i % std::size(dialogs)]();
    std::set<QWidget*> opened = windows();
    for (QWidget* window : before) opened.erase(window);
    ASSERT_EQ(opened.size(), 1u);
    QWidget* window = *opened.begin();
    ASSERT_TRUE(activate(window));
    check(window);
    EXPECT_EQ(window->size().boundedTo(dialog_room(window)), window->size());
    walk(window);
    press(Qt::Key_Escape);
    EXPECT_TRUE(wait_for([&] { return windows() == before; }));
  }
}
