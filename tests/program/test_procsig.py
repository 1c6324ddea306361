#!/usr/bin/env python3
"""procsig reaches exactly the processes that it is told: by name, by user, with the right signal."""
import os
import shutil
import signal
import subprocess
import sys

from harness import Place, becomes, read, run


class Sleepers(Place):
    """Starts sleeping processes whose programs are copies of sleep by the names asked for."""

    def start(self, name, **user):
        path = os.path.join(self.root, name)
        if not os.path.exists(path):
            shutil.copy("/bin/sleep", path)
        process = subprocess.Popen([path, "1000"], **user)
        becomes(lambda: os.readlink(f"/proc/{process.pid}/exe"), path, "the program")
        return process

    def status(self, *arguments):
        return subprocess.run([os.path.join(self.bin, "companions", "procsig"), *arguments], stdin=subprocess.DEVNULL,
                              capture_output=True, check=False).returncode


def all_of_the_name_and_no_other(sleepers):
    one, two, near, longer = map(sleepers.start, ("zanprobe", "zanprobe", "zanprob", "zanprobe2"))
    assert sleepers.status("-s", "SIGUSR1", "zanprobe") == 1, "several, without -f and a terminal"
    assert sleepers.status("-f", "-s", "SIGUSR1", "zanprobe") == 0
    assert one.wait(60) == two.wait(60) == -signal.SIGUSR1, (one.returncode, two.returncode)
    assert near.poll() is None and longer.poll() is None, "names that only resemble it are left alone"
    assert sleepers.status("-f", "zanprobe") == 1, "nobody left"
    for wrong in ([], ["-s"], ["-s", "SIGNOSUCH", "x"], ["-s", "-3", "x"], ["-z", "x"], ["a", "b"], [""]):
        assert sleepers.status(*wrong) == 2, wrong
    for options, number in ((["-s", "SIGHUP"], 1), (["-s", "USR1"], 10), (["-s", "15"], 15), ([], 15)):
        process = sleepers.start("zanprobe")
        assert sleepers.status(*options, "zanprobe") == 0, options
        assert process.wait(60) == -number, (options, process.returncode)
    if os.getuid() == 0:
        os.chmod(sleepers.root, 0o755)
        other = sleepers.start("zanprobe3", user=65534, group=65534)
        assert sleepers.status("-f", "zanprobe3") == 1, "another user's, although root could"
        assert other.poll() is None, other.returncode


def the_program_counts_and_not_the_name_it_bears(sleepers):
    process, same_start = sleepers.start("zanprobe-long-name-of-a-program"), sleepers.start("zanprobe-long-name-of-b")
    named = subprocess.Popen(["/bin/sh", "-c", "printf zanscript >/proc/$$/comm; read line"], stdin=subprocess.PIPE)
    becomes(lambda: read(f"/proc/{named.pid}/comm"), "zanscript\n", "the name that a process bears")
    assert sleepers.status("-f", "zanscript") == 1
    os.unlink(os.path.join(sleepers.root, "zanprobe-long-name-of-a-program"))  # replaced while it runs
    assert sleepers.status("-f", "zanprobe-long-name-of-a-program") == 0
    assert process.wait(60) == -signal.SIGTERM, process.returncode
    assert same_start.poll() is None and named.poll() is None, "both go on"


sys.exit(run([all_of_the_name_and_no_other, the_program_counts_and_not_the_name_it_bears], Sleepers))
