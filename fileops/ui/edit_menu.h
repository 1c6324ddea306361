// The commands of the Edit menu.
#pragma once

class QMenu;

void em_cut();
void em_copy();
void em_paste();
void em_delete();
// Opens the properties dialog with the name ready to be typed over.
void em_rename();

void em_select_all();
void em_unselect_all();
void em_invert_selection();
void em_select_pattern();
void em_unselect_pattern();

void em_edit_preferences();
void em_edit_associations();

// Enables the menu's items (found by their object names) for the selection and the clipboard.
void em_setup(QMenu* menu);
// Puts the cascades Copy To and Move To at the end of a menu that is about to open. They go away with its
// closing.
void em_populate(QMenu* menu);
