// Blocking a widget's input: a sheet of glass over it takes the mouse and shows the busy cursor; keys,
// shortcuts and drops are taken on their way to it.
#include <QApplication>
#include <QHash>
#include <QKeyEvent>
#include <QPointer>
#include <QWidget>

#include "core/toolkit/message.h"

namespace {
class Block : public QObject {
 public:
  Block(QWidget* widget, Qt::CursorShape shape, bool dim) : QObject(widget), widget_(widget), glass_(widget) {
    if (dim && widget->isEnabled()) {
      focus_ = widget->focusWidget();
      widget->setEnabled(false);
      dimmed_ = true;
    }
    glass_.setCursor(shape);
    glass_.setFocusPolicy(Qt::NoFocus);
    glass_.setGeometry(widget->rect());
    glass_.show();
    glass_.raise();
    widget->setProperty("busy", true);
    qApp->installEventFilter(this);
  }
  void release() {
    qApp->removeEventFilter(this);
    glass_.hide();
    widget_->setProperty("busy", false);
    if (dimmed_) widget_->setEnabled(true);
    if (dimmed_ && focus_ && QApplication::focusWidget() == nullptr) focus_->setFocus();
    if (close_wanted_) QMetaObject::invokeMethod(widget_, &QWidget::close, Qt::QueuedConnection);
    deleteLater();
  }
  int depth = 1;

 protected:
  bool eventFilter(QObject* object, QEvent* event) override;

 private:
  bool covers(QObject* object) const {
    if (!object->isWidgetType()) return false;
    auto* target = static_cast<QWidget*>(object);
    return target == widget_ || widget_->isAncestorOf(target);
  }

  QWidget* widget_;
  QWidget glass_;
  QPointer<QWidget> focus_;
  bool dimmed_ = false, close_wanted_ = false;
};

bool Block::eventFilter(QObject* object, QEvent* event) {
  switch (event->type()) {
    case QEvent::Resize:
      if (object == widget_) glass_.setGeometry(widget_->rect());
      return false;
    case QEvent::Close:
      if (object != widget_ || !widget_->isWindow()) return false;
      close_wanted_ = true;
      event->ignore();
      return true;
    default:
      if (!misc_is_input(*event) || !covers(object)) return false;
      // A shortcut that is accepted on its way is none any more, but a key press that ends here.
      event->setAccepted(event->type() == QEvent::ShortcutOverride);
      return true;
  }
}

QHash<QWidget*, Block*> sBlocks;

void block_change(QWidget* widget, bool on, Qt::CursorShape shape, bool dim) {
  if (widget == nullptr) return;
  Block* block = sBlocks.value(widget);
  if (on && block != nullptr) {
    ++block->depth;
  } else if (on) {
    sBlocks[widget] = new Block(widget, shape, dim);
    QObject::connect(widget, &QObject::destroyed, qApp, [widget] { sBlocks.remove(widget); });
  } else if (block != nullptr && --block->depth == 0) {
    sBlocks.remove(widget);
    block->release();
  }
}
}  // namespace

bool misc_is_input(const QEvent& event) {
  switch (event.type()) {
    case QEvent::ShortcutOverride:
    case QEvent::KeyPress:
    case QEvent::KeyRelease:
    case QEvent::InputMethod:
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
    case QEvent::DragEnter:
    case QEvent::DragMove:
    case QEvent::Drop:
      return true;
    default:
      return false;
  }
}

void wblock(QWidget* widget, int on) {
  block_change(widget, on == 1, Qt::BusyCursor, false);
}

void misc_block(QWidget* widget, int on) {
  block_change(widget, on == 1, Qt::WaitCursor, widget != nullptr && !widget->isWindow());
}
