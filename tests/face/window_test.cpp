#include "tests/face/window_test.h"

#include <QRadioButton>
#include <QRegularExpression>

#include "commands/associations.h"
#include "core/command_line.h"
#include "core/history.h"
#include "core/interp.h"
#include "core/toolkit/alert.h"
#include "dirmodel/dir_sort.h"
#include "platform/qt/desktop_qt.h"
#include "views/path_history.h"

bool wait_for(const std::function<bool()>& done) {
  return QTest::qWaitFor(done, 240000);
}

// A toggle of an exclusive group is reached with the arrow keys from the one that is on.
static void tab_to(const QString& name) {
  auto* wanted = WindowTest::find<QWidget>(QApplication::activeWindow(), name.toLatin1());
  const auto* there = qobject_cast<QRadioButton*>(wanted);
  for (int i = 0; i < 120 && wanted && QApplication::focusWidget() != wanted; i++) {
    const auto* here = qobject_cast<QRadioButton*>(QApplication::focusWidget());
    press(here && there && here->group() && here->group() == there->group() ? "Down" : "Tab");
  }
  ASSERT_TRUE(wanted && QApplication::focusWidget() == wanted) << name.toStdString();
}

void press(const std::string& words, QWidget* target) {
  const QRegularExpression word(QStringLiteral("@(\\w+)|'([^']*)'|(\\S+)"));
  for (const auto& match : word.globalMatch(QString::fromStdString(words))) {
    QWidget* focus = QApplication::focusWidget() ? QApplication::focusWidget() : QApplication::activeWindow();
    ASSERT_TRUE(target || focus) << words;
    if (match.hasCaptured(1)) tab_to(match.captured(1));
    if (match.hasCaptured(2)) QTest::keyClicks(target ? target : focus, match.captured(2));
    if (!match.hasCaptured(3)) continue;
    const QKeyCombination key = QKeySequence(match.captured(3))[0];
    const QPointer<QWidget> window = QApplication::activeWindow();
    QTest::keyClick(target ? target : focus, key.key(), key.keyboardModifiers());
    // A button whose letter is pressed clicks a moment later.
    EXPECT_TRUE(wait_for([&] {
      const auto buttons = window ? window->findChildren<QPushButton*>() : QList<QPushButton*>();
      return std::none_of(buttons.begin(), buttons.end(), std::mem_fn(&QPushButton::isDown));
    }));
  }
}

void answer(QPointer<QWidget> alert, const std::string& key) {
  for (int i = 0; alert && alert->isVisible() && i < 1000; i++, QTest::qWait(10)) press(key, alert);
}

Steps steps(const std::string& script) {
  Steps pairs;
  for (const QString& step : QString::fromStdString(script).split(QStringLiteral("; "))) {
    const QStringList parts = step.split(QStringLiteral(" = "));
    pairs.emplace_back(parts[0].toStdString(), parts.value(1).toStdString());
  }
  return pairs;
}

QWidgetList windows(const char* title, const QString& about) {
  QWidgetList found = QApplication::topLevelWidgets();
  found.removeIf([&](QWidget* window) {
    return !window->isVisible() || window->windowTitle() != QLatin1String(title) ||
           !window->accessibleDescription().contains(about);
  });
  return found;
}

void WindowTest::SetUp() {
  setenv("HOME", home_.path().c_str(), 1);
  settings_defaults(gConfig);
  gConfig->flags |= SET_HIDE_DOT | SET_FORMAT_MARK;
  gOptions = OPT_INITIAL & ~OPT_DOT_PAIR;
  gConfigPath = config_.path().c_str();
  base_window_closed = 0;
  sSortFunction = dir_cmp_name;
  sSortOrder = 1;
  init_read_cboxs(gConfigPath);
  backward_history.paths.clear();
  forward_history.paths.clear();
  as_replace({});
  interp_clear();
  QApplication::clipboard()->setMimeData(new QMimeData);
  watch_ = new QTimer;
  QObject::connect(watch_, &QTimer::timeout, watch_, [this] { answer_message(); });
  watch_->start(1);
}

void WindowTest::TearDown() {
  EXPECT_TRUE(settled());
  delete watch_;
  for (const auto& [text, key] : expected_) ADD_FAILURE() << "never shown: " << text;
  for (const std::string& text : unexpected_) ADD_FAILURE() << "not expected: " << text;
  base_destroy();
  gConfigPath = nullptr;
  gDir.path.clear();
  gDir.filespec.clear();
  (void)!chdir("/");
}

