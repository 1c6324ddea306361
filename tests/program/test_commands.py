#!/usr/bin/env python3
"""A fresh install opens, views and edits files, terminals and windows: the real zan with the real companions and
xterm, and stand-ins for what they hand over to."""
import os
import shutil
import sys
import time

from harness import SKIP, run

if not shutil.which("xterm"):
    print("skipped: no xterm")
    sys.exit(SKIP)


def stand_ins(desk, **programs):
    """Programs that record their working directory and arguments, then go on with that line of shell."""
    folder = os.path.join(desk.root, "stand-ins")
    log = os.path.join(desk.root, "log")
    os.makedirs(folder, exist_ok=True)
    os.makedirs(log, exist_ok=True)
    for name, then in programs.items():
        path = os.path.join(folder, name.replace("_", "-"))
        with open(path, "w", encoding="utf-8") as script:
            script.write(f"""#!/bin/sh
at=$(date +%s%N).$$
{{ printf '%s\\0' "${{0##*/}}" "$PWD" "$@"; }} > '{log}'/.$at && mv '{log}'/.$at '{log}'/$at
{then}
""")
        os.chmod(path, 0o755)
    desk.env["PATH"] = folder + ":" + desk.env["PATH"]
    for name in ("TERMINAL", "VISUAL", "EDITOR", "BROWSER", "PAGER"):
        desk.env.pop(name, None)

    def calls():
        found = []
        for name in sorted(os.listdir(log)):
            if not name.startswith("."):
                with open(os.path.join(log, name), "rb") as file:
                    found.append(file.read().decode().split("\0")[:-1])
        return found
    return calls


def open_entry(app, name):
    """Moves the list's cursor to the entry of that name by typing it, and opens it."""
    app.desk.wait_for(lambda: app.title().startswith("ZAN: "), "the directory shown")
    app.type(name)
    time.sleep(0.3)
    app.keys("Return")


def processes(desk):
    """Names of what still runs with this desktop's HOME, zombies marked."""
    found = []
    for pid in filter(str.isdigit, os.listdir("/proc")):
        try:
            with open(f"/proc/{pid}/environ", "rb") as file:
                ours = f"HOME={desk.home}".encode() in file.read().split(b"\0")
            with open(f"/proc/{pid}/stat", encoding="utf-8", errors="replace") as file:
                name, _, rest = file.read().partition("(")[2].rpartition(")")
        except OSError:
            continue
        if name == "openbox":
            continue
        if ours or rest.split()[0] == "Z" and int(rest.split()[1]) == desk.apps[0].pid:
            found.append(name)
    return found


def test_files_open_in_what_the_machine_has(desk):
    calls = stand_ins(desk, vi="test -t 0 || exit 9", xdg_open="", browser="")
    desk.env["VISUAL"] = "vi -n"
    desk.env["BROWSER"] = "browser"
    folder = desk.make("two  words/").rstrip("/")
    for name in ("note it's.txt", "Photo.Jpg", "page 1.html", "$(touch canary).txt"):
        desk.make("two  words/" + name)
    app = desk.start(folder)
    expected = [("note", ["vi", folder, "-n", "note it's.txt"]),
                ("Photo", ["xdg-open", folder, os.path.join(folder, "Photo.Jpg")]),
                ("page", ["browser", folder,
                          "file://" + folder.replace(" ", "%20") + "/page%201.html"]),
                ("$(to", ["vi", folder, "-n", "./$(touch canary).txt"])]
    for number, (name, call) in enumerate(expected):
        open_entry(app, name)
        desk.wait_for(lambda: len(calls()) > number, f"the opening of {name}: {calls()}")
        assert calls()[number] == call, calls()
        # A terminal's window may come up, and take the keys, after its command has run.
        desk.wait_for(lambda: processes(desk) == ["zan"], f"an end of {processes(desk)}")
        app.keys("Escape")
    assert not os.path.exists(os.path.join(folder, "canary"))


def test_terminal_stands_in_the_directory_shown(desk):
    calls = stand_ins(desk, shell="read -r line")
    desk.env["SHELL"] = os.path.join(desk.root, "stand-ins", "shell")
    folder = desk.make("deep/er/").rstrip("/")
    app = desk.start(folder)
    app.keys("ctrl+t")
    desk.wait_for(lambda: len(calls()) == 1, "a shell in a terminal")
    assert calls()[0][:2] == ["shell", folder], calls()
    assert "xterm" in processes(desk)


def test_make_keeps_its_window(desk):
    calls = stand_ins(desk, make="echo made; exit 2")
    folder = desk.make("build/").rstrip("/")
    desk.make("build/Makefile")
    app = desk.start(folder)
    open_entry(app, "Make")
    desk.wait_for(lambda: len(calls()) == 1, "make")
    assert calls()[0] == ["make", folder, "-f", "Makefile"], calls()
    time.sleep(1)
    assert "xterm" in processes(desk), processes(desk)


def test_an_executable_runs_and_a_bad_program_does_nothing(desk):
    calls = stand_ins(desk, ran="")
    folder = desk.make("bin/").rstrip("/")
    for name, text in (("-run it", "#!/bin/sh\nran \"$0\"\n"), ("zzz", "#!/nonexistent\n")):
        desk.make("bin/" + name, text)
        os.chmod(os.path.join(folder, name), 0o755)
    app = desk.start(folder)
    open_entry(app, "zzz")
    app.keys("Escape")
    open_entry(app, "-run")
    desk.wait_for(lambda: len(calls()) == 1, "the executable")
    assert calls()[0] == ["ran", folder, "./-run it"], calls()


def test_further_windows_are_this_program(desk):
    stand_ins(desk)
    folder = desk.make("one/").rstrip("/")
    desk.make("one/sub dir/")
    app = desk.start(folder)

    def titles():
        return sorted(desk.title_of(window) for window in desk.xdotool(
            "search", "--onlyvisible", "--class", "zan", check=False).split() if desk.is_managed(window))
    desk.wait_for(lambda: len(titles()) == 1, "the window")
    first = titles()[0]
    app.keys("ctrl+n")
    desk.wait_for(lambda: titles() == [first, first], f"a second window of the directory: {titles()}")
    app.type("sub")
    time.sleep(0.3)
    app.keys("Escape")
    app.keys("ctrl+a")
    app.keys("ctrl+Return")
    desk.wait_for(lambda: any(title.rstrip("/").endswith("sub dir") for title in titles()), "a window of sub dir")
    assert app.title() == first


def test_a_bad_association_file_says_so_and_ends(desk):
    os.makedirs(desk.settings)
    with open(os.path.join(desk.settings, "associate.003"), "w", encoding="utf-8") as file:
        file.write("# comment\n*.a\topen\nno tab here\n")
    app = desk.start(desk.work)
    assert app.title() == "Error", app.title()
    app.keys("Return")
    assert app.wait() == 1


if __name__ == "__main__":
    sys.exit(run([test_files_open_in_what_the_machine_has, test_terminal_stands_in_the_directory_shown,
                  test_make_keeps_its_window, test_an_executable_runs_and_a_bad_program_does_nothing,
                  test_further_windows_are_this_program, test_a_bad_association_file_says_so_and_ends]))
