#include "platform/host.h"

#include <sys/wait.h>

#include <csignal>
#include <cstring>

#include "tests/support/stand_ins.h"

TEST(Host, StartsByPathSearchAndReportsWhatCannotBeStarted) {
  const TempDir dir;
  const StandIns environment;                                                // puts back the PATH
  dir.shell("mkdir -p first/tool second && echo no program >second/plain");  // a directory is no program
  write_file(dir / "second/tool", "echo \"$0 $1\" > '" + (dir / "out") + "'\n", 0755);  // no "#!" line
  setenv("PATH", (dir / "first" + ":" + (dir / "second") + ":/bin:/usr/bin").c_str(), 1);

  EXPECT_GT(spawnvpe("tool", {"tool", "a b;$(c)"}), 0);
  EXPECT_TRUE(comes_to_hold(dir / "out", "tool a b;$(c)\n"));

  const auto refused = [](const char* program) {
    return spawnvpe(program, {program}) == -1 ? strerror(errno) : "";
  };
  EXPECT_EQ(each<const char*>({"no-such-tool", "plain", "second/.."}, refused),
            "No such file or directory|Permission denied|No such file or directory|");
}

TEST(Host, ChildrenAreNobodysZombieAndHaveCleanSignals) {
  const TempDir dir;
  sigset_t block, before;
  sigemptyset(&block);
  sigaddset(&block, SIGUSR1);
  pthread_sigmask(SIG_BLOCK, &block, &before);
  for (void (*child_signal)(int) : {SIG_DFL, SIG_IGN}) {
    const auto previous = signal(SIGCHLD, child_signal);
    signal(SIGINT, SIG_IGN);
    const std::string out = dir / (child_signal == SIG_IGN ? "ignored" : "default"),
                      none = "\t0000000000000000\n";
    const int descriptor = dup(0);  // must not reach the child
    const char* script =
        "{ grep -E '^Sig(Blk|Ign)' /proc/self/status; ls /proc/self/fd | wc -l; echo end; } >\"$0\"";
    ASSERT_GT(spawnvpe("/bin/sh", {"sh", "-c", script, out}), 0);
    EXPECT_TRUE(comes_to_hold(out, "SigBlk:" + none + "SigIgn:" + none + "4\nend\n"));
    EXPECT_TRUE(waitpid(-1, nullptr, WNOHANG) == -1 && errno == ECHILD);  // no child of ours, living or dead
    close(descriptor);
    signal(SIGINT, SIG_DFL);
    signal(SIGCHLD, previous);
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(Host, FirstLineIsBoundedInLength) {
  std::string line;
  EXPECT_TRUE(host_first_line("yes long | tr -d '\\n'", 10, 60000, &line) && line == "longlonglo") << line;
}
