// Dragging files out of the file list and dropping them on it.
#pragma once

#include <QPixmap>
#include <string>
#include <vector>

#include "fileops/transfer.h"

class QAbstractItemView;
class QFont;
class QTreeView;

// Makes the list take drops, and its header those for the directory shown.
void fl_dnd_attach(QTreeView* list);

// Drags the selection until it is dropped somewhere. Does nothing when nothing is selected.
void fl_dnd_start(QAbstractItemView* list);

// The picture at the pointer: the image and the name of one item, or the first's image and the number.
QPixmap fl_dnd_picture(const TransferList& list, const QFont& font, qreal scale);

// Where a drop on a row of gDir goes: the path above for -1 (the ".." row), the directory of entry i, the
// directory shown for -2 (no row, or the header). Empty for an entry that is no directory.
std::string fl_dnd_destination(int entry);
// Whether dropping the list there would do anything: not onto one of its own items, nor where it comes from.
bool fl_dnd_allowed(const TransferList& list, int entry);
