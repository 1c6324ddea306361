// The commands and the list of the Hotlist menu, and the states of the Hotlist and Go menus.
#pragma once

class QMenu;

// Adds the current path to the hotlist, or removes it, and updates the navigation toolbar.
void hm_add();
void hm_remove();

// Puts a separator and one item per hotlist path at the end of menu, in place of those of the last call.
// Choosing an item shows its directory. Adds nothing while the hotlist is empty. Looks at no path.
void hm_populate(QMenu* menu);

// Enables the menu's items by the current path; run when the menu opens. Items are found by their object
// names: hm_add, hm_delete; gm_back, gm_forward, gm_up, gm_home.
void hm_setup(QMenu* menu);
void gm_setup(QMenu* menu);
