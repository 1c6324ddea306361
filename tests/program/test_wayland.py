#!/usr/bin/env python3
"""A session without X: the window comes up on Wayland, paints its directory and ends with its settings kept.
The compositor without a screen has no seat, so that nothing can be typed or pasted there."""
import os
import shutil
import signal
import subprocess
import sys

from harness import SKIP, run, wait_for


def compositor(desk):
    """A compositor of the test's own, without a display of its own."""
    socket = "wayland-zan"
    subprocess.Popen(["weston", "--backend=headless-backend.so", "--socket=" + socket, "--idle-time=0"],
                     env=desk.env, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    wait_for(lambda: os.path.exists(os.path.join(desk.root, socket)), "a compositor")
    return socket


def started(desk, socket, path):
    app = desk.start("-s", socket, path, wait=False,
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
    assert os.path.exists(os.path.join(desk.settings, "config.003"))


if __name__ == "__main__":
    if not shutil.which("weston"):
        print("skipped: no weston")
        sys.exit(SKIP)
    sys.exit(run([comes_up_and_ends]))
