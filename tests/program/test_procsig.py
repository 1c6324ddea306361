#!/usr/bin/env python3
"""procsig reaches exactly the processes that it is told: by name, by user, with the right signal."""
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time

procsig = os.path.join(sys.argv[1], "companions", "procsig")
root = tempfile.mkdtemp(prefix="zan-procsig-")
started = []


def start(name, as_nobody=False):
    """A sleeping process whose program is a copy of sleep by that name."""
    path = os.path.join(root, name)
    if not os.path.exists(path):
        shutil.copy("/bin/sleep", path)
    user = {"user": 65534, "group": 65534} if as_nobody else {}
    process = subprocess.Popen([path, "1000"], **user)
    started.append(process)
    while os.readlink(f"/proc/{process.pid}/exe") != path:
        time.sleep(0.01)
    return process


def run(*arguments, **options):
    return subprocess.run([procsig, *arguments], stdin=subprocess.DEVNULL, stdout=subprocess.PIPE,
                          stderr=subprocess.PIPE, text=True, check=False, **options)


def ended_by(process):
    return -process.wait(60)


def check(condition, what):
    if not condition:
        raise AssertionError(what)


def test_reaches_all_of_the_name_and_no_other():
    one, two = start("zanprobe"), start("zanprobe")
    near, longer = start("zanprob"), start("zanprobe2")
    check(run("-s", "SIGUSR1", "zanprobe").returncode == 1, "without -f and a terminal, several are not signalled")
    check(run("-f", "-s", "SIGUSR1", "zanprobe").returncode == 0, "both signalled")
    check(ended_by(one) == ended_by(two) == signal.SIGUSR1, "ended by the signal asked for")
    check(near.poll() is None and longer.poll() is None, "names that only resemble it are left alone")
    check(run("-f", "zanprobe").returncode == 1, "nobody left")


def test_signal_names_and_numbers():
    for text, number in (("WINCH", 0), ("SIGHUP", 1), ("15", 15), (None, 15)):
        process = start("zanprobe")
        check(run(*(["-s", text] if text else []), "zanprobe").returncode == 0, text)
        if number == 0:  # ignored by default: it goes on
            check(process.poll() is None, text)
            process.kill()
        else:
            check(ended_by(process) == number, text)


def test_a_program_replaced_while_it_runs_is_still_found():
    process = start("zanprobe-long-name-of-a-program")
    os.unlink(os.path.join(root, "zanprobe-long-name-of-a-program"))
    check(run("-f", "zanprobe-long-name-of-a-program").returncode == 0, "found")
    check(ended_by(process) == signal.SIGTERM, "ended")


def test_a_process_that_only_bears_the_name_is_left_alone():
    same_start = start("zanprobe-long-name-of-another")
    named = subprocess.Popen(["/bin/sh", "-c", "printf zanscript >/proc/$$/comm; read line"],
                             stdin=subprocess.PIPE)
    started.append(named)
    while open(f"/proc/{named.pid}/comm", encoding="ascii").read() != "zanscript\n":
        time.sleep(0.01)
    for name in ("zanscript", "zanprobe-long-name-of-a-program"):
        check(run("-f", name).returncode == 1, name)
    check(same_start.poll() is None and named.poll() is None, "both go on")
    named.kill()


def test_processes_of_other_users_are_left_alone():
    if os.getuid() != 0:
        return
    os.chmod(root, 0o755)
    other = start("zanprobe3", as_nobody=True)
    check(run("-f", "zanprobe3").returncode == 1, "not ours, although root could")
    check(other.poll() is None, "goes on")


def test_wrong_usage():
    for arguments in ([], ["-s"], ["-s", "SIGNOSUCH", "x"], ["-s", "-3", "x"], ["-z", "x"], ["a", "b"], [""]):
        check(run(*arguments).returncode == 2, arguments)
    check("Usage" in run("--help").stdout, "help")


try:
    for test in [value for name, value in list(globals().items()) if name.startswith("test_")]:
        test()
finally:
    for process in started:
        if process.poll() is None:
            process.kill()
            process.wait()
    shutil.rmtree(root)
