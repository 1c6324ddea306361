#!/usr/bin/env python3
"""What a fresh install opens by the real companions and xterm, stand-ins for what these hand over to; and procsig."""
import contextlib
import os
import shutil
import signal
import subprocess

from harness import becomes, descendants, listing, read, run, stat_of, wait_for, write


def stand_ins(desk, **programs):
    """Programs that record their name, directory and arguments, then go on with that line of shell; a function that
    tells the calls so far."""
    folder, log = os.path.join(desk.root, "stand-ins"), os.path.join(desk.root, "log")
    os.makedirs(log)
    for name, then in programs.items():
        script = write(os.path.join(folder, name.replace("_", "-")), f"""#!/bin/sh
at=$(date +%s%N).$$
{{ printf '%s\\0' "${{0##*/}}" "$PWD" "$@"; }} > '{log}'/.$at && mv '{log}'/.$at '{log}'/$at
{then}
""")
        os.chmod(script, 0o755)
    desk.env["PATH"] = folder + ":" + desk.env["PATH"]
    for name in ("TERMINAL", "EDITOR", "PAGER"):
        desk.env.pop(name, None)
    desk.env.update(VISUAL="vi -n", BROWSER="browser")
    return lambda: [read(os.path.join(log, name)).split("\0")[:-1] for name in listing(log) if name[0] != "."]


def running():
    """Names of what runs on this desktop, zombies that somebody else should have waited for included."""
    found = []
    for pid in descendants(os.getpid()):
        with contextlib.suppress(OSError):  # it may have ended meanwhile
            if stat_of(pid)[:2] != ["Z", str(os.getpid())]:
                found.append(read(f"/proc/{pid}/comm").strip())
    return sorted(name for name in found if name not in ("Xvfb", "openbox"))


def files_open_in_what_the_machine_has(desk):
    calls = stand_ins(desk, vi="test -t 0 || exit 9", xdg_open="", browser="", ran="")
    folder = desk.make("two  words/")
    for name in ("note it's.txt", "Photo.Jpg", "page 1.html", "$(touch canary).txt", "sub dir/"):
        desk.make("two  words/" + name)
    for name, text in (("-run it", "#!/bin/sh\nran \"$0\"\n"), ("zzz", "#!/nonexistent\n")):
        os.chmod(desk.make("two  words/" + name, text), 0o755)
    app = desk.open(folder)
    rows = [("note", ["vi", folder, "-n", "note it's.txt"]),
            ("Photo", ["xdg-open", folder, folder + "/Photo.Jpg"]),
            ("page", ["browser", folder, "file://" + folder.replace(" ", "%20") + "/page%201.html"]),
            ("$(to", ["vi", folder, "-n", "./$(touch canary).txt"]),
            ("-run", ["ran", folder, "./-run it"])]
    for number, (name, call) in enumerate(rows):
        app.type(name)  # moves the list's cursor there
        app.keys("Return")
        becomes(lambda done=number: calls()[done:], [call], f"what opens {name}")
        # A terminal's window may come up, and take the keys, after its command has run.
        becomes(running, ["zan"], "what runs")
        app.keys("Escape")
    assert not os.path.exists(os.path.join(folder, "canary"))
    app.keys("ctrl+n")
    becomes(desk.titles, ["ZAN: " + folder] * 2, "the second window of the directory")
    app.type("sub")
    app.keys("ctrl+Return")
    becomes(desk.titles, ["ZAN: " + folder] * 2 + [f"ZAN: {folder}/sub dir"], "the directory's own window")
    app.type("zzz")  # cannot be run
    app.keys("Return")
    app.end()
    assert len(calls()) == len(rows), calls()


