// The dialog that links to the first selected entry.
#pragma once

// Opens it over the main window. Nothing when no entry is selected.
void symlink_dlg_open();