void WindowTest::make(const Texts& names) const {
  for (const std::string& name : names) {
    if (name.back() == '/')
      mkdir((dir_ / name).c_str(), 0755);
    else
      write_file(dir_ / name, name);
  }
}

void WindowTest::open(const std::string& path) {
  gStartPath = path.empty() ? dir_.path() : path;
  base_create();
  base_open(CommandLine());
  EXPECT_TRUE(activate(base_window()));
  fl_view()->setFocus();
}

void WindowTest::show(const Texts& names, const Texts& selected) {
  make(names);
  if (!base_window())
    open();
  else
    EXPECT_EQ(fl_refresh(), 0);
  select(selected);
}

void WindowTest::select(const Texts& names) {
  fl_unselect_all();
  for (const std::string& name : names) fl_select_index(index_of(name));
}

std::string WindowTest::selected() {
  std::string names;
  for (int i = 0; i < gDir.count; ++i)
    if (gDir.entries[i]->flags & ENTRY_SELECTED)
      names += (names.empty() ? "" : " ") + std::string(gDir.entries[i]->name);
  return names;
}

int WindowTest::index_of(const std::string& name) {
  for (int i = 0; i < gDir.count; ++i)
    if (name == gDir.entries[i]->name) return i;
  ADD_FAILURE() << "not listed: " << name;
  return -2;
}

std::string WindowTest::held() const {
  EXPECT_TRUE(wait_for([this] { return expected_.empty(); }) && settled());
  return dir_.shell(
      "find . -mindepth 1 -type d -printf '%P/\\n' -o -type l -printf '%P@%l\\n' -o -printf '%P:' "
      "-exec cat {} \\; -printf '\\n' | LC_ALL=C sort | tr '\\n' ' '");
}

Steps WindowTest::steps_here(std::string script) const {
  for (size_t at; (at = script.find('$')) != std::string::npos;) script.replace(at, 1, dir_.path());
  return steps(script);
}

QLineEdit* WindowTest::line(QWidget* in, const char* name) {
  auto* box = qobject_cast<QComboBox*>(find<QWidget>(in, name));
  return box ? box->lineEdit() : find<QLineEdit>(in, name);
}

void WindowTest::act(const std::string& step) {
  const size_t blank = step.find(' ');
  if (blank == std::string::npos) return key(step);
  const std::string name = step.substr(blank + 1);
  QTest::mouseEvent(step.starts_with("press")     ? QTest::MousePress
                    : step.starts_with("release") ? QTest::MouseRelease
                                                  : QTest::MouseClick,
                    ground(), step.starts_with("menu") ? Qt::RightButton : Qt::LeftButton,
                    step.starts_with("Ctrl+")    ? Qt::ControlModifier
                    : step.starts_with("Shift+") ? Qt::ShiftModifier
                                                 : Qt::NoModifier,
                    name == "-" ? QPoint(20, ground()->height() - 5) : place_of(index_of(name)));
}

void WindowTest::answer_message() {
  for (QWidget* window : QApplication::topLevelWidgets()) {
    auto* alert = dynamic_cast<AlertWindow*>(window);
    if (!alert || !alert->isVisible()) continue;
    const std::string text = alert->accessibleDescription().toStdString();
    const char* key = "Esc";
    if (!expected_.empty() && expected_[0].first == text) {
      key = expected_[0].second;
      expected_.erase(expected_.begin());
    } else {
      unexpected_.push_back(text);
    }
    watch_->stop();
    answer(alert, key);
    watch_->start(1);
    return;
  }
}

// There is no window manager that does it, and a window counts as active for QTest while its parent is.
bool WindowTest::activate(QWidget* window) {
  return wait_for([window] {
    if (QApplication::activeWindow() != window) window->activateWindow();
    return QApplication::activeWindow() == window;
  });
}

QDialog* WindowTest::dialog(const char* name) {
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);  // one that has closed goes now
  for (QWidget* window : QApplication::topLevelWidgets()) {
    auto* found = qobject_cast<QDialog*>(window);
    if (!found || !found->isVisible() || found->objectName() != QLatin1String(name)) continue;
    EXPECT_TRUE(activate(found));
    return found;
  }
  return nullptr;
}

bool WindowTest::stays(const char* name, const std::string& words) {
  EXPECT_TRUE(dialog(name)) << name;
  press(words);
  return dialog(name) != nullptr;
}

int main(int argc, char** argv) {
  setenv("QT_QPA_PLATFORM", "offscreen", 1);  // listing the tests must not need a display either
  testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  desktop_qt_setup();
  return RUN_ALL_TESTS();
}
