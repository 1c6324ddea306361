#include "platform/host.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>

namespace {
constexpr char kSystemDir[] = "/usr/vireon/bin";
constexpr char kDefaultPath[] = "/usr/local/bin:/usr/bin:/bin";
std::string sHostProgram;

bool is_program(const std::string& path) {
  struct stat status;
  return stat(path.c_str(), &status) == 0 && S_ISREG(status.st_mode) && access(path.c_str(), X_OK) == 0;
}

// The file that this process runs. After an update in place the kernel marks the old one as deleted; the new
// one stands under the same name.
std::string own_executable() {
  char path[4096];
  const ssize_t length = readlink("/proc/self/exe", path, sizeof path);
  if (length <= 0 || length == sizeof path) return {};
  std::string text(path, static_cast<size_t>(length));
  const std::string mark = " (deleted)";
  if (text.size() > mark.size() && text.ends_with(mark) && access(text.c_str(), F_OK) != 0)
    text.resize(text.size() - mark.size());
  return text;
}

// Where the companions may stand, the nearest first: the build tree, an installed tree wherever it was moved
// to, the place it was configured for.
std::vector<std::string> companion_directories() {
  std::vector<std::string> list;
  const std::string program = own_executable();
  const std::string directory = program.substr(0, program.rfind('/') + 1);
  if (!directory.empty()) list = {directory + "companions", directory + "../libexec/zan"};
  list.push_back(ZAN_LIBEXEC_DIR);
  return list;
}
}  // namespace

int lstat_optimize(const struct dirent*, struct stat64*) {
  return -1;
}

int stat_optimize(const struct dirent*, struct stat64*) {
  return -1;
}

void host_fill_standard_descriptors() {
  for (int fd = STDIN_FILENO; fd <= STDERR_FILENO; ++fd)
    if (fcntl(fd, F_GETFD) < 0 && open("/dev/null", O_RDWR) < 0) return;
}

int pathmgr_symlink(const char*, const char*) {
  errno = ENOSYS;
  return -1;
}

std::string pathfind_r(const std::string& path_list, const std::string& name) {
  if (name.empty()) return {};
  for (size_t start = 0; start <= path_list.size();) {
    const size_t end = std::min(path_list.find(':', start), path_list.size());
    std::string path = path_list.substr(start, end - start);
    path = (path.empty() ? "." : path) + "/" + name;  // an empty element is the current directory
    if (is_program(path)) return path;
    start = end + 1;
  }
  return {};
}

std::string host_companion(const std::string& name) {
  const std::string fixed = std::string(kSystemDir) + "/" + name;
  if (is_program(fixed)) return fixed;
  for (const std::string& directory : companion_directories())
    if (is_program(directory + "/" + name)) return directory + "/" + name;
  return fixed;
}

void host_extend_path() {
  const char* value = getenv("PATH");
  std::string path = value && *value ? value : kDefaultPath;
  for (const std::string& directory : companion_directories()) {
    if (!is_program(directory + "/conwin")) continue;
    char* real = realpath(directory.c_str(), nullptr);
    const std::string found = real ? real : directory;
    free(real);
    if ((":" + path + ":").find(":" + found + ":") == std::string::npos) path += ":" + found;
    break;
  }
  setenv("PATH", path.c_str(), 1);
  // Present from the start, so that setting it later only exchanges a pointer: other threads read the
  // environment.
  setenv("VRIG", "0", 1);
}

std::string host_program() {
  return sHostProgram.empty() ? own_executable() : sHostProgram;
}

void host_set_program(const std::string& path) {
  sHostProgram = path;
}
