#include "views/ui/base_wiring.h"

#include <QAction>
#include <QMainWindow>

#include "commands/associations.h"
#include "commands/ui/context_menus.h"
#include "commands/ui/file_menu.h"
#include "commands/ui/menus.h"
#include "commands/ui/view_menu.h"
#include "core/keybind.h"
#include "core/toolkit/message.h"
#include "dirmodel/dir_record.h"
#include "fileops/ui/clipboard.h"
#include "fileops/ui/edit_menu.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"
#include "views/ui/file_list_dnd.h"
#include "views/ui/file_list_hooks.h"
#include "views/ui/file_list_view.h"
#include "views/ui/hotlist_menu.h"
#include "views/ui/tree_pane.h"

namespace {

int open_file(int i) {
  const DirEntry& entry = *gDir.entries[i];
  const std::string name = entry.name;
  return as_open(name.c_str(), entry.st.st_mode, [](int on) { wblock(base_window(), on); }) > 0 ? 0 : -1;
}

void on_shown_selection(void (*command)()) {
  fl_select_pointed();
  command();
}

void connect_tool(QMainWindow* window, const char* name, void (*handler)()) {
  if (auto* action = window->findChild<QAction*>(QString::fromLatin1(name)))
    QObject::connect(action, &QAction::triggered, window, [handler] { handler(); });
}

}  // namespace

void base_wire_tree(QTreeWidget* tree) {
  tree_setup(tree);
}

void base_wire_list(FileListView* list) {
  gFileListHooks.refresh_cut = file_get_cut_files;
  gFileListHooks.is_cut = file_is_cut;
  gFileListHooks.context_menu = list_cmenu_open;
  gFileListHooks.open_selected = [] { fm_open(); };
  gFileListHooks.open_file = open_file;
  gFileListHooks.start_drag = fl_dnd_start;
  fl_dnd_attach(list);
  init_actions();
  init_kb_defaults();
  init_link(list);
}

void base_wire_menus(QMainWindow* window) {
  menus_create(window);
  connect_tool(window, "tb_add", hm_add);
  connect_tool(window, "tb_hotlist", vm_hotlist_toggle);
  connect_tool(window, "tb_cut", [] { on_shown_selection(em_cut); });
  connect_tool(window, "tb_copy", [] { on_shown_selection(em_copy); });
  connect_tool(window, "tb_paste", em_paste);
}
