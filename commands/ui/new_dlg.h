// The dialog that asks for the name of a new file or folder.
#pragma once

// kind 1: a file, anything else: a folder. Modal over the main window.
void new_dlg_open(int kind);
