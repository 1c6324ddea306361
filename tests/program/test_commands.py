#!/usr/bin/env python3
"""A fresh install opens, views and edits files, terminals and windows: the real zan with the real companions and
xterm, and stand-ins for what they hand over to."""
import os
import shutil
import sys

from harness import becomes, descendants, listing, needs, read, run, stat_of, wait_for, write


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


def open_entry(app, name):
    """Moves the list's cursor to the entry of that name by typing it, and opens it."""
    app.type(name)
    app.keys("Return")


def running():
    """Names of what runs on this desktop, zombies that somebody else should have waited for included."""
    found = []
    for pid in descendants(os.getpid()):
        try:
            name, state = read(f"/proc/{pid}/comm").strip(), stat_of(pid)[:2]
        except OSError:
            continue
        if name not in ("Xvfb", "openbox") and state != ["Z", str(os.getpid())]:
            found.append(name)
    return sorted(found)


def files_open_in_what_the_machine_has(desk):
    calls = stand_ins(desk, vi="test -t 0 || exit 9", xdg_open="", browser="", ran="")
    folder = desk.make("two  words/")
    for name in ("note it's.txt", "Photo.Jpg", "page 1.html", "$(touch canary).txt"):
        desk.make("two  words/" + name)
    for name, text in (("-run it", "#!/bin/sh\nran \"$0\"\n"), ("zzz", "#!/nonexistent\n")):
        os.chmod(desk.make("two  words/" + name, text), 0o755)
    app = desk.start(folder)
    app.shows(folder)
    rows = [("note", ["vi", folder, "-n", "note it's.txt"]),
            ("Photo", ["xdg-open", folder, folder + "/Photo.Jpg"]),
            ("page", ["browser", folder, "file://" + folder.replace(" ", "%20") + "/page%201.html"]),
            ("$(to", ["vi", folder, "-n", "./$(touch canary).txt"]),
            ("-run", ["ran", folder, "./-run it"])]
    for number, (name, call) in enumerate(rows):
        open_entry(app, name)
        becomes(lambda done=number: calls()[done:], [call], f"what opens {name}")
        # A terminal's window may come up, and take the keys, after its command has run.
        becomes(running, ["zan"], "what runs")
        app.keys("Escape")
    assert not os.path.exists(os.path.join(folder, "canary"))
    open_entry(app, "zzz")  # cannot be run
    app.end()
    assert len(calls()) == len(rows), calls()


def terminals_stand_in_the_directory_shown(desk):
    calls = stand_ins(desk, shell="read -r line", make="exit 2")
    desk.env["SHELL"] = shutil.which("shell", path=desk.env["PATH"])
    folder = desk.make("deep/er/")
    desk.make("deep/er/Makefile")
    app = desk.start(folder)
    app.keys("ctrl+t")
    wait_for(calls, "a shell in a terminal")
    assert calls()[0][:2] == ["shell", folder], calls()
    assert "xterm" in running(), running()
    becomes(lambda: len(desk.windows()), 2, "the number of windows with the one that takes the keys")
    open_entry(app, "Make")
    becomes(lambda: calls()[1:], [["make", folder, "-f", "Makefile"]], "the call of make")
    wait_for(lambda: "make" not in running(), "the end of make")
    becomes(lambda: len(desk.windows()), 3, "the number of windows with one that stays")
    assert running().count("xterm") == 2, running()


def further_windows_are_this_program(desk):
    folder = desk.make("one/")
    desk.make("one/sub dir/")
    app = desk.start(folder)
    app.shows(folder)
    app.keys("ctrl+n")
    becomes(desk.titles, ["ZAN: " + folder] * 2, "the second window of the directory")
    app.keys("ctrl+a", "ctrl+Return")
    becomes(desk.titles, ["ZAN: " + folder] * 2 + [f"ZAN: {folder}/sub dir"], "the directory's own window")


def a_bad_association_file_says_so_and_ends(desk):
    write(os.path.join(desk.settings, "associate.003"), "# comment\n*.a\topen\nno tab here\n")
    app = desk.start(desk.work)
    assert app.title() == "Error", app.title()
    app.keys("Return")
    app.ends(1)


needs("xterm")
sys.exit(run([files_open_in_what_the_machine_has, terminals_stand_in_the_directory_shown,
              further_windows_are_this_program, a_bad_association_file_says_so_and_ends]))
