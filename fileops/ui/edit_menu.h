// The commands of the Edit menu.
#pragma once

void em_cut();
void em_copy();
void em_paste();
void em_delete();
// Opens the properties dialog on the selected entry's name.
void em_rename();

void em_select_all();
void em_unselect_all();
void em_invert_selection();
void em_select_pattern();
void em_unselect_pattern();

void em_edit_preferences();
void em_edit_associations();
