#include "core/state.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>

#include "core/history.h"
#include "dirmodel/text.h"
#include "views/fname.h"

namespace {
Settings* default_record() {
  static Settings record;
  settings_defaults(&record);
  record.flags |= SET_HIDE_DOT;
  return &record;
}

std::string current_directory() {
  char cwd[1024];
  // The kernel's "(unreachable)/..." is no path either.
  return getcwd(cwd, sizeof cwd) && cwd[0] == '/' ? cwd : "";
}

// The settings are saved when the working directory has become another one.
std::string settings_place(const std::string& path) {
  char* absolute = path[0] == '/' ? nullptr : realpath(path.c_str(), nullptr);
  if (!absolute) return path;
  const std::string place = absolute;
  free(absolute);
  return place;
}

// Whether the path that is there can serve as the settings directory.
bool usable_directory(const std::string& path) {
  struct stat status;
  return access(path.c_str(), W_OK) == 0 && stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode);
}
}  // namespace

std::string gStartPath = "/", gStartElsewhere = "/";
const char* gConfigPath = nullptr;
Settings* gConfig = default_record();
uint32_t gOptions = OPT_INITIAL;
int base_window_closed = 0;

void state_start_directory(int argc, char** argv) {
  int first = 1;
  while (first < argc && argv[first][0] == '-') ++first;
  const std::string cwd = current_directory();
  gStartPath = gStartElsewhere = cwd.empty() ? "/" : cwd;
  if (first >= argc || !argv[first][0]) return;
  const char* argument = argv[first];
  // Relative to a directory that has no name any more, it names nothing that could be read again.
  if (argument[0] == '/')
    gStartPath = argument;
  else if (!cwd.empty())
    gStartPath = es_construct_fullpath(cwd.c_str(), argument);
}

std::string state_settings_directory() {
  const char* home = getenv("HOME");
  std::string path = es_construct_fullpath(home ? home : "/", ".vr/zan");
  if (access(path.c_str(), F_OK) == 0) {
    if (usable_directory(path)) return settings_place(path);
    std::fprintf(stderr, "ZAN error: unable to access config directory %s\n", path.c_str());
    return {};
  }
  if (mkdir(path.c_str(), 0700) == 0) return settings_place(path);
  std::fprintf(stderr, "ZAN error: unable to create config directory %s\n", path.c_str());
  return {};
}

void state_init(int argc, char** argv) {
  state_start_directory(argc, argv);
  static std::string config_path;
  config_path = state_settings_directory();
  gConfigPath = config_path.empty() ? nullptr : config_path.c_str();
  if (settings_load(gConfig, gConfigPath, "config.003") && (gConfig->flags & SET_ENC_MASK) &&
      gConfig->encoding[0])
    fname_set_translation(gConfig->encoding);
  init_read_cboxs(gConfigPath);
}
