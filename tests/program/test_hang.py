#!/usr/bin/env python3
"""A file system that hangs: the window lives on, goes elsewhere, and ends. What hangs here never comes back by
itself, so that nothing below can be owed to waiting it out."""
import os
import subprocess
import sys

from harness import SKIP, read, run, wait_for

NEVER = "100000000"  # ms
MODES = ("root", "open", "names", "lookup", "status")


class Mount:
    """The file system whose calls hang, below the desk's scratch directory."""

    def __init__(self, desk, mode, name="hung"):
        self.path = desk.make(name + "/")
        self.log = os.path.join(desk.root, name + ".log")
        self.server = subprocess.Popen([os.path.join(desk.bin, "zan_slow_fs"), mode, NEVER, self.log, self.path])
        wait_for(lambda: f" {self.path} " in read("/proc/mounts"), "the mount")

    def calls(self):
        return os.path.getsize(self.log) if os.path.exists(self.log) else 0

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.server.kill()  # sets free whatever waits for an answer
        self.server.wait()
        subprocess.run(["umount", "-l", self.path], check=True)


def go(app, path):
    """Types a path into the path field."""
    app.keys("alt+p", "ctrl+a")
    app.type(path)
    app.keys("Return")


def threads(app):
    return len(os.listdir(f"/proc/{app.pid}/task"))


def ended(app):
    """Waits until the process has ended but for threads the kernel holds."""
    wait_for(lambda: read(f"/proc/{app.pid}/stat").rpartition(")")[2].split()[0] == "Z", "the end of the process")


def end_seen_by_the_user(desk, app):
    """The window goes, the settings are kept, and the process has ended."""
    app.close()
    wait_for(lambda: not app.windows(), "the window's end")
    wait_for(lambda: os.path.exists(desk.record), "saved settings")
    ended(app)


def another_way_gives_it_up(desk):
    """Each kind of hang, left by each way of going elsewhere."""
    other = desk.make("other/")
    for mode in MODES:
        with Mount(desk, mode, "hung-" + mode) as mount:
            app = desk.start(other)
            app.shows(other)
            go(app, mount.path)
            wait_for(mount.calls, f"a call that hangs ({mode})")
            if mode in ("root", "open"):  # still being looked at: the window is where it was
                app.keys("Escape")
                go(app, desk.work + "/nowhere")  # a message is there: nothing waits below it
                app.keys("Return", window=app.other_window("Error"))
                go(app, mount.path)
            else:
                app.shows(other)
                app.keys("BackSpace")
                app.shows(desk.work)
                go(app, mount.path)
            app.keys("F6")
            app.shows(desk.home)
            end_seen_by_the_user(desk, app)
        assert app.wait() == 0, (mode, app.errors())
        os.unlink(desk.record)


def complete(app, mount):
    app.keys("alt+p", "ctrl+a")
    app.type(mount.path + "/e")
    app.keys("Escape", "Escape")


def choose_first_of_the_hotlist(app, _):
    app.click(75, 100)


def expand_first_of_the_hotlist(app, _):
    app.click(11, 100)


def copy_to_first_of_the_hotlist(app, _):
    app.keys("ctrl+a", "alt+e")
    app.desk.xdotool("key", "--delay", "200", "Up", "Up", "Right", "Down", "Right")


def properties(app, _):
    app.click(260, 143)
    app.keys("F9")
    return app.other_window("Properties")


def rename(app, mount):
    dialog = properties(app, mount)
    app.type("other name", window=dialog)
    app.keys("Return", window=dialog)
    return dialog


def new_folder(app, _):
    app.keys("F4")
    dialog = app.other_window("Create New Folder")
    app.type("fresh", window=dialog)
    app.keys("Return", window=dialog)
    return dialog


