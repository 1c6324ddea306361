#include "op/list.h"

#include <clocale>
#include <cstdio>
#include <cstring>
#include <string>
#include <string_view>

#include "core/state.h"
#include "dirmodel/dir_read.h"
#include "dirmodel/dir_sort.h"
#include "platform/terminal/terminal.h"
#include "views/row_text.h"

namespace {
struct ListOptions {
  dir_compare compare = dir_cmp_name;
  bool ascending = true, folders_first = false, hide_dot = false;
  std::string filter = "*", dir;
  char row_end = '\n';
};

const struct {
  const char* name;
  dir_compare compare;
} kSortOrders[] = {
    {"name", dir_cmp_name}, {"size", dir_cmp_size},   {"date", dir_cmp_date},
    {"user", dir_cmp_user}, {"group", dir_cmp_group}, {"permissions", dir_cmp_permissions},
    {"link", dir_cmp_link},
};

bool choose_sort(const char* name, ListOptions* options) {
  for (const auto& order : kSortOrders)
    if (std::strcmp(order.name, name) == 0) {
      options->compare = order.compare;
      return true;
    }
  return false;
}

// False for arguments that are wrong.
bool parse_list_options(int argc, char** argv, ListOptions* options) {
  bool only_dir = false;
  int dirs = 0;
  for (int i = 1; i < argc; ++i) {
    const std::string_view argument = argv[i];
    const char* value = i + 1 < argc ? argv[i + 1] : nullptr;
    if (only_dir || argument.empty() || argument[0] != '-') {
      options->dir = argument;
      ++dirs;
    } else if (argument == "--") {
      only_dir = true;
    } else if (argument == "--sort") {
      if (!value || !choose_sort(value, options)) return false;
      ++i;
    } else if (argument == "--filter") {
      if (!value) return false;
      options->filter = value;
      ++i;
    } else if (argument == "--descending") {
      options->ascending = false;
    } else if (argument == "--folders-first") {
      options->folders_first = true;
    } else if (argument == "--hide-dot") {
      options->hide_dot = true;
    } else if (argument == "-0") {
      options->row_end = '\0';
    } else {
      return false;
    }
  }
  return dirs == 1;
}
}  // namespace

const char* op_list_help() {
  return "usage: zan-op list [--sort name|size|date|user|group|permissions|link] [--descending]\n"
         "                   [--folders-first] [--hide-dot] [--filter PATTERN] [-0] DIR\n";
}

int op_list(int argc, char** argv) {
  ListOptions options;
  if (!parse_list_options(argc, argv, &options)) return std::fputs(op_list_help(), stderr), 2;
  setlocale(LC_ALL, "");
  terminal_start();
  gConfig->cdirs = options.folders_first;
  gConfig->flags = (gConfig->flags & ~SET_HIDE_DOT) | (options.hide_dot ? SET_HIDE_DOT : 0u);
  gDir.path = options.dir;
  gDir.filespec = options.filter;
  const int result = dir_read(&gDir, options.compare, options.ascending);
  for (int i = 0; i < gDir.count; ++i) {
    const std::string row = fl_row_text(*gDir.entries[i]);
    std::fwrite(row.data(), 1, row.size(), stdout);
    std::putchar(options.row_end);
  }
  const bool written = std::fflush(stdout) == 0 && !std::ferror(stdout);
  if (!written) std::perror("zan-op: cannot write");
  if (result != 0) std::fprintf(stderr, "zan-op: cannot read directory '%s'\n", options.dir.c_str());
  return result == 0 && written ? 0 : 1;
}
