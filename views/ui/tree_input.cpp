// The pane's own handling of presses and drags: reordering top-level items, and the context menu.
#include <QApplication>
#include <QContextMenuEvent>
#include <QDrag>
#include <QDragMoveEvent>
#include <QFrame>
#include <QKeyEvent>
#include <QMimeData>
#include <QPointer>
#include <QScrollBar>
#include <QTreeWidget>
#include <cstdio>

#include "views/ui/tree_pane_parts.h"

namespace {
const QString& hotlist_type() {
  static const QString type = QStringLiteral("zan-hotlist");
  return type;
}

class TreeInput : public QObject {
 public:
  explicit TreeInput(QTreeWidget* tree)
      : QObject(tree), tree_(tree), viewport_(tree->viewport()), drop_line_(new QFrame(tree->viewport())) {
    drop_line_->setAutoFillBackground(true);
    drop_line_->setBackgroundRole(QPalette::Highlight);
    drop_line_->setAttribute(Qt::WA_TransparentForMouseEvents);
    drop_line_->hide();
  }

  bool eventFilter(QObject* watched, QEvent* event) override {
    switch (event->type()) {
      case QEvent::Show:
      case QEvent::Resize:
        tree_probe_soon(tree_);
        return false;
      case QEvent::ContextMenu:
        return open_menu(static_cast<QContextMenuEvent*>(event));
      default:
        return watched == viewport_ && pointer_event(event);
    }
  }

 private:
  bool pointer_event(QEvent* event) {
    switch (event->type()) {
      case QEvent::MouseButtonPress:
        pressed(static_cast<QMouseEvent*>(event));
        return false;
      case QEvent::MouseMove:
        return moved(static_cast<QMouseEvent*>(event));
      case QEvent::MouseButtonRelease:
        tree_dnd_index() = QPersistentModelIndex();
        return false;
      case QEvent::DragEnter:
        answer_drag(static_cast<QDragEnterEvent*>(event), nullptr);
        return true;
      case QEvent::DragMove:
        drag_over(static_cast<QDragMoveEvent*>(event));
        return true;
      case QEvent::DragLeave:
        over_ = nullptr;
        drop_line_->hide();
        return true;
      case QEvent::Drop:
        dropped(static_cast<QDropEvent*>(event));
        return true;
      default:
        return false;
    }
  }

  void pressed(QMouseEvent* event) {
    press_ = event->pos();
    QTreeWidgetItem* item = tree_->itemAt(press_);
    const bool top = item && !item->parent() && event->button() == Qt::LeftButton;
    tree_dnd_index() = top ? QPersistentModelIndex(tree_->indexFromItem(item)) : QPersistentModelIndex();
  }

  bool moved(QMouseEvent* event) {
    if (!(event->buttons() & Qt::LeftButton) || !tree_dnd_index().isValid()) return false;
    if ((event->pos() - press_).manhattanLength() < QApplication::startDragDistance()) return true;
    start_drag();
    return true;
  }

  void start_drag() {
    const QPointer<TreeInput> self(this);
    QTreeWidgetItem* item = tree_->itemFromIndex(tree_dnd_index());
    auto* data = new QMimeData;
    data->setData(hotlist_type(), QByteArrayLiteral("This is zan hotlist entry"));
    auto* drag = new QDrag(tree_);
    drag->setMimeData(data);
    const QRect row = tree_->visualItemRect(item);
    drag->setPixmap(tree_->viewport()->grab(row.intersected(tree_->viewport()->rect())));
    drag->setHotSpot(press_ - row.topLeft());
    drag->exec(Qt::MoveAction);
    tree_dnd_index() = QPersistentModelIndex();
    if (self) drop_line_->hide();
  }

  // A drag is welcome when it carries a hotlist entry, and over a top-level item it can be dropped.
  bool answer_drag(QDropEvent* event, const QTreeWidgetItem* over) {
    if (!event->mimeData()->hasFormat(hotlist_type())) {
      event->ignore();
      return false;
    }
    event->setDropAction(Qt::MoveAction);
    event->accept();
    return over && !over->parent();
  }

  void drag_over(QDragMoveEvent* event) {
    const QPoint at = event->position().toPoint();
    QTreeWidgetItem* item = tree_->itemAt(at);
    scroll_near_edge(at.y());
    if (event->mimeData()->hasFormat(hotlist_type()) && item && item->parent() && item != over_) {
      std::fputc('\a', stdout);
      std::fflush(stdout);
    }
    over_ = item;
    const bool target = answer_drag(event, item);
    if (!target) event->ignore();
    drop_line_->setVisible(target);
    if (!target) return;
    const QRect row = tree_->visualItemRect(item);
    drop_line_->setGeometry(0, (behind(at, row) ? row.bottom() : row.top()) - 1, tree_->viewport()->width(),
                            2);
    drop_line_->raise();
  }

  void dropped(QDropEvent* event) {
    over_ = nullptr;
    drop_line_->hide();
    const QPoint at = event->position().toPoint();
    QTreeWidgetItem* target = tree_->itemAt(at);
    const QPersistentModelIndex dragged = tree_dnd_index();
    if (answer_drag(event, target) && dragged.isValid()) {
      QTreeWidgetItem* item = tree_->itemFromIndex(dragged);
      if (item != target) tree_move_item(tree_, item, target, behind(at, tree_->visualItemRect(target)));
    }
    tree_dnd_index() = QPersistentModelIndex();
    tree_->clearSelection();
  }

  // The lower half of a row means behind it.
  static bool behind(const QPoint& at, const QRect& row) { return at.y() > row.center().y(); }

  void scroll_near_edge(int y) {
    constexpr int edge = 12;
    QScrollBar* bar = tree_->verticalScrollBar();
    if (y < edge) bar->triggerAction(QAbstractSlider::SliderSingleStepSub);
    if (y > tree_->viewport()->height() - edge) bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
  }

  bool open_menu(QContextMenuEvent* event) {
    const bool keyboard = event->reason() == QContextMenuEvent::Keyboard;
    QTreeWidgetItem* item = keyboard ? tree_->currentItem() : tree_->itemAt(event->pos());
    if (!item) return true;
    const QRect row = tree_->visualItemRect(item);
    tree_open_menu(item, keyboard ? tree_->viewport()->mapToGlobal(row.bottomLeft()) : event->globalPos());
    return true;
  }

  QTreeWidget* tree_;
  const QObject* viewport_;  // to compare: a tree that ends still gets events, but has no viewport any more
  QFrame* drop_line_;
  QPoint press_;
  QTreeWidgetItem* over_ = nullptr;  // compared only
};
}  // namespace

QPersistentModelIndex& tree_dnd_index() {
  static QPersistentModelIndex index;
  return index;
}

void tree_watch_input(QTreeWidget* tree) {
  auto* input = new TreeInput(tree);
  tree->setAcceptDrops(true);
  tree->viewport()->setAcceptDrops(true);
  tree->installEventFilter(input);
  tree->viewport()->installEventFilter(input);
}
