// The window of file operations: a row for each, newest on top. The table belongs to the interface thread.
#pragma once

#include <string>
#include <vector>

struct fop_info;

constexpr int SLOT_MOST = 50;

// Makes a slot and returns its display record, whose control the slot's buttons act upon. Null with errno:
// ENOMEM when the table is full, ECANCELED once the program is ending.
fop_info* slot_add(int kind, const std::string& source_dir, const std::vector<std::string>& names,
                   const std::string& destination);

// The operation of the slot could not start: the slot stays, with its buttons bound to nothing.
void slot_start_failed(void* container);

// Draws the record in its slot, if that is still there.
void slot_show(const fop_info& info);
// Marks the slot, so that the next sweep takes it away. Its index (0 also when there is none).
int slot_mark_removed(void* container);
// Destroys the slot now. 0, or -1 when there is no such slot.
int slot_remove(void* container);

// Slots whose operation has not ended. The program stays for them when its window is closed.
int slot_running();

// Cancels every operation, answers every question with its escape button, and ends the program once the
// operations have ended; at once when there are none.
void slot_terminate_all();