def terminals_stand_in_the_directory_shown(desk):
    calls = stand_ins(desk, shell="read -r line", make="exit 2")
    desk.env["SHELL"] = shutil.which("shell", path=desk.env["PATH"])
    folder = desk.make("deep/er/")
    desk.make("deep/er/Makefile")
    app = desk.start(folder)
    app.keys("ctrl+t")
    becomes(lambda: [call[:2] for call in calls()], [["shell", folder]], "the shell in a terminal")
    becomes(lambda: len(desk.windows()), 2, "the number of windows with the one that takes the keys")
    app.type("Make")
    app.keys("Return")
    becomes(lambda: calls()[1:], [["make", folder, "-f", "Makefile"]], "the call of make")
    wait_for(lambda: "make" not in running(), "the end of make")
    becomes(lambda: len(desk.windows()), 3, "the number of windows with one that stays")
    assert running().count("xterm") == 2, running()


def a_bad_association_file_says_so_and_ends(desk):
    write(os.path.join(desk.settings, "associate.003"), "# comment\n*.a\topen\nno tab here\n")
    app = desk.start(desk.work)
    assert app.title() == "Error", app.title()
    app.keys("Return")
    app.ends(1)


def sleeper(desk, name, **user):
    """A sleeping process whose program is a copy of sleep by that name."""
    path = os.path.join(desk.work, name)
    if not os.path.exists(path):
        shutil.copy("/bin/sleep", path)
    process = subprocess.Popen([path, "1000"], **user)
    becomes(lambda: os.readlink(f"/proc/{process.pid}/exe"), path, "the program")
    return process


def procsig(desk, *arguments):
    return subprocess.run([os.path.join(desk.bin, "companions/procsig"), *arguments], stdin=subprocess.DEVNULL,
                          capture_output=True, check=False).returncode


def all_of_the_name_and_no_other_get_the_signal(desk):
    one, two, near, longer = (sleeper(desk, name) for name in ("zanprobe", "zanprobe", "zanprob", "zanprobe2"))
    assert procsig(desk, "-s", "SIGUSR1", "zanprobe") == 1, "several, without -f and a terminal"
    assert procsig(desk, "-f", "-s", "SIGUSR1", "zanprobe") == 0
    assert one.wait(60) == two.wait(60) == -signal.SIGUSR1, (one.returncode, two.returncode)
    assert near.poll() is None and longer.poll() is None, "names that only resemble it are left alone"
    assert procsig(desk, "-f", "zanprobe") == 1, "nobody left"
    for wrong in ([], ["-s"], ["-s", "SIGNOSUCH", "x"], ["-s", "-3", "x"], ["-z", "x"], ["a", "b"], [""]):
        assert procsig(desk, *wrong) == 2, wrong
    for options, number in ((["-s", "SIGHUP"], 1), (["-s", "USR1"], 10), (["-s", "15"], 15), ([], 15)):
        process = sleeper(desk, "zanprobe")
        assert procsig(desk, *options, "zanprobe") == 0, options
        assert process.wait(60) == -number, (options, process.returncode)
    if os.getuid() == 0:
        os.chmod(desk.root, 0o755)
        other = sleeper(desk, "zanprobe3", user=65534, group=65534)
        assert procsig(desk, "-f", "zanprobe3") == 1 and other.poll() is None, "another user's, although root could"


def the_program_counts_and_not_the_name_it_bears(desk):
    process, same_start = (sleeper(desk, "zanprobe-long-name-of-" + name) for name in ("a-program", "b"))
    named = subprocess.Popen(["/bin/sh", "-c", "printf zanscript >/proc/$$/comm; read line"], stdin=subprocess.PIPE)
    becomes(lambda: read(f"/proc/{named.pid}/comm"), "zanscript\n", "the name that a process bears")
    assert procsig(desk, "-f", "zanscript") == 1
    os.unlink(os.path.join(desk.work, "zanprobe-long-name-of-a-program"))  # replaced while it runs
    assert procsig(desk, "-f", "zanprobe-long-name-of-a-program") == 0
    assert process.wait(60) == -signal.SIGTERM, process.returncode
    assert same_start.poll() is None and named.poll() is None, "both go on"


with_xterm = [files_open_in_what_the_machine_has, terminals_stand_in_the_directory_shown]
run((with_xterm if shutil.which("xterm") else []) + [
    all_of_the_name_and_no_other_get_the_signal, the_program_counts_and_not_the_name_it_bears,
    a_bad_association_file_says_so_and_ends])
