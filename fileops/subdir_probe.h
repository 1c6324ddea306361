// Finding out, in the background, which of the directories on the screen have subdirectories.
#pragma once

#include <functional>
#include <string>

#include "dirmodel/fs_probe.h"

enum : int { SUBDIR_DOT = 2 };  // dot-names count

// Looks on a thread whether the directory at path (as on disk) has a subdirectory. done gets the result on
// the interface thread, later: > 0 yes, 0 none, -1 it cannot be opened or did not answer within 10 seconds.
// At most four paths are looked at at a time, the others wait in order. Interface thread. Returns the probe's
// number, > 0.
int subdir_probe(const std::string& path, int flags, std::function<void(int result)> done,
                 int (*look)(const char* path, int flags) = fs_look_for_subdirectories);

// Forgets a probe: its done is never called. Unknown numbers are ignored. Interface thread.
void subdir_probe_cancel(int probe);
