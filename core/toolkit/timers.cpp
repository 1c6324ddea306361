#include "core/toolkit/timers.h"

#include <QPointer>
#include <QWidget>

namespace {
// The records hang on their widgets as children, and go with them.
struct TimerRecord : QObject {
  explicit TimerRecord(QObject* owner) : QObject(owner) {}
  WTimerCallback callback;
  uint32_t interval = 0;
};

struct ProcRecord : QTimer {
  explicit ProcRecord(QObject* owner) : QTimer(owner) {}
};

template <class Record>
Record* record_of(QObject* owner) {
  if (owner == nullptr) return nullptr;
  for (QObject* child : owner->children())
    if (auto* record = dynamic_cast<Record*>(child)) return record;
  return nullptr;
}

void x_timer_cb(QTimer* timer) {
  auto* record = record_of<TimerRecord>(timer);
  if (record == nullptr || record->interval == 0 || !record->callback) return;
  const WTimerCallback callback = record->callback;  // it may attach another, or delete the timer
  const QPointer<QTimer> alive(timer);
  callback(timer);
  if (alive && record->interval != 0) timer->start(static_cast<int>(record->interval));
}
}  // namespace

void wtimer_attach(QTimer* timer, uint32_t interval_ms, WTimerCallback callback) {
  auto* record = record_of<TimerRecord>(timer);
  if (record == nullptr) {
    record = new TimerRecord(timer);
    timer->setSingleShot(true);
    QObject::connect(timer, &QTimer::timeout, record, [timer] { x_timer_cb(timer); });
  }
  record->callback = std::move(callback);
  record->interval = interval_ms;
  if (interval_ms != 0) timer->start(static_cast<int>(interval_ms));
}

void wtimer_interval(QTimer* timer, uint32_t interval_ms) {
  if (auto* record = record_of<TimerRecord>(timer)) record->interval = interval_ms;
}

void wtimer_detach(QTimer* timer) {
  wtimer_interval(timer, 0);
}

void wtimer_trigger(QTimer* timer) {
  auto* record = record_of<TimerRecord>(timer);
  if (record == nullptr || !record->callback) return;
  const WTimerCallback callback = record->callback;
  callback(timer);
}

void wproc_attach(QWidget* widget, std::function<bool()> procedure) {
  wproc_detach(widget);
  auto* record = new ProcRecord(widget);
  QObject::connect(record, &QTimer::timeout, record, [record, procedure = std::move(procedure)] {
    QPointer<QTimer> alive(record);
    if (procedure() && alive) alive->stop(), alive->deleteLater();
  });
  record->start(0);
}

void wproc_detach(QWidget* widget) {
  auto* record = record_of<ProcRecord>(widget);
  if (record == nullptr) return;
  record->stop();
  record->setParent(nullptr);
  record->deleteLater();
}

void wproc_finished(QWidget* widget) {
  if (auto* record = record_of<ProcRecord>(widget)) record->setParent(nullptr);
}

QWidget* wrecursive_find_child_class(QWidget* widget, const char* class_name) {
  if (widget == nullptr || widget->inherits(class_name)) return widget;
  for (QObject* child : widget->children())
    if (child->isWidgetType())
      if (QWidget* found = wrecursive_find_child_class(static_cast<QWidget*>(child), class_name))
        return found;
  return nullptr;
}