ON_THE_MOUNT, ELSEWHERE = True, False
TROUBLE = [  # what hangs, the directory of the window, what is done there
    ("root", ON_THE_MOUNT, None), ("open", ON_THE_MOUNT, None), ("names", ON_THE_MOUNT, None),
    ("status", ON_THE_MOUNT, None), ("lookup", ON_THE_MOUNT, None),
    ("names", ELSEWHERE, complete), ("root", ELSEWHERE, complete),
    ("open", ELSEWHERE, choose_first_of_the_hotlist), ("names", ELSEWHERE, expand_first_of_the_hotlist),
    ("root", ELSEWHERE, copy_to_first_of_the_hotlist),
    ("data", ON_THE_MOUNT, properties), ("change", ON_THE_MOUNT, rename), ("change", ON_THE_MOUNT, new_folder),
]


def every_function_lets_the_window_end(desk):
    """In the middle of each, Escape and then closing the window: neither waits for what hangs."""
    desk.make("file", "x")
    for mode, there, act in TROUBLE:
        os.makedirs(desk.settings, exist_ok=True)
        name = f"hung-{mode}-{act.__name__ if act else 'start'}"
        with open(os.path.join(desk.settings, "hotlist.001"), "w", encoding="utf-8") as hotlist:
            hotlist.write(os.path.join(desk.work, name) + "\n")
        with Mount(desk, mode, name) as mount:
            app = desk.start(mount.path if there else desk.work)
            if act:
                app.shows(mount.path if there else desk.work)
            dialog = act(app, mount) if act else None
            wait_for(mount.calls, "a call that hangs: " + name)
            app.keys("Escape", window=dialog)
            if dialog:
                wait_for(lambda: dialog not in app.windows(), "the dialog's end: " + name)
            end_seen_by_the_user(desk, app)
        app.wait()
        os.unlink(desk.record)


def looks_cost_few_threads(desk):
    with Mount(desk, "names") as mount:
        app = desk.start(desk.work)
        app.shows(desk.work)
        before = threads(app)
        for _ in range(4):
            go(app, mount.path)
            wait_for(mount.calls, "a call that hangs")
            app.keys("F6")
            app.shows(desk.home)
        go(app, mount.path)  # refused at once from now on
        app.keys("Return", window=app.other_window("Error"))
        assert threads(app) <= before + 6, (before, threads(app))
        end_seen_by_the_user(desk, app)
    app.wait()


def other_windows_and_operations_go_on(desk):
    source, place = desk.make("from/file", "content"), desk.make("to/")
    with Mount(desk, "names") as mount:
        app = desk.start(desk.work)
        go(app, mount.path)
        wait_for(mount.calls, "a call that hangs")
        other = desk.start(os.path.dirname(source))
        other.keys("ctrl+a", "ctrl+c")
        go(other, place)
        other.shows(place)
        other.keys("ctrl+v")
        wait_for(lambda: os.path.exists(os.path.join(place, "file")), "the pasted file")
        other.end()
        app.keys("Escape")
        end_seen_by_the_user(desk, app)
    app.wait()


def the_display_dies_while_a_worker_hangs(desk):
    desk.make("from/directory/")
    with Mount(desk, "change") as mount:
        app = desk.start(desk.make("from/"))
        app.keys("ctrl+a", "ctrl+c")
        go(app, mount.path)
        app.shows(mount.path)
        app.keys("ctrl+v")
        wait_for(mount.calls, "a call that hangs")
        desk.server.kill()
        ended(app)
    assert app.wait() == 1, app.errors()


if not os.access("/dev/fuse", os.R_OK | os.W_OK) or os.geteuid() != 0 or \
        not os.path.exists(os.path.join(sys.argv[1], "zan_slow_fs")):
    print("skipped: no FUSE file system can be mounted here")
    sys.exit(SKIP)
sys.exit(run([another_way_gives_it_up, every_function_lets_the_window_end, looks_cost_few_threads,
              other_windows_and_operations_go_on, the_display_dies_while_a_worker_hangs]))
