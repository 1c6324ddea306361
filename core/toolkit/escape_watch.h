// The way out of waiting for a file system.
#pragma once

#include <QObject>
#include <QPointer>
#include <QWidget>
#include <functional>

// While it stands, Escape in the window, and closing it, call give_up. Escape ends there; the closing goes
// on.
class EscapeWatch : public QObject {
 public:
  EscapeWatch(QWidget* window, std::function<void()> give_up);

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  QPointer<QWidget> window_;
  std::function<void()> give_up_;
};
