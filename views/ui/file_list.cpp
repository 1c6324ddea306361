#include "views/ui/file_list.h"

#include <QHeaderView>
#include <QScrollBar>
#include <QTimer>
#include <cmath>
#include <utility>

#include "core/interp.h"
#include "core/settings.h"
#include "core/state.h"
#include "dirmodel/dir_sort.h"
#include "dirmodel/text.h"
#include "platform/desktop.h"
#include "views/find.h"
#include "views/ui/file_list_hooks.h"
#include "views/ui/file_list_parts.h"
#include "views/ui/navigation.h"
#include "views/ui/status_bar.h"

namespace {

FileListView* sView = nullptr;
FileListModel* sModel = nullptr;
QTimer* sTypeTimer = nullptr;
std::function<void()> sNotify_f;

// Shown selected without being so: going to an entry points at it, and leaves its flag and the counts alone.
DirEntry* sPointed = nullptr;
bool sParentSelected = false;

bool entry_exists(int i) {
  return i >= 0 && i < gDir.count;
}

void count_entry(const DirEntry& entry, int by) {
  gDir.sel_count += by;
  if (dir_entry_is_directory(entry)) gDir.sel_dir_count += by;
}

bool set_selected(DirEntry& entry, bool on) {
  if (bool(entry.flags & ENTRY_SELECTED) == on) return false;
  entry.flags ^= ENTRY_SELECTED;
  count_entry(entry, on ? 1 : -1);
  return true;
}

void clear_selection() {
  for (int i = 0; i < gDir.count; ++i) gDir.entries[i]->flags &= ~ENTRY_SELECTED;
  gDir.sel_count = gDir.sel_dir_count = 0;
  sPointed = nullptr;
  sParentSelected = false;
}

void selection_done() {
  if (sView) sView->selection_changed();
  status_bar_update();
}

// Index 0 never carries the mark.
void move_mark(int i) {
  if (entry_exists(gDir.current)) gDir.entries[gDir.current]->flags &= ~ENTRY_CURRENT;
  if (i > 0 && entry_exists(i)) gDir.entries[i]->flags |= ENTRY_CURRENT;
  gDir.current = i;
}

void point_at(int i) {
  const int row = sModel->row_of(i < 0 ? (sModel->has_parent_row() ? -1 : 0) : i);
  if (row < 0) return;
  fl_cursor_at(row);
  const int entry = sModel->entry_of(row);
  sParentSelected = entry == -1;
  sPointed = entry_exists(entry) ? gDir.entries[entry] : nullptr;
}

void select_where(const std::function<bool(const DirEntry&)>& matches, bool on) {
  for (int i = 0; i < gDir.count; ++i)
    if (matches(*gDir.entries[i])) {
      set_selected(*gDir.entries[i], on);
      if (!on && sPointed == gDir.entries[i]) sPointed = nullptr;
    }
  selection_done();
}

void select_by_pattern(const char* pattern, bool include_dirs, bool on) {
  if (!pattern || !*pattern) return;
  select_where(
      [&](const DirEntry& entry) {
        return (include_dirs || !dir_entry_is_directory(entry)) && es_strcmp(entry.name, pattern) == 0;
      },
      on);
}

void type_timer_fired() {
  fl_timer_disable();
  status_bar_update();
}

}  // namespace

void fl_setup(FileListView* view) {
  sView = view;
  sModel = new FileListModel(view);
  view->setModel(sModel);
  sTypeTimer = new QTimer(view);
  sTypeTimer->setSingleShot(true);
  QObject::connect(sTypeTimer, &QTimer::timeout, view, type_timer_fired);
  QHeaderView* header = view->header();
  header->setObjectName(QStringLiteral("filelist_header"));
  header->setSectionsClickable(true);
  header->setSectionsMovable(false);
  header->setHighlightSections(false);
  header->setStretchLastSection(true);
  header->setMinimumSectionSize(20);
  header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  QObject::connect(header, &QHeaderView::sectionClicked, view, fl_sort_cb);
  interp_attach(
      {[](const char* text, unsigned flags) { fl_goto(text, 0, flags); }, [] { fl_open(gDir.current); }});
}

void fl_destroy() {
  sView = nullptr;
  sModel = nullptr;
  sTypeTimer = nullptr;
  sNotify_f = {};
  sPointed = nullptr;
}

FileListView* fl_view() {
  return sView;
}

FileListModel* fl_model() {
  return sModel;
}

void fl_set_notify_cb(std::function<void()> fn) {
  sNotify_f = std::move(fn);
}

