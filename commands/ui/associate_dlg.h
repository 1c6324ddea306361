// The associations editor.
#pragma once

// Opens it over the main window; nothing when it is open already.
void associate_dlg_open();
