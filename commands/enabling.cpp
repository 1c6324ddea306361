#include "commands/enabling.h"

#include "commands/associations.h"
#include "dirmodel/dir_record.h"

namespace {
void take_away(const DirEntry& entry, SelectionCommands* commands) {
  const int index = dir_entry_is_directory(entry) ? -1 : _get_pat_idx(entry.name);
  if (index < 0) {
    *commands = {false, false, false};
    return;
  }
  const Association& association = *apat[static_cast<size_t>(index)];
  commands->open &= !isempty(association.open_cmd.c_str());
  commands->view &= !isempty(association.view_cmd.c_str());
  commands->edit &= !isempty(association.edit_cmd.c_str());
}
}  // namespace

SelectionCommands selection_commands() {
  SelectionCommands commands;
  if (gDir.sel_dir_count > 0) return {false, false, false};
  int32_t left = gDir.sel_count;
  for (int32_t i = 0; i < gDir.count && left > 0; ++i) {
    const DirEntry& entry = *gDir.entries[i];
    if (!(entry.flags & ENTRY_SELECTED)) continue;
    --left;
    take_away(entry, &commands);
    if (!commands.open && !commands.view && !commands.edit) break;
  }
  return commands;
}

FileMenuState file_menu_state() {
  FileMenuState state;
  if (gDir.sel_count == 0) {
    state.open = state.open_another = state.open_with = state.edit = state.view = false;
    state.print = state.inspect = false;
  } else if (gDir.sel_dir_count > 0) {
    state.open_with = state.edit = state.view = state.print = false;
  } else {
    state.open_another = false;
    const SelectionCommands commands = selection_commands();
    state.open = commands.open;
    state.view = commands.view;
    state.edit = commands.edit;
  }
  return state;
}
