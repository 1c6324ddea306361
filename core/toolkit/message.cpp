#include "core/toolkit/message.h"

#include <QAbstractButton>
#include <QApplication>
#include <QEventLoop>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QPlainTextEdit>
#include <QPointer>
#include <QScreen>
#include <QTextEdit>
#include <cstdarg>
#include <cstdio>

#include "core/toolkit/alert.h"

namespace {
constexpr int sMessageBytes = 256;
constexpr int sNearMargin = 10, sFarMargin = 25;  // they differ on purpose

// printf rules into sMessageBytes with the terminator, cut at a whole character.
QByteArray message_format(const char* format, va_list arguments) {
  char text[sMessageBytes];
  const int length = vsnprintf(text, sizeof text, format, arguments);
  if (length < 0) return {};
  QByteArray cut(text);
  if (length < sMessageBytes) return cut;
  // A character's first byte tells its length; drop the last one when it is not whole.
  int start = static_cast<int>(cut.size()) - 1;
  while (start > 0 && (cut[start] & 0xc0) == 0x80) --start;
  const auto lead = static_cast<unsigned char>(cut[start]);
  const int bytes = lead >= 0xf0 ? 4 : lead >= 0xe0 ? 3 : lead >= 0xc0 ? 2 : 1;
  if (start + bytes > cut.size()) cut.truncate(start);
  return cut;
}

QRect visible_desktop(const QWidget* near) {
  QScreen* screen = near != nullptr ? near->screen() : QGuiApplication::primaryScreen();
  return screen->availableGeometry();
}

int message_box(QWidget* parent, const char* title, const QByteArray& message, const char* buttons) {
  return walert(parent, QString::fromUtf8(title), QString::fromUtf8(message), buttons);
}

void center_axis(int* at, int size, int near, int far) {
  if (*at + size > far) *at = far - size - sFarMargin;
  if (*at < near) *at = near + sNearMargin;
}
}  // namespace

int wreport(QWidget* parent, const char* title, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const QByteArray message = message_format(format, arguments);
  va_end(arguments);
  return message_box(parent, title, message, "&Continue");
}

int wask(QWidget* parent, const char* title, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const QByteArray message = message_format(format, arguments);
  va_end(arguments);
  return message_box(parent, title, message, "&Yes|&No");
}

int walert(QWidget* parent, const QString& title, const QString& message, const char* buttons) {
  const ButtonList list = button_list_parse(buttons);
  QEventLoop loop;
  int chosen = 0;
  QPointer<AlertWindow> window = new AlertWindow(title, message, list, [&](int number) {
    chosen = number;
    loop.quit();
  });
  window->open_over(parent, parent != nullptr ? Qt::WindowModal : Qt::ApplicationModal);
  if (chosen == 0) loop.exec();
  if (chosen == 0 && window) window->close();  // the program is ending
  return chosen != 0 ? chosen : list.escape_button;
}

QWidget* walert_open(QWidget* parent, const QString& title, const QString& message, const char* buttons,
                     std::function<void(int)> answered) {
  auto* window = new AlertWindow(title, message, button_list_parse(buttons), std::move(answered));
  window->open_over(parent, Qt::NonModal);
  return window;
}

int wprintf(QWidget* widget, const char* format, ...) {
  if (widget == nullptr) return -1;
  va_list arguments;
  va_start(arguments, format);
  const QByteArray text = message_format(format, arguments);
  va_end(arguments);
  wset_text(widget, QString::fromUtf8(text));
  return static_cast<int>(text.size());
}

void wset_text(QWidget* widget, const QString& text) {
  if (widget == nullptr) return;
  if (auto* pane = qobject_cast<QGroupBox*>(widget))
    pane->setTitle(text);
  else if (auto* label = qobject_cast<QLabel*>(widget))
    label->setText(text);
  else if (auto* field = qobject_cast<QLineEdit*>(widget))
    field->setText(text);
  else if (auto* button = qobject_cast<QAbstractButton*>(widget))
    button->setText(text);
  else if (auto* plain = qobject_cast<QPlainTextEdit*>(widget))
    plain->setPlainText(text);
  else if (auto* edit = qobject_cast<QTextEdit*>(widget))
    edit->setPlainText(text);
  else
    widget->setWindowTitle(text);
}

void wfocus(QWidget* widget) {
  if (widget == nullptr) return;
  QWidget* window = widget->window();
  if (window->isMinimized()) window->showNormal();
  window->raise();
  window->activateWindow();
  widget->setFocus();
}

void misc_give_focus(QWidget* widget) {
  if (widget == nullptr) return;
  for (QWidget* window : QApplication::topLevelWidgets())
    if (window->objectName() == QStringLiteral("base") && window->isVisible()) {
      window->raise();
      window->activateWindow();
    }
  widget->setFocus();
}

QPoint wcenter_position(const QRect& parent, const QSize& child, const QRect& visible) {
  QPoint at(parent.x() + (parent.width() - child.width()) / 2,
            parent.y() + (parent.height() - child.height()) / 2);
  center_axis(&at.rx(), child.width(), visible.x(), visible.x() + visible.width());
  center_axis(&at.ry(), child.height(), visible.y(), visible.y() + visible.height());
  return at;
}

void wcenter(QWidget* parent, QWidget* child) {
  const QRect visible = visible_desktop(parent);
  QRect over = visible;
  if (parent != nullptr)
    over = parent->isWindow() ? parent->frameGeometry()
                              : QRect(parent->mapToGlobal(QPoint(0, 0)), parent->size());
  child->move(wcenter_position(over, child->frameSize(), visible));
}
