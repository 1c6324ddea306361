#include "views/ui/file_list_model.h"

#include <QFont>
#include <string>

#include "core/toolkit/dialogs.h"
#include "core/toolkit/icons.h"
#include "dirmodel/dir_read.h"
#include "dirmodel/dir_sort.h"
#include "dirmodel/text.h"
#include "views/ui/file_list_hooks.h"

namespace {

struct Column {
  const char* header;
  const char16_t* label;
  dir_compare compare;
};
const Column kColumns[] = {
    {"fh_filename", u"Name", dir_cmp_name}, {"fh_size", u"Size", dir_cmp_size},
    {"fh_date", u"Date", dir_cmp_date},     {"fh_owner", u"Owner", dir_cmp_user},
    {"fh_group", u"Group", dir_cmp_group},  {"fh_permissions", u"Permissions", dir_cmp_permissions},
    {"fh_link", u"Link", dir_cmp_link},
};
static_assert(sizeof kColumns / sizeof kColumns[0] == FL_COLUMNS);

// A name may hold line feeds and other controls, which would break the row: each shows as a blank sign.
QString one_line(const std::string& text) {
  QString line = QString::fromUtf8(text.data(), qsizetype(text.size()));
  for (QChar& c : line) {
    if (c.unicode() < 0x20) c = QChar(0x2400 + c.unicode());
    if (c.unicode() == 0x7f) c = QChar(0x2421);
    if (c == QChar::LineSeparator || c == QChar::ParagraphSeparator) c = QChar(0x2424);
  }
  return line;
}

const DirEntry* live_entry(int i) {
  return i >= 0 && i < gDir.count ? gDir.entries[i] : nullptr;
}

}  // namespace

const char* fl_row_image(const DirEntry& entry) {
  const bool directory = dir_entry_is_directory(entry), executable = entry.st.st_mode & S_IXUSR;
  if (gFileListHooks.is_cut && gFileListHooks.is_cut(gDir.path.c_str(), entry.name))
    return directory ? "image_dir_cut" : "image_file_cut";
  if ((entry.flags & ENTRY_INFO) && (entry.flags & ENTRY_UNREAD)) return "image_broken_link";
  if (entry.flags & ENTRY_INFO)
    return directory ? "linked_folder" : executable ? "linked_exec" : "linked_file";
  return directory ? "closed_folder" : executable ? "exec" : "file";
}

void FileListModel::rebuild(bool parent_row) {
  beginResetModel();
  parent_row_ = parent_row;
  rows_ = gDir.count + (parent_row ? 1 : 0);
  endResetModel();
}

void FileListModel::clear() {
  beginResetModel();
  parent_row_ = false;
  rows_ = 0;
  endResetModel();
}

void FileListModel::grow() {
  if (gDir.count <= rows_ || parent_row_) return;
  beginInsertRows({}, rows_, gDir.count - 1);
  rows_ = gDir.count;
  endInsertRows();
}

int FileListModel::entry_of(int row) const {
  if (row < 0 || row >= rows_) return -2;
  return row - (parent_row_ ? 1 : 0);
}

int FileListModel::row_of(int i) const {
  const int row = i + (parent_row_ ? 1 : 0);
  return row >= 0 && row < rows_ ? row : -1;
}

void FileListModel::sort_changed() {
  Q_EMIT headerDataChanged(Qt::Horizontal, 0, FL_COLUMNS - 1);
}

int FileListModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : rows_;
}

int FileListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : FL_COLUMNS;
}

Qt::ItemFlags FileListModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::NoItemFlags;
  return Qt::ItemIsSelectable | Qt::ItemIsEnabled | Qt::ItemNeverHasChildren;
}

QVariant FileListModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const int i = entry_of(index.row());
  if (role == EntryRole) return i;
  if (role == Qt::TextAlignmentRole && index.column() == 1) return int(Qt::AlignRight | Qt::AlignVCenter);
  const bool text = role == Qt::DisplayRole;
  if (i == -1) {
    if (index.column() != 0) return {};
    if (text) return QStringLiteral("..");
    return role == Qt::DecorationRole ? QVariant(icon_get("parent")) : QVariant();
  }
  // While a directory is read the entries change under the rows that still stand.
  const DirEntry* entry = live_entry(i);
  if (!entry) return {};
  if (text) return one_line(fl_column_text(*entry, index.column()));
  if (role == Qt::DecorationRole && index.column() == 0) return icon_get(fl_row_image(*entry));
  if (role == Qt::ToolTipRole && (index.column() == 0 || index.column() == 6))
    return tip_text(one_line(fl_column_text(*entry, index.column())));
  return {};
}

QVariant FileListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || section < 0 || section >= FL_COLUMNS) return {};
  const Column& column = kColumns[section];
  if (role == Qt::DisplayRole) return QString::fromUtf16(column.label);
  if (role == Qt::UserRole) return QString::fromLatin1(column.header);
  if (role == Qt::TextAlignmentRole)
    return int((section == 1 ? Qt::AlignRight : Qt::AlignLeft) | Qt::AlignVCenter);
  if (role == Qt::DecorationRole && column.compare == sSortFunction)
    return icon_get(sSortOrder ? "image_sort_up" : "image_sort_down");
  return {};
}
