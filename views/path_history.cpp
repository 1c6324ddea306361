#include "views/path_history.h"

PathHistory backward_history, forward_history;

void x_history_push(PathHistory* history, const std::string& path) {
  constexpr size_t kDepth = 10;
  if (path.empty() || (!history->paths.empty() && history->paths.front() == path)) return;
  history->paths.push_front(path);
  if (history->paths.size() > kDepth) history->paths.pop_back();
}

bool x_history_pop(PathHistory* history, std::string* path) {
  if (history->paths.empty()) return false;
  *path = std::move(history->paths.front());
  history->paths.pop_front();
  return true;
}
