#!/usr/bin/env python3
""""Show in folder" of other programs: the desktop's file-manager interface on the session bus."""
import os
import shutil
import sys
import time

from harness import descendants, read, run, wait_for


def call(desk, method, *uris):
    desk.said("gdbus", "call", "--session", "--dest=org.freedesktop.FileManager1",
              "--object-path=/org/freedesktop/FileManager1", "--method=org.freedesktop.FileManager1." + method,
              "@as " + repr(list(uris)), "")


def offered(desk):
    """Waits until somebody answers to the interface's name."""
    wait_for(lambda: "true" in desk.said("gdbus", "call", "--session", "--dest=org.freedesktop.DBus", "--object-path=/",
                                         "--method=org.freedesktop.DBus.NameHasOwner", "org.freedesktop.FileManager1"),
             "the name on the bus")


def titles(desk):
    return [title for _, _, title in desk.windows()]


def close_last(desk):
    desk.said("wmctrl", "-i", "-c", desk.windows()[-1][0])


def opens_folders_and_items_in_windows(desk):
    desk.start_bus()
    here, there = (os.path.dirname(desk.make(name)) for name in ("here/one.txt", "there/it's 100% #1?.txt"))
    app = desk.start(here)
    offered(desk)

    call(desk, "ShowFolders", "file://" + there, "https://example.org/no", "file://elsewhere/etc")
    wait_for(lambda: "ZAN: " + there in titles(desk), "a window on the folder")
    wait_for(lambda: len(titles(desk)) == 2, "two windows")

    # The directory is shown here already: no third window, and the item's properties open over it.
    call(desk, "ShowItemProperties", "file://" + here + "/one.txt")
    wait_for(lambda: len(app.windows()) == 2, "the properties in the window that shows the directory")
    wait_for(lambda: len(titles(desk)) == 3, "two windows and the properties")
    app.keys("Escape", window=[w for w in app.windows() if w != app.window()][0])

    # Another directory: a window of its own, in which the item is found under its very name.
    wait_for(lambda: len(titles(desk)) == 2, "the end of the properties")
    close_last(desk)
    wait_for(lambda: "ZAN: " + there not in titles(desk), "the end of the second window")
    call(desk, "ShowItemProperties", "file://" + there + "/it's%20100%25%20%231%3F.txt")
    wait_for(lambda: len(titles(desk)) == 3, "a window and its properties")


def answers_odd_calls_with_the_nearest_directory(desk):
    desk.start_bus()
    here = desk.make("here/")
    odd = os.path.join(desk.work.encode(), b"odd \xff,\n").decode(errors="surrogateescape")
    os.mkdir(odd)
    desk.start(here)
    offered(desk)
    for method, uris, shown in (
            ("ShowFolders", [], None), ("ShowItems", ["", "file:", "nothing", "file://elsewhere/etc/passwd"], None),
            ("ShowFolders", ["file:///"], "/"), ("ShowFolders", ["file://" + desk.work + "/gone/too"], desk.work),
            ("ShowItemProperties", ["file://" + desk.work + "/gone/here"], desk.work),
            ("ShowFolders", ["file://" + desk.work + "/odd%20%ff%2C%0A"], "/odd"),
            ("ShowItems", [f"file://{here}/{number}{'x' * 50}" for number in range(1000)], None)):
        call(desk, method, *uris)
        if shown:
            wait_for(lambda want=shown: any(want in title for title in titles(desk)[1:]), f"{method} {uris}")
            close_last(desk)
        wait_for(lambda: len(titles(desk)) == 1, f"no more windows after {method} {uris[:2]}")
        time.sleep(0.2)


def is_started_by_the_bus(desk):
    """The installed service file starts the launcher, and the call's directory is shown in that one window."""
    services = os.path.join(desk.root, "data/dbus-1/services")
    packaging = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../packaging")
    os.makedirs(services)
    shutil.copy(os.path.join(packaging, "org.freedesktop.FileManager1.service"), services)
    desk.env.update(XDG_DATA_HOME=os.path.join(desk.root, "data"), PATH=":".join((packaging, desk.bin, desk.env["PATH"])))
    desk.start_bus()
    for folder in (desk.make("there/"), desk.work):
        call(desk, "ShowFolders", "file://" + folder)
        wait_for(lambda want="ZAN: " + folder: want in titles(desk), "a window on " + folder)
    assert len(titles(desk)) == 2, titles(desk)


def starts_nothing_without_a_bus(desk):
    app = desk.start(desk.work)
    app.keys("ctrl+a")
    names = [read(f"/proc/{pid}/comm") for pid in descendants(os.getpid())]
    assert not [name for name in names if "dbus" in name], names
    app.end()


sys.exit(run([opens_folders_and_items_in_windows, answers_odd_calls_with_the_nearest_directory,
              is_started_by_the_bus, starts_nothing_without_a_bus]))
