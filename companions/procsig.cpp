// Sends a signal to the user's own processes of a given program. Starts nothing.
#include <dirent.h>
#include <signal.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {
constexpr size_t sCommLength = 15;  // what the kernel keeps of a process's name

const char sHelp[] =
    "Usage: procsig [-f] [-s SIGNAL] NAME\n"
    "Sends SIGNAL (default SIGTERM; a name or a number) to every process of this user whose program is "
    "NAME.\n"
    "  -f         do not ask, however many there are\n"
    "  -s SIGNAL  SIGWINCH, WINCH, 28, ...\n"
    "  --help     this text\n"
    "Exit status: 0 one was signalled, 1 none, 2 wrong usage.\n";

int signal_number(const std::string& text) {
  char* end = nullptr;
  const long number = std::strtol(text.c_str(), &end, 10);
  if (!text.empty() && *end == '\0') return number >= 0 && number < NSIG ? static_cast<int>(number) : -1;
  const std::string name = text.rfind("SIG", 0) == 0 ? text.substr(3) : text;
  for (int i = 1; i < NSIG; ++i) {
    const char* abbreviation = sigabbrev_np(i);
    if (abbreviation != nullptr && name == abbreviation) return i;
  }
  return -1;
}

// The base name of what the process runs, also when that file was replaced since.
std::string program_of(const std::string& proc) {
  char target[PATH_MAX];
  const ssize_t length = readlink((proc + "/exe").c_str(), target, sizeof target);
  if (length <= 0) return {};
  std::string path(target, static_cast<size_t>(length));
  const std::string gone = " (deleted)";
  if (path.size() > gone.size() && path.compare(path.size() - gone.size(), gone.size(), gone) == 0)
    path.resize(path.size() - gone.size());
  return path.substr(path.rfind('/') + 1);
}

bool is_wanted(const std::string& proc, const std::string& name) {
  std::ifstream status(proc + "/status");
  std::string line, comm;
  bool own = false, ended = false;
  while (std::getline(status, line)) {
    if (line.rfind("Name:\t", 0) == 0) comm = line.substr(6);
    if (line.rfind("State:\t", 0) == 0) ended = line[7] == 'Z' || line[7] == 'X';
    if (line.rfind("Uid:\t", 0) == 0) own = std::strtoul(line.c_str() + 5, nullptr, 10) == getuid();
  }
  if (!own || ended) return false;
  // The process's own name may be a script's, or be cut: it counts only where the program is not to be seen.
  const std::string program = program_of(proc);
  return program.empty() ? comm == name.substr(0, sCommLength) : program == name;
}

struct Target {
  pid_t pid;
  int handle;  // holds the process: a number that is given anew cannot be hit. -1: not on this kernel
};

std::vector<Target> find_targets(const std::string& name) {
  std::vector<Target> targets;
  DIR* dir = opendir("/proc");
  if (dir == nullptr) return targets;
  while (const dirent* entry = readdir(dir)) {
    const pid_t pid = static_cast<pid_t>(std::strtol(entry->d_name, nullptr, 10));
    if (pid <= 0 || pid == getpid()) continue;
    const int handle = static_cast<int>(syscall(SYS_pidfd_open, pid, 0));
    if (is_wanted(std::string("/proc/") + entry->d_name, name))
      targets.push_back({pid, handle});
    else if (handle >= 0)
      close(handle);
  }
  closedir(dir);
  return targets;
}

bool confirmed(const Target& target, const std::string& name) {
  std::fprintf(stderr, "signal %s (process %d)? (y/N) ", name.c_str(), static_cast<int>(target.pid));
  char line[16];
  return std::fgets(line, sizeof line, stdin) != nullptr && (line[0] == 'y' || line[0] == 'Y');
}

int signal_all(const std::string& name, int number, bool force) {
  const std::vector<Target> targets = find_targets(name);
  if (!force && targets.size() > 1 && !isatty(STDIN_FILENO)) {
    std::fprintf(stderr, "procsig: %zu processes are %s; -f signals them all\n", targets.size(),
                 name.c_str());
    return 1;
  }
  int signalled = 0;
  for (const Target& target : targets) {
    if (!force && targets.size() > 1 && !confirmed(target, name)) continue;
    const long failed = target.handle >= 0 ? syscall(SYS_pidfd_send_signal, target.handle, number, nullptr, 0)
                                           : kill(target.pid, number);
    if (failed == 0)
      ++signalled;
    else if (errno != ESRCH)
      std::fprintf(stderr, "procsig: %d: %s\n", static_cast<int>(target.pid), std::strerror(errno));
  }
  return signalled > 0 ? 0 : 1;
}
}  // namespace

int main(int argc, char** argv) {
  bool force = false;
  int number = SIGTERM;
  if (argc == 2 && std::strcmp(argv[1], "--help") == 0) return std::fputs(sHelp, stdout), 0;
  int option;
  while ((option = getopt(argc, argv, "fs:")) != -1) {
    if (option == 'f') force = true;
    if (option == 's') number = signal_number(optarg);
    if (option == '?') return std::fputs(sHelp, stderr), 2;
  }
  if (number < 0) return std::fputs("procsig: no such signal\n", stderr), 2;
  if (optind + 1 != argc || argv[optind][0] == '\0') return std::fputs(sHelp, stderr), 2;
  return signal_all(argv[optind], number, force);
}
