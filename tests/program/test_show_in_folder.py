#!/usr/bin/env python3
""""Show in folder" of other programs: the desktop's file-manager interface on the session bus."""
import os
import shutil
import subprocess
import sys
import time

from harness import run, wait_for


def start_bus(desk):
    daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], env=desk.env,
                              stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    desk.env["DBUS_SESSION_BUS_ADDRESS"] = daemon.stdout.readline().strip()


def call(desk, method, *uris):
    subprocess.run(["gdbus", "call", "--session", "--dest=org.freedesktop.FileManager1",
                    "--object-path=/org/freedesktop/FileManager1", "--method=org.freedesktop.FileManager1." + method,
                    "@as " + repr(list(uris)), ""], env=desk.env, check=True, stdout=subprocess.DEVNULL)


def offered(desk):
    reply = subprocess.run(["dbus-send", "--session", "--print-reply", "--dest=org.freedesktop.DBus",
                            "/org/freedesktop/DBus", "org.freedesktop.DBus.NameHasOwner",
                            "string:org.freedesktop.FileManager1"], env=desk.env, stdout=subprocess.PIPE, text=True,
                           check=True).stdout
    return "boolean true" in reply


def listed(desk):
    """(window, title) of each window; nothing while one vanishes under the listing."""
    lines = subprocess.run(["wmctrl", "-l"], env=desk.env, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True,
                           check=False).stdout.splitlines()
    return [(line.split()[0], line.split(None, 3)[3]) for line in lines if len(line.split(None, 3)) == 4]


def titles(desk):
    return [title for _, title in listed(desk)]


def opens_folders_and_items_in_windows(desk):
    start_bus(desk)
    desk.make("here/one.txt")
    desk.make("there/it's 100% #1?.txt")
    here, there = os.path.join(desk.work, "here"), os.path.join(desk.work, "there")
    app = desk.start(here)
    wait_for(lambda: offered(desk), "the name on the bus")

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
    second = next(window for window, title in listed(desk) if there in title)
    subprocess.run(["wmctrl", "-i", "-c", second], env=desk.env, check=True)
    wait_for(lambda: "ZAN: " + there not in titles(desk), "the end of the second window")
    call(desk, "ShowItemProperties", "file://" + there + "/it's%20100%25%20%231%3F.txt")
    wait_for(lambda: len(titles(desk)) == 3, "a window and its properties")


def answers_odd_calls_with_the_nearest_directory(desk):
    start_bus(desk)
    here = os.path.join(desk.work, "here")
    for name in ("here/%d" % number for number in range(1000)):
        desk.make(name + "x" * 50)
    odd = os.path.join(desk.work.encode(), b"odd \xff,\n").decode(errors="surrogateescape")
    os.mkdir(odd)
    desk.start(here)
    wait_for(lambda: offered(desk), "the name on the bus")
    for method, uris, shown in (
            ("ShowFolders", [], None), ("ShowItems", ["", "file:", "nothing", "file://elsewhere/etc/passwd"], None),
            ("ShowFolders", ["file:///"], "/"), ("ShowFolders", ["file://" + desk.work + "/gone/too"], desk.work),
            ("ShowItemProperties", ["file://" + desk.work + "/gone/here"], desk.work),
            ("ShowFolders", ["file://" + desk.work + "/odd%20%ff%2C%0A"], "/odd"),
            ("ShowItems", [f"file://{here}/{number}{'x' * 50}" for number in range(1000)], None)):
        call(desk, method, *uris)
        if shown:
            wait_for(lambda want=shown: any(want in title for title in titles(desk)[1:]), f"{method} {uris}")
            subprocess.run(["wmctrl", "-i", "-c", listed(desk)[-1][0]], env=desk.env, check=True)
        wait_for(lambda: len(titles(desk)) == 1, f"no more windows after {method} {uris[:2]}")
        time.sleep(0.2)


def is_started_by_the_bus(desk):
    """The installed service file starts the launcher, and the call's directory is shown in that one window."""
    services = os.path.join(desk.root, "data/dbus-1/services")
    packaging = os.path.join(os.path.dirname(os.path.abspath(__file__)), "../../packaging")
    os.makedirs(services)
    shutil.copy(os.path.join(packaging, "org.freedesktop.FileManager1.service"), services)
    desk.env.update(XDG_DATA_HOME=os.path.join(desk.root, "data"), PATH=":".join((packaging, desk.bin, desk.env["PATH"])))
    desk.make("there/one.txt")
    start_bus(desk)
    for folder in ("there", "."):
        call(desk, "ShowFolders", "file://" + os.path.join(desk.work, folder) if folder != "." else "file://" + desk.work)
        want = "ZAN: " + os.path.normpath(os.path.join(desk.work, folder))
        wait_for(lambda: want in titles(desk), "a window on " + folder)
    assert len(titles(desk)) == 2, titles(desk)


def starts_nothing_without_a_bus(desk):
    before = set(os.listdir("/proc"))
    app = desk.start(desk.work)
    app.keys("ctrl+a")
    for pid in set(os.listdir("/proc")) - before:
        if not pid.isdigit():
            continue
        try:
            with open(f"/proc/{pid}/comm", encoding="utf-8") as comm, open(f"/proc/{pid}/environ", "rb") as environ:
                ours = desk.root.encode() in environ.read()
                assert not (ours and "dbus" in comm.read()), "a bus was started"
        except OSError:
            pass
    app.close()
    assert app.wait() == 0


sys.exit(run([opens_folders_and_items_in_windows, answers_odd_calls_with_the_nearest_directory,
              is_started_by_the_bus, starts_nothing_without_a_bus]))
