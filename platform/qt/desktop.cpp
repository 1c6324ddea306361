// Other threads reach the interface through one CallQueue. An eventfd, watched by the event loop like any
// other descriptor, makes the interface thread drain it, in nested event loops too. A worker never calls the
// toolkit itself.
//
// The state is never destroyed: a worker that hangs in the kernel may come back while the process ends.
#include "platform/qt/desktop_qt.h"

#include <sys/eventfd.h>
#include <unistd.h>

#include <QApplication>
#include <QEventLoop>
#include <QMainWindow>
#include <QPointer>
#include <QSocketNotifier>
#include <QThread>
#include <QTimer>
#include <atomic>
#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <set>

#include "core/button_list.h"
#include "core/toolkit/alert.h"
#include "core/toolkit/message.h"
#include "platform/call_queue.h"
#include "platform/desktop.h"

namespace {
constexpr int sSliceMs = 8;  // of calls at a time, before other events have their turn

struct Question {
  int answer = 0;  // 0: open
  int escape = 1;
  std::function<void()> answered;
};

struct Desktop {
  Desktop() : calls([this] { wake(); }) {}
  void wake() {
    const uint64_t one = 1;
    [[maybe_unused]] ssize_t written = write(wake_fd, &one, sizeof one);
  }

  int wake_fd = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
  CallQueue calls;
  std::atomic<bool> woken{false};
  std::atomic<QThread*> interface { nullptr };
  std::map<int, std::unique_ptr<QTimer>> timers;  // interface thread only
  int last_timer = 0;
  std::map<const Question*, QPointer<QWidget>> windows;  // of the open questions; interface thread only

  std::mutex mutex;  // guards the rest; never held while the toolkit is called
  std::condition_variable changed;
  std::set<std::shared_ptr<Question>> open;
  bool ended = false;
};

Desktop& desktop() {
  static Desktop& instance = *new Desktop;
  return instance;
}

void drain_slice() {
  Desktop& desk = desktop();
  uint64_t count;
  [[maybe_unused]] ssize_t got = read(desk.wake_fd, &count, sizeof count);
  desk.calls.drain(sSliceMs);
  if (desk.calls.waiting()) desk.wake();
}

void answer_question(const std::shared_ptr<Question>& question, int answer) {
  std::function<void()> answered;
  {
    std::lock_guard lock(desktop().mutex);
    if (question->answer != 0) return;
    question->answer = answer;
    answered = std::move(question->answered);
    desktop().open.erase(question);
    desktop().changed.notify_all();
  }
  if (answered) answered();
}

void open_question(const std::shared_ptr<Question>& question, const DesktopQuestion& open) {
  {
    std::lock_guard lock(desktop().mutex);
    if (question->answer != 0) return;
  }
  desktop().windows[question.get()] = open([question](int answer) {
    desktop().windows.erase(question.get());
    answer_question(question, answer);
  });
}

// Interface thread.
void close_question(const std::shared_ptr<Question>& question) {
  auto found = desktop().windows.find(question.get());
  if (found == desktop().windows.end()) return;
  const QPointer<QWidget> window = found->second;
  desktop().windows.erase(found);
  if (window) window->close();
}

QMainWindow* desktop_main_window() {
  for (QWidget* widget : QApplication::topLevelWidgets())
    if (auto* window = qobject_cast<QMainWindow*>(widget))
      if (window->objectName() == QStringLiteral("base")) return window;
  return nullptr;
}
}  // namespace

void desktop_qt_setup() {
  Desktop& desk = desktop();
  if (desk.interface.exchange(QThread::currentThread()) != nullptr) return;
  auto* notifier = new QSocketNotifier(desk.wake_fd, QSocketNotifier::Read, qApp);
  QObject::connect(notifier, &QSocketNotifier::activated, qApp, [] { drain_slice(); });
  if (desk.calls.waiting()) desk.wake();
  alert_watch_typing();
}

