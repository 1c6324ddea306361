#include "tests/face/dialog_fixture.h"

#include <unistd.h>

#include <QApplication>
#include <QMainWindow>
#include <QTimer>

#include "core/command_line.h"
#include "core/history.h"
#include "core/state.h"
#include "core/toolkit/alert.h"
#include "dirmodel/dir_record.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"

void DialogTest::SetUp() {
  settings_defaults(gConfig);
  gConfig->flags |= SET_HIDE_DOT | SET_FORMAT_MARK;
  gOptions = OPT_INITIAL & ~OPT_DOT_PAIR;
  gConfigPath = config_.path().c_str();
  base_window_closed = 0;
  init_read_cboxs(gConfigPath);
  gStartPath = dir_.path();
  base_create();
  base_open(CommandLine());
  watch_ = new QTimer;
  QObject::connect(watch_, &QTimer::timeout, watch_, [this] { answer_message(); });
  watch_->start(1);
}

void DialogTest::TearDown() {
  delete watch_;
  for (const Expected& message : expected_) ADD_FAILURE() << "never shown: " << message.text;
  for (const std::string& text : unexpected_) ADD_FAILURE() << "not expected: " << text;
  base_destroy();
  gConfigPath = nullptr;
  (void)!chdir("/");
}

void DialogTest::show_directory(const std::vector<std::string>& selected) {
  ASSERT_EQ(fl_refresh(), 0);
  fl_unselect_all();
  size_t found = 0;
  for (int i = 0; i < gDir.count; i++) {
    for (const std::string& name : selected) {
      if (name != gDir.entries[i]->name) continue;
      fl_select_index(i);
      found++;
    }
  }
  ASSERT_EQ(found, selected.size());
}

void DialogTest::expect_message(const std::string& text, Qt::Key key) {
  expected_.push_back({text, key});
}

void DialogTest::answer_message() {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    auto* alert = dynamic_cast<AlertWindow*>(window);
    if (!alert || !alert->isVisible()) continue;
    const std::string text = alert->accessibleDescription().toStdString();
    Qt::Key key = Qt::Key_Escape;
    if (!expected_.empty() && expected_[0].text == text) {
      key = expected_[0].key;
      expected_.erase(expected_.begin());
    } else {
      unexpected_.push_back(text);
    }
    // An alert that has just opened under typing hands takes no key: press until it is gone.
    const QPointer<AlertWindow> open(alert);
    watch_->stop();
    for (int i = 0; open && open->isVisible() && i < 1000; i++) {
      QTest::keyClick(open, key);
      QTest::qWait(10);
    }
    watch_->start(1);
    return;
  }
}

// There is no window manager that does it, and a window counts as active for QTest while its parent is.
bool DialogTest::activate(QWidget* window) {
  return QTest::qWaitFor([window] {
    if (QApplication::activeWindow() != window) window->activateWindow();
    return QApplication::activeWindow() == window;
  });
}

QDialog* DialogTest::dialog(const char* name) {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    auto* found = qobject_cast<QDialog*>(window);
    if (!found || !found->isVisible() || found->objectName() != QString::fromLatin1(name)) continue;
    EXPECT_TRUE(activate(found));
    return found;
  }
  return nullptr;
}

void DialogTest::press(Qt::Key key, Qt::KeyboardModifiers modifiers) {
  QWidget* target = QApplication::focusWidget();
  if (!target) target = QApplication::activeWindow();
  ASSERT_TRUE(target);
  QTest::keyClick(target, key, modifiers);
}

void DialogTest::type(const std::string& text) {
  QWidget* target = QApplication::focusWidget();
  ASSERT_TRUE(target);
  QTest::keyClicks(target, QString::fromStdString(text));
}

bool DialogTest::tab_to(QDialog* in, const char* name) {
  QWidget* wanted = find<QWidget>(in, name);
  for (int i = 0; i < 60 && QApplication::focusWidget() != wanted; i++) press(Qt::Key_Tab);
  return wanted && QApplication::focusWidget() == wanted;
}

std::string DialogTest::current_name() {
  return gDir.current >= 0 && gDir.current < gDir.count ? gDir.entries[gDir.current]->name : "";
}
