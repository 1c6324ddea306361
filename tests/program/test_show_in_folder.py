#!/usr/bin/env python3
""""Show in folder" of other programs: the desktop's file-manager interface on the session bus."""
import os
import time

from harness import becomes, descendants, read, run, wait_for, write


def call(desk, method, *uris):
    desk.said("gdbus", "call", "--session", "--dest=org.freedesktop.FileManager1",
              "--object-path=/org/freedesktop/FileManager1", "--method=org.freedesktop.FileManager1." + method,
              "@as " + repr(list(uris)), "")


def start_with_bus(desk, path):
    """A zan that offers the interface on a bus of the test's own."""
    desk.start_bus()
    app = desk.start(path)
    desk.said("gdbus", "wait", "--session", "org.freedesktop.FileManager1")
    return app


def opens_folders_and_items_in_windows(desk):
    here, there = (os.path.dirname(desk.make(name)) for name in ("here/one.txt", "there/it's 100% #1?.txt"))
    app = start_with_bus(desk, here)
    both = sorted(["ZAN: " + here, "ZAN: " + there])
    call(desk, "ShowFolders", "file://" + there, "https://example.org/no", "file://elsewhere/etc")
    becomes(desk.titles, both, "a window on the folder")

    # The directory is shown here already: no third window, and the item's properties open over it.
    call(desk, "ShowItemProperties", "file://" + here + "/one.txt")
    dialog = app.other_window("")
    becomes(lambda: len(desk.windows()), 3, "the number of windows with the properties")
    app.keys("Escape", window=dialog)
    becomes(desk.titles, both, "what is left after the properties")

    # Another directory: a window of its own, in which the item is found under its very name.
    app.close(desk.windows()[-1][0])
    becomes(desk.titles, ["ZAN: " + here], "what is left after the second window")
    call(desk, "ShowItemProperties", "file://" + there + "/it's%20100%25%20%231%3F.txt")
    becomes(lambda: len(desk.windows()), 3, "the number of windows with the item's own and its properties")


def answers_odd_calls_with_the_nearest_directory(desk):
    here = desk.make("here/")
    os.mkdir(os.path.join(desk.work.encode(), b"odd \xff,\n"))
    app = start_with_bus(desk, here)
    for method, uris, shown in (
            ("ShowFolders", [], None), ("ShowItems", ["", "file:", "nothing", "file://elsewhere/etc/passwd"], None),
            ("ShowFolders", ["file:///"], "/"), ("ShowFolders", ["file://" + desk.work + "/gone/too"], desk.work),
            ("ShowItemProperties", ["file://" + desk.work + "/gone/here"], desk.work),
            ("ShowFolders", ["file://" + desk.work + "/odd%20%ff%2C%0A"], "/odd"),
            ("ShowItems", [f"file://{here}/{number}{'x' * 50}" for number in range(1000)], None)):
        call(desk, method, *uris)
        if shown:
            wait_for(lambda want=shown: any(want in title for _, _, title in desk.windows()[1:]), f"{method} {uris}")
            app.close(desk.windows()[-1][0])
        becomes(lambda: len(desk.windows()), 1, f"the number of windows after {method} {uris[:2]}")
        time.sleep(0.2)


def is_started_by_the_bus(desk):
    """The installed service file starts the launcher, and the call's directory is shown in that one window."""
    packaging = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../packaging")
    service = "/org.freedesktop.FileManager1.service"
    write(desk.root + "/dbus-1/services" + service, read(packaging + service))
    desk.env.update(XDG_DATA_HOME=desk.root, PATH=":".join((packaging, desk.bin, desk.env["PATH"])))
    desk.start_bus()
    shown = []
    for folder in (desk.make("there/"), desk.work):
        call(desk, "ShowFolders", "file://" + folder)
        shown = sorted([*shown, "ZAN: " + folder])
        becomes(desk.titles, shown, "what is shown")


def starts_nothing_without_a_bus(desk):
    app = desk.start(desk.work)
    app.keys("ctrl+a")
    names = [read(f"/proc/{pid}/comm") for pid in descendants(os.getpid())]
    assert not [name for name in names if "dbus" in name], names
    app.end()


run([opens_folders_and_items_in_windows, answers_odd_calls_with_the_nearest_directory,
     is_started_by_the_bus, starts_nothing_without_a_bus])
