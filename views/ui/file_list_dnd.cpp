// A drag over the list is judged row by row: a directory or the ".." row is a target and is framed, a file is
// no target. Where there is no row, and on the header, which is there however full the list is, a drop goes
// to the directory shown, and the whole list is framed. What comes from this program is known while it is
// over the list; what another program drags is looked at only when it is dropped.
#include "views/ui/file_list_dnd.h"

#include <QApplication>
#include <QDrag>
#include <QDropEvent>
#include <QElapsedTimer>
#include <QHeaderView>
#include <QPainter>
#include <QRubberBand>
#include <QScrollBar>
#include <QTimer>
#include <QTreeView>
#include <algorithm>

#include "core/toolkit/icons.h"
#include "core/toolkit/message.h"
#include "dirmodel/dir_record.h"
#include "dirmodel/text.h"
#include "fileops/start.h"
#include "fileops/ui/files_mime.h"
#include "views/fname.h"

namespace {
constexpr int kTooSoonMs = 1000;  // a drop this soon after the drag began was hardly meant
constexpr int kScrollEdge = 24, kScrollEveryMs = 80;
constexpr int kPictureIcon = 32, kPictureMargin = 8, kPictureText = 240;

QElapsedTimer dnd_start_timestamp;  // when the last drag from the list began

int dragged_to_code(const QDropEvent& event) {
  const bool copy = event.modifiers() & Qt::ControlModifier;
  if (event.possibleActions() & (copy ? Qt::CopyAction : Qt::MoveAction)) return copy ? FOP_COPY : FOP_MOVE;
  if (event.possibleActions() & Qt::CopyAction) return FOP_COPY;  // its owner lets nobody move it
  return -1;
}

// The frame round what would take the drop.
class TargetFrame : public QRubberBand {
 public:
  explicit TargetFrame(QWidget* parent) : QRubberBand(QRubberBand::Rectangle, parent) {}
  void frame(const QRect& row) {
    setGeometry(row);
    clearMask();
    setVisible(!row.isEmpty());
  }
  // An outline only: rows are not what it is about.
  void outline(const QRect& whole) {
    constexpr int kThick = 3;
    frame(whole);
    setMask(QRegion(rect()) - QRegion(rect().adjusted(kThick, kThick, -kThick, -kThick)));
  }
};

class DropTarget : public QObject {
 public:
  explicit DropTarget(QTreeView* list)
      : QObject(list), list_(list), frame_(new TargetFrame(list->viewport())) {
    scroll_.setInterval(kScrollEveryMs);
    connect(&scroll_, &QTimer::timeout, this, [this] { scroll_step(); });
    list->setAcceptDrops(true);
    for (QWidget* ground : {list->viewport(), list->header()->viewport()}) {
      ground->setAcceptDrops(true);
      ground->installEventFilter(this);
    }
  }

 protected:
  bool eventFilter(QObject* ground, QEvent* event) override {
    if (event->type() == QEvent::DragEnter) on_header_ = ground != list_->viewport();
    switch (event->type()) {
      case QEvent::DragEnter:
        enter(static_cast<QDragEnterEvent*>(event));
        return true;
      case QEvent::DragMove:
        move(static_cast<QDragMoveEvent*>(event));
        return true;
      case QEvent::DragLeave:
        end();
        return true;
      case QEvent::Drop:
        drop(static_cast<QDropEvent*>(event));
        return true;
      default:
        return false;
    }
  }

 private:
  void enter(QDragEnterEvent* event) {
    known_.clear();
    dnd_active_ = files_mime_offers(*event->mimeData()) && dragged_to_code(*event) >= 0;
    if (!dnd_active_) return event->ignore();
    if (event->mimeData()->hasFormat(QString::fromLatin1(kMimeDrag)))
      known_ = files_mime_read(*event->mimeData()).lists;
    wfocus(list_);
    if (!on_header_) scroll_.start();
    answer(event);
    event->accept();  // whatever is under the pointer now: who refuses the entry gets no moves
  }

  void move(QDragMoveEvent* event) {
    if (!dnd_active_) return event->ignore();
    answer(event);
  }

  // Tells the source what a drop at the pointer would do.
  void answer(QDragMoveEvent* event) {
    pointer_ = event->position().toPoint();
    const QModelIndex index = index_at(pointer_);
    const bool valid = is_target(entry_at(index), known_);
    if (valid && !index.isValid())
      frame_->outline(list_->viewport()->rect());
    else
      frame_->frame(valid ? row_rect(index) : QRect());
    event->setDropAction(dragged_to_code(*event) == FOP_COPY ? Qt::CopyAction : Qt::MoveAction);
    if (valid)
      event->accept();
    else
      event->ignore();
  }

  void drop(QDropEvent* event) {
    const bool active = dnd_active_;
    end();
    event->ignore();
    if (!active) return;
    if (dnd_start_timestamp.isValid() && !dnd_start_timestamp.hasExpired(kTooSoonMs)) return;
    const int code = dragged_to_code(*event);
    const int entry = entry_at(index_at(event->position().toPoint()));
    const OfferedFiles offered = files_mime_read(*event->mimeData());
    if (code < 0 || !is_target(entry, offered.lists)) return;
    event->setDropAction(code == FOP_COPY ? Qt::CopyAction : Qt::MoveAction);
    event->accept();
    const std::string destination = fl_dnd_destination(entry);
    for (const TransferList& list : offered.lists)
      if (fl_dnd_allowed(list, entry)) _file_op(code, list, destination);
  }

