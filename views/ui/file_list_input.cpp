// Keys and the pointer in the file list. The widget's own selection handling is not used: the selection is
// the entries' flags, so that any change of many rows stays one pass.
#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

#include "core/interp.h"
#include "core/toolkit/header.h"
#include "dirmodel/dir_record.h"
#include "platform/desktop.h"
#include "views/ui/file_list_hooks.h"
#include "views/ui/file_list_parts.h"
#include "views/ui/row_delegate.h"

namespace {

constexpr int kMirroredRanges = 64;  // the widget's own selection model is quadratic in its ranges

bool is_enter(int key) {
  return key == Qt::Key_Return || key == Qt::Key_Enter;
}

InterpKey typed_key(const QKeyEvent* event) {
  InterpKey key;
  key.down = event->type() != QEvent::KeyRelease;
  if (event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) return key;
  if (is_enter(event->key()) && event->modifiers() & Qt::ShiftModifier) return key;  // Open With
  switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
      key.symbol = INTERP_ENTER;
      break;
    case Qt::Key_Backspace:
      key.symbol = INTERP_BACKSPACE;
      break;
    case Qt::Key_Escape:
      key.symbol = INTERP_ESCAPE;
      break;
    default: {
      const QString text = event->text();
      const QList<uint> characters = text.toUcs4();
      if (characters.isEmpty() || !QChar::isPrint(characters.first())) return key;
      key.symbol = characters.first();
      key.text = text.toStdString();
    }
  }
  key.valid = key.symbol != 0;
  return key;
}

}  // namespace

FileListView::FileListView(QWidget* parent) : QTreeView(parent) {
  setHeader(new PlainHeader(this));
  setItemDelegate(new RowDelegate(this));
  setSelectionMode(QAbstractItemView::NoSelection);
  setEditTriggers(QAbstractItemView::NoEditTriggers);
  setVerticalScrollMode(QAbstractItemView::ScrollPerItem);
  setHorizontalScrollMode(QAbstractItemView::ScrollPerPixel);
  setIconSize(QSize(18, 18));
  setIndentation(0);
  setAcceptDrops(true);
  viewport()->setAcceptDrops(true);
}

void FileListView::selection_changed() {
  mirror_stale_ = true;
  viewport()->update();
}

// Assistive technology reads the widget's selection model. It gets the selection as long as that is made of
// few stretches of rows, and none when it is more scattered.
void FileListView::mirror_selection() {
  mirror_stale_ = false;
  QItemSelection selection;
  const int rows = fl_model()->rows();
  for (int row = 0; row < rows && selection.size() <= kMirroredRanges; ++row) {
    if (!fl_row_selected(row)) continue;
    int last = row;
    while (last + 1 < rows && fl_row_selected(last + 1)) ++last;
    selection.append(QItemSelectionRange(model()->index(row, 0), model()->index(last, FL_COLUMNS - 1)));
    row = last;
  }
  if (selection.size() > kMirroredRanges) selection.clear();
  selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
}

bool FileListView::event(QEvent* event) {
  // What belongs to a name that is being typed must not become a menu's shortcut first.
  if (event->type() == QEvent::ShortcutOverride && interp_wants(typed_key(static_cast<QKeyEvent*>(event)))) {
    event->accept();
    return true;
  }
  return QTreeView::event(event);
}

void FileListView::paintEvent(QPaintEvent* event) {
  if (mirror_stale_) mirror_selection();
  QTreeView::paintEvent(event);
  if (!band_) return;
  QStyleOptionRubberBand option;
  option.initFrom(viewport());
  option.shape = QRubberBand::Rectangle;
  const QPoint shift(-horizontalOffset(), 0);
  option.rect = QRect(pressed_place_ + shift, band_end_).normalized();
  QPainter painter(viewport());
  style()->drawControl(QStyle::CE_RubberBand, &option, &painter, this);
}

void FileListView::drawRow(QPainter* painter, const QStyleOptionViewItem& option,
                           const QModelIndex& index) const {
  QStyleOptionViewItem row = option;
  if (fl_row_selected(index.row())) row.state |= QStyle::State_Selected;
  QTreeView::drawRow(painter, row, index);
  if (hasFocus() && index.row() == currentIndex().row()) draw_row_focus(painter, row);
}

