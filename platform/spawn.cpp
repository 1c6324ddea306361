// Starting programs. The child is a grandchild: its parent ends at once, so the system's first process
// inherits and reaps it whatever this program does with SIGCHLD. Whether the exec worked comes back over a
// pipe that the exec itself closes. Everything that touches the file system (the search along PATH, the exec)
// happens in the child, and the caller waits for its word a bounded time only: a PATH with a dead network
// directory in it cannot stop the window.
#include <fcntl.h>
#include <poll.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <csignal>
#include <cstdlib>

#include "platform/desktop.h"
#include "platform/host.h"

namespace {
using SpawnClock = std::chrono::steady_clock;
// The window does not stand still for it: what has not failed by then counts as started.
constexpr int kExecPatience_ms = 2000, kExecPatienceOfWindow_ms = 60;

// All that the child needs, made before the fork: behind it nothing may allocate.
struct SpawnPlan {
  std::vector<std::string> candidates;  // in the order to try them
  std::vector<char*> argv;
  std::vector<char*> script_argv;  // the same run by the shell: a script without a first line "#!"
  const char* dir = nullptr;       // where it starts; null: where we are
  int output = -1;                 // the child's standard output, in a process group of its own; -1: ours
};

struct SpawnNote {
  int kind;  // 'p': value is the process id; 'e': value is the errno of what failed
  int value;
};

std::vector<std::string> spawn_candidates(const std::string& program) {
  if (program.find('/') != std::string::npos) return {program};
  std::vector<std::string> list;
  const char* value = getenv("PATH");
  const std::string path = value ? value : "/usr/local/bin:/usr/bin:/bin";
  for (size_t start = 0; start <= path.size();) {
    size_t end = path.find(':', start);
    if (end == std::string::npos) end = path.size();
    list.push_back((end == start ? "." : path.substr(start, end - start)) + "/" + program);
    start = end + 1;
  }
  return list;
}

SpawnPlan spawn_plan(const std::string& program, const std::vector<std::string>& argv) {
  SpawnPlan plan;
  plan.candidates = spawn_candidates(program);
  for (const std::string& argument : argv) plan.argv.push_back(const_cast<char*>(argument.c_str()));
  plan.argv.push_back(nullptr);
  plan.script_argv = {const_cast<char*>("sh"), nullptr};
  plan.script_argv.insert(plan.script_argv.end(), plan.argv.begin() + (argv.empty() ? 0 : 1),
                          plan.argv.end());
  return plan;
}

void spawn_tell(int fd, int kind, int value) {
  const SpawnNote note{kind, value};
  (void)!write(fd, &note, sizeof note);
}

// In the child. Tries each candidate; comes back only when none could be run.
[[noreturn]] void spawn_exec(SpawnPlan& plan, int report) {
  for (int number = 1; number < NSIG; ++number) signal(number, SIG_DFL);
  sigset_t none;
  sigemptyset(&none);
  sigprocmask(SIG_SETMASK, &none, nullptr);
  if (plan.dir && chdir(plan.dir) != 0) {
    spawn_tell(report, 'e', errno);
    _exit(127);
  }
  if (plan.output >= 0) setpgid(0, 0);
  if (plan.output == STDOUT_FILENO) fcntl(STDOUT_FILENO, F_SETFD, 0);
  if (plan.output > STDOUT_FILENO) dup2(plan.output, STDOUT_FILENO);
  close_range(3, ~0U, CLOSE_RANGE_CLOEXEC);
  int error = ENOENT;
  for (const std::string& candidate : plan.candidates) {
    execv(candidate.c_str(), plan.argv.data());
    if (errno == ENOEXEC) {
      plan.script_argv[1] = const_cast<char*>(candidate.c_str());
      execv("/bin/sh", plan.script_argv.data());
    }
    if (errno != ENOENT && errno != ENOTDIR) error = errno;
  }
  spawn_tell(report, 'e', error);
  _exit(127);
}

[[noreturn]] void spawn_middle(SpawnPlan& plan, int report) {
  const pid_t pid = fork();
  if (pid == 0) spawn_exec(plan, report);
  spawn_tell(report, pid < 0 ? 'e' : 'p', pid < 0 ? errno : pid);
  _exit(0);
}

int milliseconds_until(SpawnClock::time_point end) {
  using std::chrono::milliseconds;
  const auto left = std::chrono::duration_cast<milliseconds>(end - SpawnClock::now()).count();
  return left > 0 ? static_cast<int>(left) : 0;
}

bool wait_readable(int fd, SpawnClock::time_point end) {
  for (;;) {
    pollfd item{fd, POLLIN, 0};
    const int ready = poll(&item, 1, milliseconds_until(end));
    if (ready > 0) return true;
    if (ready == 0 || errno != EINTR) return false;
  }
}

// Reads the notes until the exec closed the pipe, failed, or took too long (it counts as started then).
int spawn_outcome(int fd) {
  const int patience = desk_on_interface_thread() ? kExecPatienceOfWindow_ms : kExecPatience_ms;
  const auto end = SpawnClock::now() + std::chrono::milliseconds(patience);
  int pid = -1, error = 0;
  SpawnNote note;
  while (wait_readable(fd, end)) {
    const ssize_t got = read(fd, &note, sizeof note);
    if (got < 0 && errno == EINTR) continue;
    if (got != sizeof note) break;
    (note.kind == 'p' ? pid : error) = note.value;
  }
  if (error == 0 && pid > 0) return pid;
  errno = error ? error : ECHILD;
  return -1;
}

int spawn_start(SpawnPlan& plan) {
  int report[2];
  if (pipe2(report, O_CLOEXEC) != 0) return -1;
  // No handler of ours may run in a child: its descriptors are still shared.
  sigset_t all, before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  const pid_t middle = fork();
  if (middle == 0) spawn_middle(plan, report[1]);
  const int error = errno;
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  close(report[1]);
  int result = -1;
  if (middle > 0) {
    while (waitpid(middle, nullptr, 0) < 0 && errno == EINTR) continue;
    result = spawn_outcome(report[0]);
  } else {
    errno = error;
  }
  const int outcome = errno;
  close(report[0]);
  errno = outcome;
  return result;
}
}  // namespace

int spawnvpe(const std::string& program, const std::vector<std::string>& argv, const char* dir) {
  if (program.empty()) {
    errno = ENOENT;
    return -1;
  }
  SpawnPlan plan = spawn_plan(program, argv);
  plan.dir = dir;
  return spawn_start(plan);
}

bool host_first_line(const std::string& command, size_t limit, int timeout_ms, std::string* line) {
  const auto end = SpawnClock::now() + std::chrono::milliseconds(timeout_ms);
  int output[2];
  if (pipe2(output, O_CLOEXEC) != 0) return false;
  const std::vector<std::string> argv{"sh", "-c", command};
  SpawnPlan plan = spawn_plan("/bin/sh", argv);
  plan.output = output[1];
  const int pid = spawn_start(plan);
  close(output[1]);
  line->clear();
  bool open = pid > 0;
  while (open && line->size() < limit && (line->empty() || line->back() != '\n')) {
    char byte;
    open = wait_readable(output[0], end) && read(output[0], &byte, 1) == 1;
    if (open) line->push_back(byte);
  }
  if (pid > 0 && line->empty() && milliseconds_until(end) == 0) kill(-pid, SIGKILL);
  close(output[0]);
  return !line->empty();
}