int desktop_qt_ask(int escape, DesktopQuestion open) {
  Desktop& desk = desktop();
  auto question = std::make_shared<Question>();
  question->escape = escape;
  {
    std::lock_guard lock(desk.mutex);
    if (desk.ended) return escape;
    desk.open.insert(question);
  }
  if (desk_on_interface_thread()) {
    QEventLoop loop;
    question->answered = [&loop] { loop.quit(); };
    open_question(question, open);
    if (question->answer == 0) loop.exec();
    answer_question(question, escape);  // the loop also ends when the program does
    close_question(question);
    return question->answer;
  }
  if (!desk.calls.post([question, open = std::move(open)] { open_question(question, open); }))
    answer_question(question, escape);
  std::unique_lock lock(desk.mutex);
  desk.changed.wait(lock, [&] { return question->answer != 0; });
  return question->answer;
}

void desktop_qt_gone() {
  desktop().calls.close();
  desk_end();
}

void desktop_qt_reset() {
  std::lock_guard lock(desktop().mutex);
  desktop().ended = false;
}

bool desk_on_interface_thread() {
  QThread* interface = desktop().interface;
  return interface != nullptr && QThread::currentThread() == interface;
}

void desk_status(int pane, const std::string& text) {
  QMainWindow* base = desktop_main_window();
  if (base == nullptr) return;
  const QString name = pane == 1 ? QStringLiteral("status1") : QStringLiteral("status2");
  wset_text(base->findChild<QWidget*>(name), QString::fromStdString(text));
}

void desk_pending_events(int wait_ms) {
  Desktop& desk = desktop();
  if (wait_ms > 0 && !desk.woken.exchange(false) && !desk.calls.waiting()) {
    QTimer limit;
    limit.setSingleShot(true);
    limit.start(wait_ms);
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    desk.woken = false;
  }
  QCoreApplication::processEvents(QEventLoop::AllEvents, sSliceMs);
}

void desk_wake() {
  desktop().woken = true;
  desktop().wake();
}

int desk_timer_start(int interval_ms, std::function<void()> fn) {
  Desktop& desk = desktop();
  auto timer = std::make_unique<QTimer>();
  QObject::connect(timer.get(), &QTimer::timeout, timer.get(), std::move(fn));
  timer->start(interval_ms);
  desk.timers[++desk.last_timer] = std::move(timer);
  return desk.last_timer;
}

void desk_timer_stop(int timer) {
  auto found = desktop().timers.find(timer);
  if (found == desktop().timers.end()) return;
  found->second->stop();
  found->second.release()->deleteLater();  // it may be the one whose function runs
  desktop().timers.erase(found);
}

void desk_report(const std::string& title, const std::string& message) {
  walert(desktop_main_window(), QString::fromStdString(title), QString::fromStdString(message), "&Continue");
}

void desk_bell() {
  QApplication::beep();
}

bool desk_call(std::function<void()> fn) {
  if (desk_on_interface_thread()) return fn(), true;
  return desktop().calls.call(std::move(fn));
}

void desk_post(std::function<void()> fn) {
  desktop().calls.post(std::move(fn));
}

int desk_alert(const std::string& title, const std::string& message, const std::string& buttons) {
  return desktop_qt_ask(
      button_list_parse(buttons).escape_button, [title, message, buttons](std::function<void(int)> answered) {
        return walert_open(nullptr, QString::fromStdString(title), QString::fromStdString(message),
                           buttons.c_str(), std::move(answered));
      });
}

void desk_notice(const std::string& title, const std::string& message) {
  desk_alert(title, message, "&Close");
}

void desk_end() {
  Desktop& desk = desktop();
  std::vector<std::shared_ptr<Question>> open;
  {
    std::lock_guard lock(desk.mutex);
    desk.ended = true;
    open.assign(desk.open.begin(), desk.open.end());
  }
  for (const auto& question : open) {
    answer_question(question, question->escape);
    desk.calls.post([question] { close_question(question); });
  }
  desk_wake();
}

bool desk_ended() {
  std::lock_guard lock(desktop().mutex);
  return desktop().ended;
}
