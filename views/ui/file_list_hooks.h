// What later rooms of the house lend the file list. The window wires them once; a null one is passed over.
#pragma once

class QAbstractItemView;
class QPoint;

struct FileListHooks {
  // The clipboard's cut set: looked at anew before each rebuild, then asked for each painted row.
  void (*refresh_cut)() = nullptr;
  int (*is_cut)(const char* dir, const char* name) = nullptr;
  // Opens the selection (Enter).
  void (*open_selected)() = nullptr;
  // Runs the open commands of entry i, a file. -1 when there were none.
  int (*open_file)(int i) = nullptr;
  // The list's menu, at a place on the screen.
  void (*context_menu)(const QPoint& place) = nullptr;
  // The pointer left a pressed, selected row with the select button held.
  void (*start_drag)(QAbstractItemView* list) = nullptr;
};
extern FileListHooks gFileListHooks;
