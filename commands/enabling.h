// Which commands make sense for the selection of gDir.
#pragma once

// What the associations offer for all selected entries together: true while each of them has the command.
struct SelectionCommands {
  bool open = true, view = true, edit = true;
};

// Walks the selected entries in list order and stops once nothing is left to find out. A directory, or a file
// without an association, leaves nothing.
SelectionCommands selection_commands();

// The items of the File menu, by their identifiers behind "fm_".
struct FileMenuState {
  bool new_file = true, new_folder = true, new_window = true;
  bool open = true, open_another = true, view = true, edit = true, open_with = true;
  bool open_conwin = true, refresh = true;
  bool print = true, print_directory = false, inspect = true, exit = true;
};

FileMenuState file_menu_state();
