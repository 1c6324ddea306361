#include "views/ui/navigation.h"

#include <QMainWindow>

#include <cstdlib>
#include <string>

#include "core/toolkit/escape_watch.h"
#include "core/toolkit/message.h"
#include "dirmodel/dir_record.h"
#include "dirmodel/fs_probe.h"
#include "platform/desktop.h"
#include "views/find.h"
#include "views/path_check.h"
#include "views/path_history.h"
#include "views/ui/base.h"
#include "views/ui/file_list.h"
#include "views/ui/file_list_parts.h"
#include "views/ui/path_bar.h"

namespace {

int sAttempts = 0;

// The cleaned path; empty, after its message, when it cannot be shown. Silently empty when it is the current
// one, or when the user went elsewhere while a slow file system was asked.
std::string checked_path(const std::string& text) {
  const int attempt = ++sAttempts;
  fs_give_up_looking();  // where the user wanted to go before
  const EscapeWatch escape(base_window(), [] {
    ++sAttempts;
    fs_give_up_looking();
  });
  std::string message;
  const std::string path = x_check_path(text.c_str(), gDir.path, &message);
  if (attempt != sAttempts || desk_ended()) return {};
  if (!message.empty()) {
    base_show();  // the first path may be wrong
    wreport(base_window(), "Error", "%s", message.c_str());
  }
  return path;
}

// A way of going elsewhere that is chosen while a directory is read gives that reading up, and is gone when
// it has unwound.
template <class Fn>
bool put_off(Fn fn) {
  if (!fl_reading()) return false;
  fl_after_reading(fn);
  return true;
}

std::string parent_path(std::string path) {
  while (path.size() > 1 && path.back() == '/') path.pop_back();
  const size_t slash = path.rfind('/');
  return slash == std::string::npos || slash == 0 ? "/" : path.substr(0, slash);
}

// After going from a directory to one above it, the row one came through is current.
void show_way_down_to(const std::string& left) {
  const std::string above = gDir.path == "/" ? gDir.path : gDir.path + '/';
  if (left.compare(0, above.size(), above) != 0) return;
  const std::string row = left.substr(above.size(), left.find('/', above.size()) - above.size());
  const int found = find_name(row.c_str());  // the search would take "[a]" for a pattern
  if (found < 0) return;
  fl_goto_index(found);
  fl_select_index(found);
}

}  // namespace

void fl_show_first(const std::string& wanted, const std::string& otherwise) {
  std::string path;
  for (const std::string& place : {wanted, otherwise}) {
    std::string message;
    const bool answered = fl_as_reading([&] {
      desk_status(1, "Reading Directory");
      if (place == otherwise || fs_path_is_directory(place.c_str()) > 0)
        path = x_check_path(place.c_str(), {}, &message);
    });
    if (desk_ended()) return;
    if (answered && !message.empty()) wreport(base_window(), "Error", "%s", message.c_str());
    if (!path.empty()) break;
  }
  gDir.path = path.empty() ? "/" : path;  // never without one: what is made or pasted goes there
  fl_refresh();
}

int fl_setpath(const char* path) {
  const std::string text = path ? path : "";
  if (put_off([text] { fl_setpath(text.c_str()); })) return 0;
  const std::string checked = checked_path(text);
  if (checked.empty()) return -1;
  gDir.path = checked;
  fl_refresh();
  return 0;
}

int fl_newpath(const char* path) {
  const std::string text = path ? path : "";
  if (put_off([text] { fl_newpath(text.c_str()); })) return 0;
  const std::string checked = checked_path(text);
  if (checked.empty()) return -1;
  forward_history.paths.clear();
  x_history_push(&backward_history, gDir.path);
  gDir.path = checked;
  fl_refresh();
  return 0;
}

void fl_up() {
  if (put_off([] { fl_up(); })) return;
  if (gDir.path == "/" || gDir.path.empty()) return;
  const std::string left = gDir.path;
  if (fl_newpath(parent_path(left).c_str()) == 0) show_way_down_to(left);
}

void fl_down() {
  if (gDir.current == -1) return fl_up();
  if (gDir.current < 0 || gDir.current >= gDir.count) return;
  fl_newpath(fl_get_fullpath(gDir.current).c_str());
}

void fl_back() {
  if (put_off([] { fl_back(); })) return;
  if (backward_history.paths.empty()) return;
  const std::string left = gDir.path;
  x_history_push(&forward_history, left);
  std::string path;
  x_history_pop(&backward_history, &path);
  if (fl_setpath(path.c_str()) == 0) show_way_down_to(left);
  tb_update();
}

void fl_forward() {
  if (put_off([] { fl_forward(); })) return;
  const std::string left = gDir.path;
  x_history_push(&backward_history, left);
  std::string path;
  if (x_history_pop(&forward_history, &path) && fl_setpath(path.c_str()) == 0) show_way_down_to(left);
  tb_update();
}

int fl_get_back_count() {
  return int(backward_history.paths.size());
}

int fl_get_forward_count() {
  return int(forward_history.paths.size());
}

int fl_setspec(const char* spec) {
  const std::string wanted = spec && *spec ? spec : "*";
  if (wanted == gDir.filespec) return -1;
  if (put_off([wanted] { fl_setspec(wanted.c_str()); })) return 0;
  gDir.filespec = wanted;
  if (!gDir.path.empty()) fl_refresh();
  return 0;
}

void gm_home() {
  if (const char* home = getenv("HOME")) fl_newpath(home);
}

void gm_back() {
  fl_back();
}

void gm_forward() {
  fl_forward();
}

void gm_up() {
  fl_up();
}
