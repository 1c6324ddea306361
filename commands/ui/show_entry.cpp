#include "commands/ui/show_entry.h"

#include "dirmodel/dir_record.h"
#include "views/ui/file_list.h"

void show_entry(const std::string& name, bool select) {
  for (int32_t i = 0; i < gDir.count; i++) {
    if (name != gDir.entries[i]->name) continue;
    fl_goto_index(i);
    if (select) fl_select_index(i);
    return;
  }
}
