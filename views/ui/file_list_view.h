// The widget of the file list: draws the selection that gDir's flags hold, and turns keys and the pointer
// into calls of file_list.
#pragma once

#include <QBasicTimer>
#include <QPersistentModelIndex>
#include <QTreeView>
#include <vector>

class FileListView : public QTreeView {
 public:
  explicit FileListView(QWidget* parent = nullptr);

  // The selection or the cut set changed: drawn anew, and told to assistive technology before that.
  void selection_changed();
  // The row from which shift stretches, when not the user but a command went there.
  void set_anchor(int row) { anchor_ = row; }
  void scrollContentsBy(int dx, int dy) override;

 protected:
  bool event(QEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void drawRow(QPainter* painter, const QStyleOptionViewItem& option,
               const QModelIndex& index) const override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void timerEvent(QTimerEvent* event) override;

 private:
  void draw_row_focus(QPainter* painter, const QStyleOptionViewItem& row) const;
  int row_at(const QPoint& place) const;
  bool type_ahead(QKeyEvent* event);
  bool move_by_key(QKeyEvent* event);
  void press_select_button(int row, Qt::KeyboardModifiers modifiers);
  void press_menu_button(int row, const QPoint& place);
  void stretch_band(const QPoint& place);
  void mirror_selection();

  bool mirror_stale_ = false;
  int anchor_ = 0;                  // the row that shift stretches from
  int pressed_row_ = -1;            // -1: none; the select button is held
  bool choose_on_release_ = false;  // a press on a selected row may begin a drag; if not, it chooses that row
  QPoint pressed_place_;            // in contents coordinates
  bool band_ = false;
  std::vector<bool> band_keeps_;  // by row: selected before the band, and staying so
  QPoint band_end_;
  QBasicTimer scroll_timer_;
};
