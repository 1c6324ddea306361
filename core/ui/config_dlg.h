// Preferences: edits the settings record in memory.
#pragma once

// Opens the dialog over the main window with the record's values. "Done" stores them and applies them at
// once.
void config_dlg_open();