  void end() {
    dnd_active_ = false;
    known_.clear();
    scroll_.stop();
    frame_->hide();
  }

  // A row is a target as such; for lists that are known, one of them must be allowed there too.
  static bool is_target(int entry, const std::vector<TransferList>& lists) {
    if (fl_dnd_destination(entry).empty()) return false;
    return lists.empty() || std::any_of(lists.begin(), lists.end(), [entry](const TransferList& list) {
             return fl_dnd_allowed(list, entry);
           });
  }

  QModelIndex index_at(const QPoint& place) const {
    return on_header_ ? QModelIndex() : list_->indexAt(place);
  }

  // -2 where there is no row.
  static int entry_at(const QModelIndex& index) {
    return index.isValid() ? index.siblingAtColumn(0).data(Qt::UserRole).toInt() : -2;
  }

  QRect row_rect(const QModelIndex& index) const {
    QRect rect = list_->visualRect(index);
    rect.setLeft(0);
    rect.setRight(list_->viewport()->width() - 1);
    return rect;
  }

  // Scrolls while the pointer rests near an edge.
  void scroll_step() {
    QScrollBar* bar = list_->verticalScrollBar();
    const int before = bar->value();
    if (pointer_.y() < kScrollEdge) bar->triggerAction(QAbstractSlider::SliderSingleStepSub);
    if (pointer_.y() > list_->viewport()->height() - kScrollEdge)
      bar->triggerAction(QAbstractSlider::SliderSingleStepAdd);
    if (bar->value() != before) frame_->hide();
  }

  QTreeView* list_;
  TargetFrame* frame_;
  QTimer scroll_;
  QPoint pointer_;
  std::vector<TransferList> known_;
  bool dnd_active_ = false;  // a drag that may be dropped is over the list
  bool on_header_ = false;   // over its header, that is
};
}  // namespace

void fl_dnd_attach(QTreeView* list) {
  new DropTarget(list);
}

void fl_dnd_start(QAbstractItemView* list) {
  if (gDir.sel_count == 0) return;
  auto files = std::make_shared<SharedFiles>(fl_pack_transf());
  auto* drag = new QDrag(list);
  drag->setMimeData(new FilesMime(files, FilesUse::dragged));
  drag->setPixmap(fl_dnd_picture(files->list(), list->font(), list->devicePixelRatioF()));
  drag->setHotSpot(QPoint(-kPictureMargin, -kPictureMargin));
  dnd_start_timestamp.start();
  drag->exec(Qt::CopyAction | Qt::MoveAction, Qt::MoveAction);
}

QPixmap fl_dnd_picture(const TransferList& list, const QFont& font, qreal scale) {
  const QFontMetrics metrics(font);
  const QString text = list.names.size() == 1 ? QString::fromUtf8(fname_decode(list.names.front().c_str()))
                                              : QStringLiteral("%1 items").arg(list.names.size());
  const QString shown = metrics.elidedText(text.simplified(), Qt::ElideMiddle, kPictureText);
  const QSize size(kPictureIcon + 3 * kPictureMargin + metrics.horizontalAdvance(shown),
                   std::max(kPictureIcon, metrics.height()) + 2 * kPictureMargin);
  QPixmap picture(size * scale);
  picture.setDevicePixelRatio(scale);
  picture.fill(Qt::transparent);
  QPainter painter(&picture);
  painter.setRenderHint(QPainter::Antialiasing);
  const QPalette palette = QApplication::palette();
  painter.setPen(palette.color(QPalette::Mid));
  painter.setBrush(palette.color(QPalette::Base));
  painter.drawRoundedRect(QRectF(0.5, 0.5, size.width() - 1, size.height() - 1), 6, 6);
  const char* image = list.one_dir_packed ? "closed_folder" : "file";
  icon_get(image).paint(
      &painter, QRect(kPictureMargin, (size.height() - kPictureIcon) / 2, kPictureIcon, kPictureIcon));
  painter.setFont(font);
  painter.setPen(palette.color(QPalette::Text));
  painter.drawText(QRect(kPictureIcon + 2 * kPictureMargin, 0, size.width(), size.height()),
                   Qt::AlignLeft | Qt::AlignVCenter, shown);
  return picture;
}

std::string fl_dnd_destination(int entry) {
  if (entry == -1) {
    std::string above = gDir.path;
    es_remove_subdirectory(&above);
    return above.empty() ? "/" : above;
  }
  if (entry < 0) return gDir.path;
  if (entry >= gDir.count || !dir_entry_is_directory(*gDir.entries[entry])) return {};
  return es_construct_fullpath(gDir.path.c_str(), gDir.entries[entry]->name);
}

bool fl_dnd_allowed(const TransferList& list, int entry) {
  const std::string destination = fl_dnd_destination(entry);
  if (destination.empty() || destination == list.dir || list.names.empty()) return false;
  if (entry < 0 || list.dir != gDir.path) return true;
  return std::find(list.names.begin(), list.names.end(), gDir.entries[entry]->name) == list.names.end();
}
