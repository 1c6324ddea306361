// The operations that run, as far as other threads and the end of the process must know of them.
#pragma once

#include <memory>

struct fop_control;

// Sees to it that the workers end before the process does, from the first slot on in any case: to be called
// before other duties of the process' end are registered, which then come first.
void slots_running_watch_exit();
// The operation of this slot runs from now on. Interface thread.
void slots_running_add(void* slot, std::shared_ptr<fop_control> control);
// It does not any more. Any thread.
void slots_running_end(void* slot);
