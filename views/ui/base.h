// The main window: it wires, it does not do.
#pragma once

class QMainWindow;
class QWidget;

// The main window; null before base_create and after its end.
QMainWindow* base_window();

// A widget of the main window by the system's object name ("tb_curpath", "filelist", "tree", "status1").
template <class T>
T* base_find(const char* name);
QWidget* base_find_widget(const char* name);
template <class T>
T* base_find(const char* name) {
  return dynamic_cast<T*>(base_find_widget(name));
}

// Called whenever the file list changed: status pane, path field, toolbar, focus.
void base_update();
