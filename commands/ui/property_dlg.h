// The properties dialog of the selected entries.
#pragma once

// Opens it over the main window, whose input is blocked until it closes. Nothing when no entry is selected or
// when it is open already.
void property_dlg_open();
