// "Show in folder" of browsers and other programs: the desktop's org.freedesktop.FileManager1 on the session
// bus.
#pragma once

// True where a session bus is there to be asked. None is started.
bool session_bus_runs();

// Offers the interface a moment after the first window is painted, so that start-up does not wait for the
// bus. Where no bus runs nothing happens and none is started. While another instance offers it, this one
// waits in line.
void file_manager1_offer();

// What a window that was started for such a call is to show: selects the items it was told (environment
// variable ZAN_SHOW, removed on reading) and opens their properties when asked for. Once, after the start
// directory is shown.
void file_manager1_show_pending();