// Some styles mark the focus on a selected row by a tint over it, which hardly shows and dims the texts.
void FileListView::draw_row_focus(QPainter* painter, const QStyleOptionViewItem& row) const {
  QStyleOptionFocusRect focus;
  focus.QStyleOption::operator=(row);
  focus.rect.setWidth(std::min(viewport()->width(), header()->length()));
  focus.rect = QStyle::visualRect(layoutDirection(), viewport()->rect(), focus.rect);
  focus.state |= QStyle::State_KeyboardFocusChange | QStyle::State_Item;
  if (!(row.state & QStyle::State_Selected)) {
    focus.backgroundColor = palette().color(QPalette::Base);
    style()->drawPrimitive(QStyle::PE_FrameFocusRect, &focus, painter, this);
    return;
  }
  painter->save();
  painter->setPen(QPen(palette().color(QPalette::HighlightedText), 1, Qt::DotLine));
  painter->drawRect(focus.rect.adjusted(1, 1, -2, -2));
  painter->restore();
}

void FileListView::scrollContentsBy(int dx, int dy) {
  QTreeView::scrollContentsBy(dx, dy);
  if (band_) viewport()->update();
}

int FileListView::row_at(const QPoint& place) const {
  const QModelIndex index = indexAt(place);
  return index.isValid() ? index.row() : -1;
}

bool FileListView::type_ahead(QKeyEvent* event) {
  const int result = interp_key(typed_key(event));
  if (result < 0) {
    fl_timer_disable();
    desk_status(1, "");
  } else if (result > 0) {
    fl_timer_set();
    interp_echo();
  }
  return result != 0;
}

// --- keys ----------------------------------------------------------------------------------------------

bool FileListView::move_by_key(QKeyEvent* event) {
  CursorAction action;
  switch (event->key()) {
    case Qt::Key_Up:
      action = MoveUp;
      break;
    case Qt::Key_Down:
      action = MoveDown;
      break;
    case Qt::Key_PageUp:
      action = MovePageUp;
      break;
    case Qt::Key_PageDown:
      action = MovePageDown;
      break;
    case Qt::Key_Home:
      action = MoveHome;
      break;
    case Qt::Key_End:
      action = MoveEnd;
      break;
    default:
      return false;
  }
  const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
  if (modifiers & ~(Qt::ShiftModifier | Qt::ControlModifier)) return false;
  const QModelIndex next =
      currentIndex().isValid() ? moveCursor(action, Qt::NoModifier) : model()->index(0, 0);
  if (!next.isValid()) return true;
  selectionModel()->setCurrentIndex(model()->index(next.row(), 0), QItemSelectionModel::NoUpdate);
  scrollTo(currentIndex());
  const int row = next.row();
  if (modifiers & Qt::ShiftModifier) {
    fl_choose_rows(anchor_, row, modifiers & Qt::ControlModifier ? FL_CHOOSE_ADD : FL_CHOOSE_ONLY, row);
  } else {
    anchor_ = row;
    if (modifiers & Qt::ControlModifier)
      fl_set_current(fl_model()->entry_of(row));
    else
      fl_choose_rows(row, row, FL_CHOOSE_ONLY, row);
  }
  return true;
}

void FileListView::keyPressEvent(QKeyEvent* event) {
  event->accept();
  if (type_ahead(event)) return;
  const Qt::KeyboardModifiers modifiers = event->modifiers() & ~Qt::KeypadModifier;
  if (is_enter(event->key()) && modifiers == Qt::NoModifier) {
    if (gFileListHooks.open_selected)
      gFileListHooks.open_selected();
    else
      fl_open(gDir.current);
    return;
  }
  if (event->matches(QKeySequence::SelectAll)) return fl_select_all();
  if (event->key() == Qt::Key_Space && currentIndex().isValid() && !(modifiers & ~Qt::ControlModifier)) {
    anchor_ = currentIndex().row();
    return fl_choose_rows(anchor_, anchor_, FL_CHOOSE_TOGGLE, anchor_);
  }
  if (move_by_key(event)) return;
  const int step = event->key() == Qt::Key_Left ? -40 : event->key() == Qt::Key_Right ? 40 : 0;
  if (step && modifiers == Qt::NoModifier) {
    horizontalScrollBar()->setValue(horizontalScrollBar()->value() + step);
    return;
  }
  event->ignore();
}

// --- the pointer ---------------------------------------------------------------------------------------

