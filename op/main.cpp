// zan-op: the engine's directory lists and file operations from a terminal or a script.
#include <cstdio>
#include <cstring>

#include "op/list.h"
#include "op/operate.h"
#include "platform/host.h"

int main(int argc, char** argv) {
  host_fill_standard_descriptors();
  const char* command = argc > 1 ? argv[1] : "";
  const auto is = [command](const char* name) { return std::strcmp(command, name) == 0; };
  if (is("list")) return op_list(argc - 1, argv + 1);
  if (is("copy") || is("move") || is("delete")) return op_operate(argc - 1, argv + 1);
  if (is("--version")) return std::puts("zan-op " ZAN_VERSION) < 0;
  const bool wanted = is("--help");
  std::fprintf(wanted ? stdout : stderr, "%s%s", op_list_help(), op_operate_help());
  return wanted ? 0 : 2;
}
