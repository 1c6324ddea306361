#include <QAbstractButton>
#include <QAccessible>
#include <QApplication>
#include <QLabel>
#include <QMainWindow>
#include <functional>
#include <optional>
#include <set>

#include "commands/ui/associate_dlg.h"
#include "commands/ui/help.h"
#include "commands/ui/new_dlg.h"
#include "commands/ui/open_with.h"
#include "commands/ui/pattern_dlg.h"
#include "commands/ui/property_dlg.h"
#include "commands/ui/symlink_dlg.h"
#include "core/toolkit/dialogs.h"
#include "core/toolkit/message.h"
#include "core/ui/config_dlg.h"
#include "tests/face/dialog_fixture.h"
#include "views/ui/base.h"

namespace {

class Accessible : public DialogTest {
 protected:
  static std::string spoken(QWidget* widget) {
    QAccessibleInterface* interface = QAccessible::queryAccessibleInterface(widget);
    return interface ? interface->text(QAccessible::Name).toStdString() : "";
  }
  static std::string describe(const QWidget* widget) {
    return std::string(widget->metaObject()->className()) + " " + widget->objectName().toStdString();
  }
  static QWidget* new_window(const std::set<QWidget*>& before) {
    for (QWidget* window : QApplication::topLevelWidgets()) {
      if (window->isVisible() && !before.count(window)) return window;
    }
    return nullptr;
  }
  static void check(QWidget* window);
};

// What a screen reader can be on has a name, and no text is hidden behind another one's name.
void Accessible::check(QWidget* window) {
  for (QWidget* widget : window->findChildren<QWidget*>()) {
    if (widget->window() != window || !widget->isVisible()) continue;
    if (widget->focusPolicy() & Qt::TabFocus && !widget->focusProxy()) {
      EXPECT_NE(spoken(widget), "") << describe(widget);
    }
    auto* label = qobject_cast<QLabel*>(widget);
    if (!label || label->text().isEmpty() || label->textFormat() == Qt::RichText) continue;
    QString text = label->text();
    if (label->buddy()) text.remove(QLatin1Char('&'));
    QString heard = QString::fromStdString(spoken(label));
    EXPECT_EQ(heard.remove(QChar(0x200b)), text.remove(QChar(0x200b))) << describe(label);
  }
}

}  // namespace

// Puts the fonts back at the end.
struct Enlarged {
  explicit Enlarged(int times) : before(QApplication::font()) {
    QFont font = before;
    font.setPointSize(font.pointSize() * times);
    QApplication::setFont(font);
  }
  ~Enlarged() { QApplication::setFont(before); }
  const QFont before;
};

TEST_F(Accessible, EveryWindowSpeaksIsDrivenByTabAndClosesByEscape) {
  struct Row {
    const char* what;
    std::function<void()> open;
  };
  const Row rows[] = {
      {"property_dlg", property_dlg_open},
      {"new_dlg", [] { new_dlg_open(1); }},
      {"pattern_dlg", [] { pattern_dlg_open(0); }},
      {"symlink_dlg", symlink_dlg_open},
      {"config_dlg", config_dlg_open},
      {"associate_dlg", associate_dlg_open},
      {"open_with", open_with_open},
      {"about", help_about},
      {"quickref", help_quickref},
  };
  write_file(dir_ / "a", "");
  show_directory({"a"});
  check(base_window());
  std::optional<Enlarged> large;
  for (size_t i = 0; i < 2 * std::size(rows); ++i) {
    const Row& row = rows[i % std::size(rows)];
    SCOPED_TRACE(row.what);
    if (i == std::size(rows)) large.emplace(3);  // the second time as on a small screen at a large scale
    const QWidgetList windows = QApplication::topLevelWidgets();
    std::set<QWidget*> before;
    for (QWidget* window : windows) {
      if (window->isVisible()) before.insert(window);
    }
    row.open();
    QWidget* window = new_window(before);
    ASSERT_TRUE(window);
    ASSERT_TRUE(activate(window));
    check(window);
    EXPECT_EQ(window->size().boundedTo(dialog_room(window)), window->size());
    // Tab reaches each button that the mouse reaches, but the other toggles of an exclusive group.
    std::set<QWidget*> reached;
    for (int i = 0; i < 80; i++) {
      reached.insert(QApplication::focusWidget());
      press(Qt::Key_Tab);
    }
    for (auto* button : window->findChildren<QAbstractButton*>()) {
      if (button->window() != window || !button->isVisible() || !button->isEnabled()) continue;
      if (button->autoExclusive() || button->group() || !(button->focusPolicy() & Qt::TabFocus)) continue;
      EXPECT_TRUE(reached.count(button)) << describe(button);
    }
    press(Qt::Key_Escape);
    EXPECT_TRUE(QTest::qWaitFor([&] { return new_window(before) == nullptr; }));
  }
}