void FileListView::press_select_button(int row, Qt::KeyboardModifiers modifiers) {
  choose_on_release_ = false;
  if (row < 0) {
    band_keeps_.clear();
    if (!(modifiers & (Qt::ShiftModifier | Qt::ControlModifier))) return fl_choose_none();
    for (int i = 0; i < fl_model()->rows(); ++i) band_keeps_.push_back(fl_row_selected(i));
    return;
  }
  selectionModel()->setCurrentIndex(model()->index(row, 0), QItemSelectionModel::NoUpdate);
  if (modifiers & Qt::ShiftModifier) {
    anchor_ = std::min(anchor_, fl_model()->rows() - 1);
    fl_choose_rows(anchor_, row, modifiers & Qt::ControlModifier ? FL_CHOOSE_ADD : FL_CHOOSE_ONLY, row);
    return;
  }
  anchor_ = row;
  if (modifiers & Qt::ControlModifier) {
    fl_choose_rows(row, row, FL_CHOOSE_TOGGLE, row);
  } else if (fl_row_selected(row) && gDir.sel_count > 1) {
    fl_set_current(fl_model()->entry_of(row));
    choose_on_release_ = true;
  } else {
    fl_choose_rows(row, row, FL_CHOOSE_ONLY, row);
  }
}

void FileListView::press_menu_button(int row, const QPoint& place) {
  if (row >= 0) anchor_ = row;
  fl_menu_press(row);
  if (gFileListHooks.context_menu) gFileListHooks.context_menu(place);
}

void FileListView::mousePressEvent(QMouseEvent* event) {
  event->accept();
  const QPoint place = event->position().toPoint();
  const int row = row_at(place);
  if (event->button() == Qt::RightButton) return press_menu_button(row, event->globalPosition().toPoint());
  if (event->button() != Qt::LeftButton) return event->ignore();
  pressed_row_ = row;
  pressed_place_ = place + QPoint(horizontalOffset(), 0);
  press_select_button(row, event->modifiers());
}

// Rows between the press and the pointer, while a band is drawn from below the last row.
void FileListView::stretch_band(const QPoint& place) {
  band_end_ = place;
  const int rows = fl_model()->rows();
  const int row = row_at(QPoint(1, std::clamp(place.y(), 0, viewport()->height() - 1)));
  fl_choose_band(row >= 0 ? row : rows, band_keeps_, row);
  viewport()->update();
}

void FileListView::mouseMoveEvent(QMouseEvent* event) {
  if (!(event->buttons() & Qt::LeftButton)) return QTreeView::mouseMoveEvent(event);
  const QPoint place = event->position().toPoint();
  const QPoint moved = place + QPoint(horizontalOffset(), 0) - pressed_place_;
  if (!band_ && moved.manhattanLength() < QApplication::startDragDistance()) return;
  if (pressed_row_ < 0) {
    band_ = true;
    if (!scroll_timer_.isActive()) scroll_timer_.start(60, this);
    return stretch_band(place);
  }
  if (gDir.sel_count <= 0 || !gFileListHooks.start_drag) return;
  choose_on_release_ = false;
  pressed_row_ = -1;
  gFileListHooks.start_drag(this);
}

void FileListView::mouseReleaseEvent(QMouseEvent* event) {
  event->accept();
  if (event->button() != Qt::LeftButton) return;
  scroll_timer_.stop();
  if (choose_on_release_ && pressed_row_ >= 0)
    fl_choose_rows(pressed_row_, pressed_row_, FL_CHOOSE_ONLY, pressed_row_);
  choose_on_release_ = false;
  pressed_row_ = -1;
  if (band_) viewport()->update();
  band_ = false;
}

void FileListView::timerEvent(QTimerEvent* event) {
  if (event->timerId() != scroll_timer_.timerId()) return QTreeView::timerEvent(event);
  const int before = verticalScrollBar()->value();
  if (band_end_.y() < 0) verticalScrollBar()->triggerAction(QAbstractSlider::SliderSingleStepSub);
  if (verticalScrollBar()->value() != before) stretch_band(band_end_);
}

void FileListView::mouseDoubleClickEvent(QMouseEvent* event) {
  event->accept();
  if (event->button() != Qt::LeftButton) return mousePressEvent(event);
  const int row = row_at(event->position().toPoint());
  pressed_row_ = -1;
  choose_on_release_ = false;
  if (row < 0) return;
  fl_choose_rows(row, row, FL_CHOOSE_ONLY, row);
  fl_open(fl_model()->entry_of(row));
}

// The menu key; a press of the menu button was handled as such.
void FileListView::contextMenuEvent(QContextMenuEvent* event) {
  event->accept();
  if (event->reason() != QContextMenuEvent::Keyboard) return;
  const QRect row = visualRect(currentIndex());
  const QPoint place = row.isValid() ? QPoint(8, row.bottom()) : QPoint(8, 8);
  if (gFileListHooks.context_menu) gFileListHooks.context_menu(viewport()->mapToGlobal(place));
}
