// The two stacks of visited directories behind "back" and "forward".
#pragma once

#include <list>
#include <string>

struct PathHistory {
  std::list<std::string> paths;  // the top in front; at most 10
};

extern PathHistory backward_history, forward_history;

// Puts path on top; nothing when it is empty or is the top already. The oldest of more than 10 is dropped.
void x_history_push(PathHistory* history, const std::string& path);
// Takes the top. False, *path unchanged, when there is none.
bool x_history_pop(PathHistory* history, std::string* path);
