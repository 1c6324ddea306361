#include "core/ui/startup.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QApplication>
#include <cstdlib>

#include "commands/associations.h"
#include "core/command_line.h"
#include "core/state.h"
#include "core/ui/appearance_portal.h"
#include "core/ui/exit.h"
#include "core/ui/file_manager1.h"
#include "core/ui/signals.h"
#include "fileops/ui/slots.h"
#include "fileops/ui/slots_running.h"
#include "platform/host.h"
#include "platform/qt/desktop_qt.h"
#include "views/ui/base.h"

namespace {

bool names_wayland(const std::string& server) {
  struct stat status;
  return server.rfind("wayland", 0) == 0 || (stat(server.c_str(), &status) == 0 && S_ISSOCK(status.st_mode));
}

// Where the toolkit ends the process because its display has gone.
void save_at_sudden_end() {
  if (gettid() == getpid()) base_save_without_display();  // what is saved is the interface thread's
}

}  // namespace

void startup_choose_display(const CommandLine& line) {
  if (line.server.empty()) return;
  const bool wayland = names_wayland(line.server);
  setenv(wayland ? "WAYLAND_DISPLAY" : "DISPLAY", line.server.c_str(), 1);
  // The other server must not win, whatever the session says.
  if (!wayland) unsetenv("WAYLAND_DISPLAY");
  setenv("QT_QPA_PLATFORM", wayland ? "wayland" : "xcb", 0);
}

int startup_run(int argc, char** argv, const CommandLine& line) {
  desktop_qt_setup();
  host_extend_path();
  state_init(argc, argv);
  init_read_associations(gConfigPath, "associate.003");
  signals_attach({slot_terminate_all, signal_refresh});
  slots_running_watch_exit();
  std::atexit(save_at_sudden_end);
  base_create();
  base_open(line);
  file_manager1_show_pending();
  file_manager1_offer();
  appearance_portal_follow();
  const int status = program_ending() ? 0 : QApplication::exec();
  base_closing();
  desktop_qt_gone();
  base_destroy();
  return status;
}