void fl_update() {
  if (!sView) return;
  const int top = sView->verticalScrollBar()->value();
  if (gFileListHooks.refresh_cut) gFileListHooks.refresh_cut();
  desk_status(1, "Displaying Directory");
  bool still_there = false;
  for (int i = 0; i < gDir.count && sPointed; ++i) still_there |= gDir.entries[i] == sPointed;
  if (!still_there) sPointed = nullptr;
  sView->viewport()->setUpdatesEnabled(true);
  sModel->rebuild((gOptions & OPT_SHOW_PARENT) && gDir.path != "/");
  const int row = sModel->row_of(gDir.current);
  if (row >= 0)
    sView->selectionModel()->setCurrentIndex(sModel->index(row, 0), QItemSelectionModel::NoUpdate);
  sView->set_anchor(std::max(row, 0));  // the rows are others now
  sView->doItemsLayout();
  sView->verticalScrollBar()->setValue(top);
  sView->selection_changed();
  if (sNotify_f) sNotify_f();
}

void fl_show_reading(bool long_one) {
  if (long_one) sModel->clear();
  // Within a moment the new rows replace the old picture: no blank list flashes up in between.
  sView->viewport()->setUpdatesEnabled(long_one);
}

void fl_show_rows_read() {
  sModel->grow();
}

bool fl_row_selected(int row) {
  const int i = sModel ? sModel->entry_of(row) : -2;
  if (i == -1) return sParentSelected;
  return entry_exists(i) && ((gDir.entries[i]->flags & ENTRY_SELECTED) || gDir.entries[i] == sPointed);
}

int fl_first_shown_selected() {
  for (int i = 0; i < gDir.count; ++i)
    if (gDir.sel_count > 0 ? bool(gDir.entries[i]->flags & ENTRY_SELECTED) : gDir.entries[i] == sPointed)
      return i;
  return -2;
}

void fl_cursor_at(int row) {
  row = std::min(row, sModel->rows() - 1);
  if (row < 0) return;
  const QModelIndex index = sModel->index(row, 0);
  sView->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  sView->set_anchor(row);
  sView->scrollTo(index);
}

void fl_select_pointed() {
  if (!sPointed) return;
  set_selected(*std::exchange(sPointed, nullptr), true);
  selection_done();
}

void fl_select_index(int i) {
  if (entry_exists(i) && set_selected(*gDir.entries[i], true)) selection_done();
}

void fl_unselect_index(int i) {
  if (!entry_exists(i)) return;
  if (sPointed == gDir.entries[i]) sPointed = nullptr;
  set_selected(*gDir.entries[i], false);
  selection_done();
}

void fl_invert_index(int i) {
  if (!entry_exists(i)) return;
  if (gDir.entries[i]->flags & ENTRY_SELECTED)
    fl_unselect_index(i);
  else
    fl_select_index(i);
}

void fl_select_all() {
  sPointed = nullptr;
  sParentSelected = false;
  for (int i = 0; i < gDir.count; ++i) gDir.entries[i]->flags |= ENTRY_SELECTED;
  gDir.sel_count = gDir.count;
  gDir.sel_dir_count = gDir.dir_count;
  selection_done();
}

void fl_unselect_all() {
  clear_selection();
  selection_done();
}

void fl_invert_all() {
  sPointed = nullptr;
  for (int i = 0; i < gDir.count; ++i)
    set_selected(*gDir.entries[i], !(gDir.entries[i]->flags & ENTRY_SELECTED));
  selection_done();
}

void fl_select_pattern(const char* pattern, bool include_dirs) {
  select_by_pattern(pattern, include_dirs, true);
}

void fl_unselect_pattern(const char* pattern, bool include_dirs) {
  select_by_pattern(pattern, include_dirs, false);
}

void fl_set_current(int i) {
  if (i != gDir.current) move_mark(i);
}

void fl_choose_rows(int from, int to, FlChoice choice, int current_row) {
  if (from > to) std::swap(from, to);
  if (choice == FL_CHOOSE_ONLY) {
    clear_selection();
  } else if (sPointed) {  // what is shown selected is what the user adds to
    set_selected(*sPointed, true);
    sPointed = nullptr;
  }
  for (int row = from; row <= to; ++row) {
    const int i = sModel->entry_of(row);
    if (i == -1) sParentSelected = choice != FL_CHOOSE_TOGGLE || !sParentSelected;
    if (!entry_exists(i)) continue;
    DirEntry& entry = *gDir.entries[i];
    set_selected(entry, choice != FL_CHOOSE_TOGGLE || !(entry.flags & ENTRY_SELECTED));
  }
  fl_timer_disable();
  const int current = sModel->entry_of(current_row);
  if (current >= -1) fl_set_current(current);
  selection_done();
}

