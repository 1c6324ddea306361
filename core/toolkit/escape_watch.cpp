#include "core/toolkit/escape_watch.h"

#include <QApplication>
#include <QKeyEvent>

EscapeWatch::EscapeWatch(QWidget* window, std::function<void()> give_up)
    : window_(window), give_up_(std::move(give_up)) {
  qApp->installEventFilter(this);
}

bool EscapeWatch::eventFilter(QObject* object, QEvent* event) {
  auto* widget = qobject_cast<QWidget*>(object);
  if (!widget || !window_ || widget->window() != window_) return false;
  const bool escape =
      event->type() == QEvent::KeyPress && static_cast<QKeyEvent*>(event)->key() == Qt::Key_Escape;
  const bool closing = event->type() == QEvent::Close && widget == window_;
  if (escape || closing) give_up_();
  return escape;
}
