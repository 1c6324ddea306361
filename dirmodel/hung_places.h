// Which file systems have threads hanging in them, so that one that never answers costs a few threads and not
// one for every look at it. Any thread.
#pragma once

#include <memory>
#include <string>

// What keeps a note alive; gone with its last owner.
using HungNote = std::shared_ptr<void>;

// Notes that a thread hangs in a call on path. The thread itself is to hold the note, so that it ends with
// it.
HungNote hung_note(const std::string& path);

// Whether so many threads hang there already that no further one is to be spent: on the file system of the
// path when it is of a kind that depends on somebody's answers, else on that very path.
bool hung_full(const std::string& path);
