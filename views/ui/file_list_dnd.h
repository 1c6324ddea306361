// Dragging files out of the file list and dropping them on it.
#pragma once

class QAbstractItemView;

// Makes the list take drops. Its startDrag calls fl_dnd_start.
void fl_dnd_attach(QAbstractItemView* list);

// Drags the selection until it is dropped somewhere. Does nothing when nothing is selected.
void fl_dnd_start(QAbstractItemView* list);
