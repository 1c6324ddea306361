// The main window: it wires, it does not do.
#pragma once

#include "core/settings.h"

class QMainWindow;
class QWidget;
struct CommandLine;

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

// Builds the window and its content from the settings, unshown (phase 1).
void base_create();
// Shows it where the command line wants it, and paints it when the start directory is in it (phase 2). Events
// run.
void base_open(const CommandLine& line);
// Paints it now, when it still waits for its first list: something else is to stand in front of it.
void base_show();
// Saves, once, what is to be kept: metrics and record when save-on-exit is set, histories, hotlist. Nothing
// without a settings directory. Sets base_window_closed.
void base_closing();
// The same but for the metrics, asking nothing of the toolkit: for when the display has gone.
void base_save_without_display();
// Deletes the window.
void base_destroy();

// Called whenever the file list changed: status pane, path field, toolbar, focus.
void base_update();
// The refresh that another instance asks for: does nothing once the window was closed, and leaves alone what
// the user is typing.
void signal_refresh();

// The window's size and the hotlist pane's width, applied or read back.
void base_set_window_metrics(const Settings* record);
void base_get_window_metrics(Settings* record);
// The widths of the file list's columns 1 to 6, and whether the hotlist pane is shown (applied only).
void base_set_divider_metrics(const Settings* record);
void base_get_divider_metrics(Settings* record);
