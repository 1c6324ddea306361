// A repeating timer and an idle-time procedure per widget.
#pragma once

#include <QTimer>
#include <cstdint>
#include <functional>

class QWidget;

using WTimerCallback = std::function<void(QTimer* timer)>;

// Arms the timer: callback is called every interval_ms (0: never). Called again, it replaces both.
void wtimer_attach(QTimer* timer, uint32_t interval_ms, WTimerCallback callback);
// Changes the interval of an attached timer from its next expiry on; its callback may do so too. 0 stops it.
void wtimer_interval(QTimer* timer, uint32_t interval_ms);
// The timer neither calls back nor re-arms any more.
void wtimer_detach(QTimer* timer);
// Calls the callback at once, without touching the schedule.
void wtimer_trigger(QTimer* timer);

// Registers a procedure that the event loop calls whenever there is nothing else to do, until it returns true
// (finished). One a widget: a later one replaces it.
void wproc_attach(QWidget* widget, std::function<bool()> procedure);
void wproc_detach(QWidget* widget);
// For a procedure that ends itself: forgets it without removing anything.
void wproc_finished(QWidget* widget);

// The first of widget and its descendants, depth first, that is of the given class (as in "QLineEdit"), or
// null.
QWidget* wrecursive_find_child_class(QWidget* widget, const char* class_name);
