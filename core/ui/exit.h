// Ending the program.
#pragma once

// The Exit command, and closing the main window: saves what is kept (base_closing); with no file operation in
// progress the program then ends with status 0, else the window is only hidden and the sweep of the last slot
// ends the program (program_end).
void fm_exit();

// Ends the program with status 0, saving first what has not been saved yet. Returns; the event loop ends.
void program_end();

// True once program_end was called.
bool program_ending();