void fl_choose_band(int from, const std::vector<bool>& kept, int current_row) {
  clear_selection();
  for (int row = 0; row < sModel->rows(); ++row) {
    if (row < from && (size_t(row) >= kept.size() || !kept[size_t(row)])) continue;
    const int i = sModel->entry_of(row);
    if (i == -1) sParentSelected = true;
    if (entry_exists(i)) set_selected(*gDir.entries[i], true);
  }
  fl_timer_disable();
  const int current = sModel->entry_of(current_row);
  if (current >= -1) fl_set_current(current);
  selection_done();
}

void fl_choose_none() {
  fl_timer_disable();
  fl_unselect_all();
}

void fl_menu_press(int row) {
  const int i = sModel->entry_of(row);
  if (i < -1) {
    fl_unselect_all();
    return;
  }
  fl_set_current(i);
  const bool was_selected = fl_row_selected(row);
  if (!was_selected) clear_selection();
  if (i == -1) sParentSelected = true;
  if (entry_exists(i)) {
    set_selected(*gDir.entries[i], true);
    if (sPointed == gDir.entries[i]) sPointed = nullptr;
  }
  const QModelIndex index = sModel->index(row, 0);
  sView->selectionModel()->setCurrentIndex(index, QItemSelectionModel::NoUpdate);
  sView->scrollTo(index);
  selection_done();
  if (sNotify_f) sNotify_f();
}

void fl_goto_index(int i) {
  if (!sView) return;
  if (i > gDir.count) i = gDir.count - 1;
  clear_selection();
  if (i == -1) point_at(-1);
  if (i != gDir.current) {
    if (i >= gDir.count) {
      if (entry_exists(gDir.current)) gDir.entries[gDir.current]->flags &= ~ENTRY_CURRENT;
      selection_done();
      return;
    }
    move_mark(i);
  }
  if (entry_exists(i)) point_at(i);
  selection_done();
}

int fl_goto(const char* text, int start, unsigned flags) {
  const int i = x_find(text, start, flags);
  fl_goto_index(i);
  return i;
}

std::string fl_get_fullpath(int i) {
  std::string path = gDir.path;
  if (path.empty() || path.back() != '/') path += '/';
  if (entry_exists(i)) path += gDir.entries[i]->name;
  return path;
}

int fl_open(int i) {
  if (i == -1) {
    fl_up();
    return 0;
  }
  if (!entry_exists(i)) return -1;
  if (dir_entry_is_directory(*gDir.entries[i])) {
    fl_newpath(fl_get_fullpath(i).c_str());
    return 0;
  }
  return gFileListHooks.open_file ? gFileListHooks.open_file(i) : -1;
}

void fl_timer_set() {
  if (sTypeTimer) sTypeTimer->start(std::max(gConfig->type_ahead_ms, 0));
}

void fl_timer_disable() {
  if (sTypeTimer) sTypeTimer->stop();
  interp_clear();
}

// The settings' widths suit a small reference font with digits 5.5 pixels wide. With a larger one the columns
// grow in proportion, and what is read back is what was set.
static double width_scale() {
  return std::max(1.0, sView->fontMetrics().horizontalAdvance(QLatin1Char('0')) / 5.5);
}

int fl_get_column_width(int n) {
  if (!sView || n < 1 || n > FL_COLUMNS) return -1;
  return int(std::lround(sView->columnWidth(n - 1) / width_scale()));
}

void fl_set_column_width(int n, int width) {
  if (!sView || n < 1 || n > FL_COLUMNS) return;
  sView->setColumnWidth(n - 1, int(std::lround(std::clamp(width, 16, 4000) * width_scale())));
}

void show_sort_method() {
  if (sModel) sModel->sort_changed();
}

void fl_sort_cb(int column) {
  static const dir_compare compares[FL_COLUMNS] = {dir_cmp_name, dir_cmp_size,  dir_cmp_date,
                                                   dir_cmp_user, dir_cmp_group, dir_cmp_permissions,
                                                   dir_cmp_link};
  if (column < 0 || column >= FL_COLUMNS) return;
  if (compares[column] == sSortFunction)
    sSortOrder = !sSortOrder;
  else
    sSortFunction = compares[column];
  dir_sort(&gDir, sSortFunction, sSortOrder);
  show_sort_method();
  fl_update();
}
