#!/usr/bin/env python3
"""A session without X: the window comes up on Wayland, paints its directory and ends with its settings kept; and,
on a compositor whose screen is a window with a keyboard and a pointer, files go from program to program."""
import os
import shutil
import signal
import subprocess
import sys
import time

from harness import needs, run, skip, wait_for


def compositor(desk, backend="headless"):
    """A compositor of the test's own, in which each window fills the screen. Only with x11 it has a seat."""
    desk.helper("weston", f"--backend={backend}-backend.so", "--socket=wayland-zan", "--idle-time=0",
                "--shell=kiosk-shell.so", "--width=1200", "--height=760", "--log=/dev/null")
    wait_for(lambda: os.path.exists(os.path.join(desk.root, "wayland-zan")), "a compositor")


def started(desk, path):
    app = desk.start("-swayland-zan", path, wait=False,
                     env={"DISPLAY": None, "QT_QPA_PLATFORM": None, "WAYLAND_DEBUG": "client"})

    def painted():
        if not app.running() and "platform plugin" in app.printed():
            skip("the toolkit has no plugin for Wayland")
        assert app.running(), app.printed()[-2000:]
        return f'set_title("ZAN: {path}")' in app.printed() and ".attach(wl_buffer" in app.printed()
    wait_for(painted, "a painted window with its title")
    return app


def comes_up_and_ends(desk):
    desk.make("one")
    compositor(desk)
    app = started(desk, desk.work)
    app.process.send_signal(signal.SIGTERM)
    app.ends()
    assert os.path.exists(desk.record)


def pastes_between_windows_and_programs_and_drags(desk):
    if not shutil.which("wl-paste"):
        return print("     left out: no wl-clipboard")
    desk.make("from/a b%.txt", "x")
    source, to, third, inner = (desk.make(name) for name in ("from/", "to/", "third/", "third/inner/"))
    compositor(desk, "x11")
    wait_for(lambda: any("Weston" in title for title in desk.titles()), "the compositor's window")
    uris = "file://" + source + "/a%20b%25.txt"

    def wl(*command, **options):
        return subprocess.run(command, env=dict(desk.env, WAYLAND_DISPLAY="wayland-zan"), stdout=subprocess.PIPE,
                              check=True, timeout=30, text=True, **options).stdout

    def until(done, what, *keys):
        """The compositor tells a window late that it has the keyboard."""
        def pressed():
            desk.xdotool("key", "--delay", "60", *keys)
            time.sleep(0.5)
            return done()
        wait_for(pressed, what)

    desk.said("wmctrl", "-a", "Weston")
    for at in ("5", "700"):  # coming in tells the compositor where the pointer is
        desk.xdotool("mousemove", at, at)
        time.sleep(0.3)
    started(desk, source)
    wl("wl-copy", "nothing")
    until(lambda: "text/uri-list" in wl("wl-paste", "-l"), "a copy on the clipboard", "ctrl+a", "ctrl+c")
    assert wl("wl-paste", "-n", "-t", "text/uri-list").split() == [uris]
    started(desk, to)
    until(lambda: os.path.exists(to + "/a b%.txt"), "a paste of what another window copied", "ctrl+v")
    wl("wl-copy", "-t", "text/uri-list", input=uris + "\r\n")
    started(desk, third)
    until(lambda: os.path.exists(third + "/a b%.txt"), "a paste of what another program copied", "ctrl+v")

    def dragged():
        desk.xdotool("mousemove", "290", "169", "mousedown", "1")
        for y in range(172, 192, 3):
            desk.xdotool("mousemove", "290", str(y))
            time.sleep(0.1)
        time.sleep(1.2)  # a drop within a second after the drag began is not taken
        desk.xdotool("mouseup", "1")
        time.sleep(1)
        return os.path.exists(inner + "/a b%.txt")
    time.sleep(2)  # the operation's window goes a second after its end
    wait_for(dragged, "a drop onto a directory's row")


needs("weston")
sys.exit(run([comes_up_and_ends, pastes_between_windows_and_programs_and_drags]))
