#!/usr/bin/env python3
"""A file system that hangs: the window lives on, goes elsewhere, and ends; without help, no call ever comes back."""
import contextlib
import os
import subprocess
import sys

from harness import becomes, listing, read, run, skip, stat_of, wait_for, write


@contextlib.contextmanager
def hung(desk, mode, number=0):
    """A file system whose calls hang: its path, and a function that waits for one that does."""
    name = f"hung-{mode}-{number}"
    # Not in what the window shows, where a look at it would hang before anything is done.
    path, log = desk.make(f"mounts/{name}/"), write(os.path.join(desk.root, name + ".log"), "")
    server = subprocess.Popen([os.path.join(desk.bin, "zan_slow_fs"), mode, "100000000", log, path])
    try:
        wait_for(lambda: f" {path} " in read("/proc/mounts"), "the mount")
        yield path, lambda: wait_for(lambda: os.path.getsize(log), f"a call that hangs: {name}")
    finally:
        server.kill()  # sets free whatever waits for an answer
        server.wait()
        subprocess.run(["umount", "-l", path], check=True)


def ended(app):
    """Waits until the process has ended but for threads the kernel holds."""
    becomes(lambda: stat_of(app.pid)[0], "Z", "the state of the process")


def end_seen_by_the_user(app):
    """The window goes, and the process ends with its settings kept."""
    app.close()
    becomes(app.windows, [], "what is shown")
    ended(app)
    os.unlink(app.desk.record)


def go_elsewhere(app, path, hangs):
    """Each way of going elsewhere gives it up."""
    app.go(path)
    hangs()
    if "hung-root" in path or "hung-open" in path:  # still being looked at: the window is where it was
        app.keys("Escape")
        app.go(app.desk.work + "/nowhere")  # a message is there: nothing waits below it
        app.keys("Return", window=app.other_window("Error"))
    else:
        app.shows(app.desk.work)
        app.keys("BackSpace")
        app.shows(os.path.dirname(path))
    app.go(path)
    app.keys("F6")
    app.shows(app.desk.home)


def in_dialog(key, title, typed=""):
    """What opens that dialog by its key, types there, and returns it."""
    def act(app, *_):
        app.click(260, 143)  # the first entry
        app.keys(key)
        dialog = app.other_window(title)
        if typed:
            app.type(typed, window=dialog)
            app.keys("Return", window=dialog)
        return dialog
    return act


def complete(app, path, _):
    app.keys("alt+p", "ctrl+a")
    app.type(path + "/e")
    app.keys("Escape", "Escape")


def copy_to_first_of_the_hotlist(app, *_):
    app.keys("ctrl+a", "alt+e")
    app.desk.xdotool("key", "--delay", "200", "Up", "Up", "Right", "Down", "Right")


def delete_in_another_window(app, path, hangs):
    """Other windows and their operations go on."""
    app.go(path)
    hangs()
    other = app.desk.open(os.path.dirname(app.desk.make("from/file")))
    other.keys("ctrl+a", "Delete")
    other.keys("Return", window=other.other_window(""))
    wait_for(lambda: not os.path.exists(app.desk.work + "/from/file"), "the file's end")
    other.close()
    ended(other)


def every_function_lets_the_window_end(desk):
    """In the middle of each, Escape and then closing the window: neither waits for what hangs. Each row: what hangs;
    whether the window shows that directory, or the hotlist has it; what is done there."""
    desk.make("file", "x")
    rows = [("root", False, go_elsewhere), ("open", False, go_elsewhere), ("names", False, go_elsewhere),
            ("lookup", False, go_elsewhere), ("status", False, go_elsewhere),
            ("root", True, None), ("names", True, None), ("status", True, None),
            ("names", False, complete), ("root", False, complete), ("names", False, delete_in_another_window),
            ("open", False, lambda app, *_: app.click(75, 100)),   # the first of the hotlist is chosen
            ("names", False, lambda app, *_: app.click(11, 100)),  # and expanded
            ("root", False, copy_to_first_of_the_hotlist),
            ("data", True, in_dialog("F9", "Properties")), ("change", True, in_dialog("F9", "Properties", "other")),
            ("change", True, in_dialog("F4", "Create New Folder", "fresh"))]
    for number, (mode, there, act) in enumerate(rows):
        with hung(desk, mode, number) as (path, hangs):
            write(os.path.join(desk.settings, "hotlist.001"), path + "\n")
            shown = path if there else desk.work
            app = desk.open(shown) if act else desk.start(shown)
            dialog = act(app, path, hangs) if act else None
            hangs()
            app.keys("Escape", window=dialog)
            wait_for(lambda: dialog not in app.windows(), f"the dialog's end: {path}")
            end_seen_by_the_user(app)
        app.ends()


def looks_cost_few_threads(desk):
    with hung(desk, "names") as (path, hangs):
        app = desk.open(desk.work)
        threads = [listing(f"/proc/{app.pid}/task")]
        for _ in range(4):
            app.go(path)
            hangs()
            app.keys("F6")
            app.shows(desk.home)
        app.go(path)  # refused at once from now on
        app.keys("Return", window=app.other_window("Error"))
        threads += [listing(f"/proc/{app.pid}/task")]
        assert len(threads[1]) <= len(threads[0]) + 6, threads
        end_seen_by_the_user(app)


def the_display_dies_while_a_worker_hangs(desk):
    desk.make("from/directory/")
    with hung(desk, "change") as (path, hangs):
        app = desk.start(desk.make("from/"))
        app.keys("ctrl+a", "ctrl+c")
        app.go(path)
        app.shows(path)
        app.keys("ctrl+v")
        hangs()
        desk.server.kill()
        ended(app)
    app.ends(1)


if os.geteuid() != 0 or not os.access("/dev/fuse", os.W_OK) or not os.path.exists(sys.argv[1] + "/zan_slow_fs"):
    skip("no FUSE file system can be mounted here")
run([every_function_lets_the_window_end, looks_cost_few_threads, the_display_dies_while_a_worker_hangs])
