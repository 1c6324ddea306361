// Completing the name of a directory that is being typed.
#pragma once

// For text (bytes as on disk) that begins with "/": the longest common beginning of the directories that it
// may mean, with a "/" behind it when there is only one. Null when there is none. A static buffer. Bounded.
const char* find_matching_dir(const char* text);
