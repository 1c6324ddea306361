// The dialog that runs a typed command on the selected files.
#pragma once

// Opens it over the main window.
void open_with_open();
