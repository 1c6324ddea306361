// Threads that nobody waits for: what hangs in one is left behind with what it owns.
#pragma once

#include <cstddef>
#include <functional>
#include <memory>

struct Detached;

// Runs work on a thread of its own that takes no signal but the alarm. work must own all it touches. Null
// when no thread could be started.
std::shared_ptr<Detached> detached_start(std::function<void()> work, size_t stack_bytes = 65536);

// Makes a blocked system call of the thread return, where the system can be made to. Null and ended threads
// are fine. Does not wait.
void detached_interrupt(const std::shared_ptr<Detached>& thread);
