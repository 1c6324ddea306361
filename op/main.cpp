// zan-op: the engine's directory lists and file operations from a terminal or a script.
#include <cstdio>
#include <cstring>
#include <initializer_list>

#include "op/list.h"
#include "op/operate.h"

int main(int argc, char** argv) {
  if (argc > 1 && std::strcmp(argv[1], "list") == 0) return op_list(argc - 1, argv + 1);
  for (const char* command : {"copy", "move", "delete"})
    if (argc > 1 && std::strcmp(argv[1], command) == 0) return op_operate(argc - 1, argv + 1);
  std::fprintf(stderr, "usage: zan-op list|copy|move|delete ...\n");
  return 2;
}
