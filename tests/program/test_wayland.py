#!/usr/bin/env python3
"""On Wayland: the window comes up, paints and keeps its settings, and the clipboard goes from program to program."""
import os
import shutil
import signal
import subprocess
import time

from harness import run, skip, wait_for


def compositor(desk, backend="headless"):
    """A compositor of the test's own, in which each window fills the screen. Only with x11 it has a seat."""
    desk.helper("weston", f"--backend={backend}-backend.so", "--socket=wayland-zan", "--idle-time=0",
                "--shell=kiosk-shell.so", "--width=1200", "--height=760", "--log=/dev/null")
    wait_for(lambda: os.path.exists(os.path.join(desk.root, "wayland-zan")), "a compositor")


def started(desk, path):
    app = desk.start("-swayland-zan", path, wait=False,
                     env={"DISPLAY": None, "QT_QPA_PLATFORM": None, "WAYLAND_DEBUG": "client"})

    def painted():
        told = app.printed()
        if "platform plugin" in told:
            skip("the toolkit has no plugin for Wayland")
        assert app.process.poll() is None, told[-2000:]
        return f'set_title("ZAN: {path}")' in told and ".attach(wl_buffer" in told
    wait_for(painted, "a painted window with its title")
    return app


def comes_up_and_ends(desk):
    desk.make("one")
    compositor(desk)
    app = started(desk, desk.work)
    app.process.send_signal(signal.SIGTERM)
    app.ends()
    assert os.path.exists(desk.record)


def pastes_between_windows_and_programs(desk):
    if not shutil.which("wl-paste"):
        return print("     left out: no wl-clipboard")
    desk.make("from/a b%.txt", "x")
    source, to, third = (desk.make(name) for name in ("from/", "to/", "third/"))
    compositor(desk, "x11")
    wait_for(lambda: any("Weston" in title for title in desk.titles()), "the compositor's window")
    uris = "file://" + source + "/a%20b%25.txt"

    def wl(*command, **options):
        return subprocess.run(command, env=dict(desk.env, WAYLAND_DISPLAY="wayland-zan"), stdout=subprocess.PIPE,
                              check=True, timeout=30, text=True, **options).stdout

    def press(*keys):
        """To be repeated: the compositor tells a window late that it has the keyboard."""
        desk.xdotool("key", "--delay", "60", *keys)
        time.sleep(0.5)
        return True

    desk.said("wmctrl", "-a", "Weston")
    started(desk, source)
    wl("wl-copy", "nothing")
    wait_for(lambda: press("ctrl+a", "ctrl+c") and "text/uri-list" in wl("wl-paste", "-l"), "a copy on the clipboard")
    assert wl("wl-paste", "-n", "-t", "text/uri-list").split() == [uris]
    started(desk, to)
    wait_for(lambda: press("ctrl+v") and os.path.exists(to + "/a b%.txt"), "a paste of what another window copied")
    wl("wl-copy", "-t", "text/uri-list", input=uris + "\r\n")
    started(desk, third)
    wait_for(lambda: press("ctrl+v") and os.path.exists(third + "/a b%.txt"), "a paste of what another program copied")


if not shutil.which("weston"):
    skip("no weston")
run([comes_up_and_ends, pastes_between_windows_and_programs])
