// Looking at the file system without hanging with it.
#pragma once

#include <functional>
#include <string>

// Runs work, which is about path (empty: no file), on a thread of its own and waits at most timeout_ms; on
// the interface thread events run meanwhile, unless desk_end was called. True when work has ended. False: the
// thread got the alarm signal, did not end, and is left behind; work must therefore own all it touches
// (shared_ptr), and hold no lock. False at once, with nothing done, where too many threads hang already.
bool fs_bounded(const std::string& path, std::function<void()> work, int timeout_ms = 10000);

// The same for work that only looks, at most 10 s: false also as soon as fs_give_up_looking is called when it
// runs for the interface thread.
bool fs_bounded_look(const std::string& path, std::function<void()> work);

// Ends every wait of the interface thread for a look, also those below on the stack. Interface thread.
void fs_give_up_looking();
// Ends every wait of the interface thread; what is being done may still happen later. Interface thread.
void fs_give_up();

// -1 when the status cannot be read (or not in time), 0 not a directory, else its link count (2 where the
// file system reports 0). Bounded.
int fs_path_is_directory(const char* path);

// Whether parent/name (display form) has a subdirectory: > 0 yes, 0 none, -1 cannot be opened, -2 cannot be
// encoded. Bit value 2 of flags: dot-names count. Bounded.
int fs_path_has_subdirectories(const char* parent, const char* name, int flags);

// To be called first by a thread that makes file system calls which may hang: the alarm signal interrupts
// them (its handler does nothing), every other signal is left to the interface thread.
void fs_worker_signals();

// The same for a path as it is on disk, not bounded: for a thread that may hang.
int fs_look_for_subdirectories(const char* path, int flags);
