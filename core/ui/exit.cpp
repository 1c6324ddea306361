#include "core/ui/exit.h"

#include <QCoreApplication>
#include <QMainWindow>

#include "core/state.h"
#include "dirmodel/dir_read.h"
#include "fileops/ui/slots.h"
#include "platform/desktop.h"
#include "views/ui/base.h"

namespace {
bool sEnding = false;
}

void fm_exit() {
  base_closing();
  if (slot_running() == 0) return program_end();
  base_window_closed = 1;
  if (QMainWindow* window = base_window()) window->hide();
}

void program_end() {
  base_closing();
  sEnding = true;
  dir_read_cancel();
  desk_end();
  if (QMainWindow* window = base_window()) window->hide();
  QCoreApplication::exit(0);
}

bool program_ending() {
  return sEnding;
}
