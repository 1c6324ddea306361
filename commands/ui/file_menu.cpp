#include "commands/ui/file_menu.h"

#include <QAction>
#include <QMainWindow>
#include <QMenu>
#include <string>
#include <vector>

#include "commands/associations.h"
#include "commands/enabling.h"
#include "commands/ui/new_dlg.h"
#include "commands/ui/open_with.h"
#include "commands/ui/property_dlg.h"
#include "commands/ui/symlink_dlg.h"
#include "core/command.h"
#include "core/state.h"
#include "core/toolkit/message.h"
#include "dirmodel/dir_record.h"
#include "platform/desktop.h"
#include "platform/host.h"
#include "views/fname.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"

namespace {
// Most bytes of the path that a further window is started with.
constexpr size_t kWindowPathMax = 1024;

struct ChosenEntry {
  std::string name;
  bool is_dir;
};

// A copy: opening an entry may read another directory.
std::vector<ChosenEntry> chosen_entries() {
  std::vector<ChosenEntry> list;
  for (int32_t i = 0; i < gDir.count; ++i)
    if (gDir.entries[i]->flags & ENTRY_SELECTED)
      list.push_back({gDir.entries[i]->name, dir_entry_is_directory(*gDir.entries[i])});
  return list;
}

int index_of(const std::string& name) {
  for (int32_t i = 0; i < gDir.count; ++i)
    if (name == gDir.entries[i]->name) return i;
  return -2;
}

// Runs the command of each selected file for it alone; fallback stands in where there is none.
int run_on_each(int32_t selector, const char* fallback) {
  for (const ChosenEntry& entry : chosen_entries()) {
    if (entry.is_dir) continue;
    const char* found = _get_pat_cmd(entry.name.c_str(), selector);
    const std::string command = found ? found : fallback;
    file_cmd(command.c_str(), entry.name.c_str());
  }
  return 0;
}

void set_enabled(QMenu* menu, const char* name, bool enabled) {
  if (auto* action = menu->findChild<QAction*>(QString::fromLatin1(name))) action->setEnabled(enabled);
}

void apply_state(QMenu* menu, const FileMenuState& state) {
  const std::pair<const char*, bool> items[] = {
      {"fm_new_file", state.new_file},
      {"fm_new_folder", state.new_folder},
      {"fm_new_window", state.new_window},
      {"fm_open", state.open},
      {"fm_open_another", state.open_another},
      {"fm_view", state.view},
      {"fm_edit", state.edit},
      {"fm_open_with", state.open_with},
      {"fm_open_conwin", state.open_conwin},
      {"fm_refresh", state.refresh},
      {"fm_print", state.print},
      {"fm_print_directory", state.print_directory},
      {"fm_inspect", state.inspect},
      {"fm_exit", state.exit},
  };
  for (const auto& [name, enabled] : items) set_enabled(menu, name, enabled);
}
}  // namespace

int fm_open() {
  if (gDir.sel_count == 0) return fl_open(gDir.current), 0;
  if (gDir.sel_dir_count > 1) return 0;
  const std::string directory = gDir.path;
  // A directory among them is entered in its turn; what comes behind it stands in the directory that was
  // left.
  for (const ChosenEntry& entry : chosen_entries())
    if (gDir.path == directory) fl_open(index_of(entry.name));
  return 0;
}

int fm_open_another() {
  if (gDir.sel_count != 1) return 0;
  for (const ChosenEntry& entry : chosen_entries()) {
    const std::string path = gDir.path + "/" + entry.name;
    if (entry.is_dir && path.size() <= kWindowPathMax) misc_spawn(0, host_program(), {path});
  }
  return 0;
}

int fm_view() {
  return run_on_each(AS_VIEW, "");
}

int fm_edit() {
  return run_on_each(AS_EDIT, gConfig->editor);
}

int fm_open_with() {
  open_with_open();
  return 0;
}

int fm_open_conwin() {
  misc_spawn(0, gConfig->terminal, {});
  return 0;
}

int fm_new_window() {
  misc_spawn(0, host_program(), {});
  return 0;
}

int fm_refresh() {
  fl_refresh();
  return 0;
}

int fm_print() {
  if (!*gConfig->print) qstrcpy(gConfig->print, "lpr @");
  if (file_cmd(gConfig->print, nullptr) != 0) return 0;
  if (gDir.sel_count >= 2) {
    desk_status(1, std::to_string(gDir.sel_count) + " items printed");
  } else if (gDir.current >= 0 && gDir.current < gDir.count) {
    desk_status(1, "'" + std::string(fname_decode(gDir.entries[gDir.current]->name)) + "' printed");
  }
  return 0;
}

int fm_print_directory() {
  return 0;
}

int fm_inspect() {
  if (gDir.sel_count > 0) property_dlg_open();
  return 0;
}

int fm_new_file() {
  new_dlg_open(1);
  return 0;
}

int fm_new_folder() {
  new_dlg_open(0);
  return 0;
}

int fm_symlink() {
  symlink_dlg_open();
  return 0;
}

int fm_setup(QMenu* menu) {
  apply_state(menu, file_menu_state());
  return 0;
}
