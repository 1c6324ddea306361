#include "commands/ui/menu_table.h"

#include "commands/ui/file_menu.h"
#include "commands/ui/help.h"
#include "commands/ui/view_menu.h"
#include "core/ui/exit.h"
#include "fileops/ui/edit_menu.h"
#include "views/ui/hotlist_menu.h"
#include "views/ui/navigation.h"

namespace {
using enum MenuKind;

// The commands that have a result do so for others; a menu has no use for it.
template <auto command>
void menu_command() {
  command();
}

constexpr MenuEntry menu_separator(const char* menu) {
  return {menu, "", "", "", separator, nullptr};
}

constexpr char kMenuFile[] = "file_menu", kMenuEdit[] = "edit_menu", kMenuView[] = "view_menu",
               kMenuGo[] = "go_menu";
constexpr char kMenuHotlist[] = "hotlist_menu", kMenuHelp[] = "help_menu";

// clang-format off
constexpr MenuEntry kMenuRows[] = {
    {kMenuFile, "fm_new", "&New", "", submenu, nullptr},
    {"fm_new", "fm_new_file", "F&ile", "F3", item, menu_command<fm_new_file>},
    {"fm_new", "fm_new_folder", "&Folder", "F4", item, menu_command<fm_new_folder>},
    {"fm_new", "fm_new_window", "&Window", "Ctrl+N", item, menu_command<fm_new_window>},
    menu_separator(kMenuFile),
    {kMenuFile, "fm_open", "&Open", "Enter", item, menu_command<fm_open>},
    {kMenuFile, "fm_open_another", "Open In Win&dow", "Ctrl+Enter", item, menu_command<fm_open_another>},
    {kMenuFile, "fm_view", "&View", "Alt+V", item, menu_command<fm_view>},
    {kMenuFile, "fm_edit", "&Edit", "Ctrl+E", item, menu_command<fm_edit>},
    {kMenuFile, "fm_open_with", "Open &With...", "Shift+Enter", item, menu_command<fm_open_with>},
    menu_separator(kMenuFile),
    {kMenuFile, "fm_open_conwin", "Open &Terminal", "Ctrl+T", item, menu_command<fm_open_conwin>},
    menu_separator(kMenuFile),
    {kMenuFile, "fm_refresh", "&Refresh", "F5", item, menu_command<fm_refresh>},
    menu_separator(kMenuFile),
    {kMenuFile, "fm_print", "&Print", "Ctrl+P", item, menu_command<fm_print>},
    {kMenuFile, "fm_print_directory", "Print Dire&ctory", "", item, menu_command<fm_print_directory>},
    menu_separator(kMenuFile),
    {kMenuFile, "fm_inspect", "&Inspect...", "F9", item, menu_command<fm_inspect>},
    menu_separator(kMenuFile),
    {kMenuFile, "fm_exit", "E&xit", "Alt+X", item, fm_exit},

    {kMenuEdit, "em_cut", "Cu&t", "Ctrl+X", item, em_cut},
    {kMenuEdit, "em_copy", "C&opy", "Ctrl+C", item, em_copy},
    {kMenuEdit, "em_paste", "&Paste", "Ctrl+V", item, em_paste},
    {kMenuEdit, "em_delete", "&Delete", "Del", item, em_delete},
    {kMenuEdit, "em_rename", "&Rename", "F2", item, em_rename},
    menu_separator(kMenuEdit),
    {kMenuEdit, "em_select", "&Select", "", submenu, nullptr},
    {"em_select", "em_select_all", "&All", "Ctrl+A", item, em_select_all},
    {"em_select", "em_select_pattern", "&Pattern", "Ctrl+S", item, em_select_pattern},
    {kMenuEdit, "em_unselect", "&Unselect", "", submenu, nullptr},
    {"em_unselect", "em_unselect_all", "&All", "Ctrl+U", item, em_unselect_all},
    {"em_unselect", "em_unselect_pattern", "&Pattern", "", item, em_unselect_pattern},
    {kMenuEdit, "em_invert", "&Invert Selection", "Ctrl+I", item, em_invert_selection},
    menu_separator(kMenuEdit),
    {kMenuEdit, "em_preferences", "&Preferences...", "F10", item, em_edit_preferences},
    {kMenuEdit, "em_associations", "&Associations...", "F11", item, em_edit_associations},

    {kMenuView, "vm_toolbar", "Toolbars", "", submenu, nullptr},
    {"vm_toolbar", "vm_nav_tb", "&Navigation", "", toggle, menu_command<vm_inert>},
    {"vm_toolbar", "vm_clip_tb", "&Clipboard", "", toggle, vm_clip_tb_toggle},
    {"vm_toolbar", "vm_misc_tb", "&Misc", "", toggle, menu_command<vm_inert>},
    {"vm_toolbar", "vm_hotlist_tb", "&Hotlist", "", toggle, menu_command<vm_inert>},
    {"vm_toolbar", "vm_path_tb", "&Path", "", toggle, menu_command<vm_inert>},
    {"vm_toolbar", "vm_filter_tb", "&Filter", "", toggle, menu_command<vm_inert>},
    menu_separator("vm_toolbar"),
    {"vm_toolbar", "vm_text_and_images", "Text &and Images", "", choice, menu_command<vm_inert>},
    {"vm_toolbar", "vm_text_only", "&Text Only", "", choice, menu_command<vm_inert>},
    {"vm_toolbar", "vm_images_only", "&Images Only", "", choice, menu_command<vm_inert>},
    {kMenuView, "vm_icon", "&Icon Pane", "", toggle, menu_command<vm_inert>},
    {kMenuView, "vm_hotlist", "&Hotlist Pane", "", toggle, vm_hotlist_toggle},
    {kMenuView, "vm_status", "&Status Pane", "", toggle, menu_command<vm_inert>},

    {kMenuGo, "gm_back", "Back", "Alt+Left", item, gm_back},
    {kMenuGo, "gm_forward", "Forward", "Alt+Right", item, gm_forward},
    {kMenuGo, "gm_up", "Up One Level", "Backspace", item, gm_up},
    {kMenuGo, "gm_home", "Home", "F6", item, gm_home},

    {kMenuHotlist, "hm_add", "&Add Current Directory", "Ctrl+D", item, hm_add},
    {kMenuHotlist, "hm_delete", "&Remove Current Directory", "Ctrl+R", item, hm_remove},

    {kMenuHelp, "help_quickref", "&Quick Reference", "F1", item, help_quickref},
    {kMenuHelp, "help_about", "&About", "", item, help_about},
};
// clang-format on
static_assert(std::size(kMenuRows) == kMenuEntries, "menu_table.h gives the number of entries");

constexpr bool same_text(const char* a, const char* b) {
  return *a != '\0' && std::string_view(a) == b;
}

constexpr bool menu_rows_differ() {
  for (const MenuEntry* a = kMenuRows; a != std::end(kMenuRows); ++a)
    for (const MenuEntry* b = a + 1; b != std::end(kMenuRows); ++b)
      if (same_text(a->id, b->id) || same_text(a->keys, b->keys)) return false;
  return true;
}
static_assert(menu_rows_differ(), "two entries have the same identifier or the same keys");
}  // namespace

// Alt+V is a shortcut of its own, so the View menu has another mnemonic.
const std::array<MenuTitle, kMenuTitles> kMenuBar = {{
    {kMenuFile, "&File"},
    {kMenuEdit, "&Edit"},
    {kMenuView, "V&iew"},
    {kMenuGo, "&Go"},
    {kMenuHotlist, "Ho&tlist"},
    {kMenuHelp, "&Help"},
}};
const std::array<MenuEntry, kMenuEntries> kMenuTable = std::to_array(kMenuRows);
