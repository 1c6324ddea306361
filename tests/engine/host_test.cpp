#include "platform/host.h"

#include <sys/wait.h>

#include <cerrno>
#include <csignal>

#include "tests/support/stand_ins.h"

TEST(Host, StartsByPathSearchAndReportsWhatCannotBeStarted) {
  const TempDir dir;
  const StandIns environment;               // puts back the PATH
  dir.shell("mkdir -p first/tool second");  // a directory of that name is no program
  write_file(dir / "second/tool", "echo \"$0 $1\" > '" + (dir / "out") + "'\n", 0755);  // no "#!" line
  write_file(dir / "second/plain", "no program\n", 0644);
  setenv("PATH", (dir / "first" + ":" + (dir / "second") + ":/bin:/usr/bin").c_str(), 1);

  EXPECT_GT(spawnvpe("tool", {"tool", "a b;$(c)"}), 0);
  EXPECT_TRUE(comes_to_hold(dir / "out", "tool a b;$(c)\n"));

  const std::pair<const char*, int> rows[] = {
      {"no-such-tool", ENOENT}, {"plain", EACCES}, {"second/..", ENOENT}};
  for (const auto& [program, error] : rows) {
    errno = 0;
    EXPECT_EQ(spawnvpe(program, {program}), -1) << program;
    EXPECT_EQ(errno, error) << program;
  }
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
    const std::string out = dir / (child_signal == SIG_IGN ? "ignored" : "default");
    const int descriptor = dup(0);  // must not reach the child
    const std::string script =
        "{ grep -E '^Sig(Blk|Ign)' /proc/self/status; ls /proc/self/fd | wc -l; echo end; } > '" + out + "'";
    ASSERT_GT(spawnvpe("/bin/sh", {"sh", "-c", script}), 0);
    EXPECT_TRUE(comes_to_hold(out, "end"));
    EXPECT_EQ(read_file(out), "SigBlk:\t0000000000000000\nSigIgn:\t0000000000000000\n4\nend\n");
    EXPECT_EQ(waitpid(-1, nullptr, WNOHANG), -1);  // no child of ours, living or dead
    EXPECT_EQ(errno, ECHILD);
    close(descriptor);
    signal(SIGINT, SIG_DFL);
    signal(SIGCHLD, previous);
  }
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
}

TEST(Host, FirstLineIsBoundedInLength) {
  std::string line;
  EXPECT_TRUE(host_first_line("yes long | tr -d '\\n'", 10, 60000, &line));
  EXPECT_EQ(line, "longlonglo");
}
