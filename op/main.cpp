// zan-op: the engine's directory lists and file operations from a terminal or a script.
#include <cstdio>

int main() {
  std::fprintf(stderr, "usage: zan-op list|copy|move|delete ...\n");
  return 2;
}
