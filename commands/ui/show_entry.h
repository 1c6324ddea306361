// Moving the file list to an entry by its exact name.
#pragma once

#include <string>

// Makes the entry of gDir with this name (on-disk form) the current one; with select it becomes the selection
// as well. Nothing when there is none: a name is not taken as a pattern.
void show_entry(const std::string& name, bool select);
