#!/usr/bin/env python3
"""A session without X: the window comes up on Wayland, paints its directory and ends with its settings kept; and,
on a compositor whose screen is a window with a keyboard and a pointer, files go from program to program."""
import os
import shutil
import signal
import subprocess
import sys
import time

from harness import SKIP, run, wait_for


def compositor(desk, backend="headless"):
    """A compositor of the test's own, in which each window fills the screen. Only with x11 it has a seat."""
    socket = "wayland-zan"
    desk.helper("weston", f"--backend={backend}-backend.so", "--socket=" + socket, "--idle-time=0",
                "--shell=kiosk-shell.so", "--width=1200", "--height=760", "--log=/dev/null")
    wait_for(lambda: os.path.exists(os.path.join(desk.root, socket)), "a compositor")
    return socket


def started(desk, socket, path):
    app = desk.start("-s" + socket, path, wait=False,
                     env={"DISPLAY": None, "QT_QPA_PLATFORM": None, "WAYLAND_DEBUG": "client"})

    def titled():
        if not app.running() and "platform plugin" in app.errors():
            print("skipped: the toolkit has no plugin for Wayland")
            sys.exit(SKIP)
        assert app.running(), app.errors()[-2000:]
        return f'set_title("ZAN: {path}")' in app.errors()
    wait_for(titled, "the window's title")
    wait_for(lambda: ".attach(wl_buffer" in app.errors(), "a painted window")
    return app


def comes_up_and_ends(desk):
    desk.make("one")
    socket = compositor(desk)
    app = started(desk, socket, desk.work)
    app.signal(signal.SIGTERM)
    assert app.wait() == 0, app.errors()[-2000:]
    assert os.path.exists(desk.record)


def pastes_between_windows_and_programs_and_drags(desk):
    if not shutil.which("wl-paste"):
        print("     left out: no wl-clipboard")
        return
    desk.make("from/a b%.txt", "x")
    source, to, third = (desk.make(name) for name in ("from/", "to/", "third/"))
    desk.make("third/inner/")
    socket = compositor(desk, "x11")
    wait_for(lambda: any("Weston" in title for _, _, title in desk.windows()), "the compositor's window")
    env = dict(desk.env, WAYLAND_DISPLAY=socket)
    uris = "file://" + source + "/a%20b%25.txt"

    def wl(*command, **options):
        return subprocess.run(command, env=env, stdout=subprocess.PIPE, check=True, timeout=30, **options).stdout

    def press(*keys):
        desk.xdotool("key", "--delay", "60", *keys)

    def until(done, what, *keys):
        """The compositor tells a window late that it has the keyboard."""
        def pressed():
            press(*keys)
            time.sleep(0.5)
            return done()
        wait_for(pressed, what)

    desk.said("wmctrl", "-a", "Weston")
    for at in ("5", "700"):  # coming in tells the compositor where the pointer is
        desk.xdotool("mousemove", at, at)
        time.sleep(0.3)
    started(desk, socket, source)
    wl("wl-copy", "nothing")
    until(lambda: b"text/uri-list" in wl("wl-paste", "-l"), "a copy on the clipboard", "ctrl+a", "ctrl+c")
    assert wl("wl-paste", "-n", "-t", "text/uri-list").decode().split() == [uris]
    started(desk, socket, to)
    until(lambda: os.path.exists(to + "/a b%.txt"), "a paste of what another window copied", "ctrl+v")
    wl("wl-copy", "-t", "text/uri-list", input=uris.encode() + b"\r\n")
    started(desk, socket, third)
    until(lambda: os.path.exists(third + "/a b%.txt"), "a paste of what another program copied", "ctrl+v")

    def dragged():
        desk.xdotool("mousemove", "290", "169", "mousedown", "1")
        for y in range(172, 192, 3):
            desk.xdotool("mousemove", "290", str(y))
            time.sleep(0.1)
        time.sleep(1.2)  # a drop within a second after the drag began is not taken
        desk.xdotool("mouseup", "1")
        time.sleep(1)
        return os.path.exists(third + "/inner/a b%.txt")
    time.sleep(2)  # the operation's window goes a second after its end
    wait_for(dragged, "a drop onto a directory's row")


if not shutil.which("weston"):
    print("skipped: no weston")
    sys.exit(SKIP)
sys.exit(run([comes_up_and_ends, pastes_between_windows_and_programs_and_drags]))
