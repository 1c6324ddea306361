// The rows of the file list: gDir read in place, a row's texts and image made only when it is painted.
#pragma once

#include <QAbstractTableModel>

#include "views/row_text.h"

class FileListModel : public QAbstractTableModel {
 public:
  enum { EntryRole = Qt::UserRole };  // the row's user value: its entry's index, -1 for ".."

  using QAbstractTableModel::QAbstractTableModel;

  // Takes the rows anew from gDir, with or without the ".." row.
  void rebuild(bool parent_row);
  // No rows at all: with this begins what a reading that takes long shows.
  void clear();
  // After clear, rows for the entries that were read meanwhile, in the order of their coming.
  void grow();

  bool has_parent_row() const { return parent_row_; }
  int rows() const { return rows_; }
  // The entry a row shows: its index, -1 for "..", -2 for no such row.
  int entry_of(int row) const;
  // The row of entry i (-1: the ".." row); -1 when it has none.
  int row_of(int i) const;
  // The column whose header carries the sort marker was chosen anew.
  void sort_changed();

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  int rows_ = 0;
  bool parent_row_ = false;
};

// The image's name for an entry of gDir.
const char* fl_row_image(const DirEntry& entry);
