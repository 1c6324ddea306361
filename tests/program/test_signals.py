#!/usr/bin/env python3
"""Signals: refresh, the ends that save, and children that nobody waits for."""
import os
import signal
import sys
import time

from harness import run, wait_for


def saved(desk):
    return os.path.exists(os.path.join(desk.settings, "config.003"))


def every_end_signal_saves_and_ends(desk):
    for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT, signal.SIGQUIT):
        app = desk.start(desk.work)
        app.signal(number)
        assert app.wait() == 0, (number, app.process.returncode, app.errors())
        assert saved(desk), number
        os.unlink(os.path.join(desk.settings, "config.003"))


def end_right_at_the_start(desk):
    """A signal that comes before the window stands ends the program all the same."""
    for delay in (0.01, 0.02, 0.04, 0.08, 0.12):
        app = desk.start(desk.work, wait=False)
        time.sleep(delay)
        app.signal(signal.SIGTERM)
        assert app.wait() in (0, -signal.SIGTERM), (delay, app.process.returncode, app.errors())


def winch_refreshes(desk):
    app = desk.start(desk.work)
    made = desk.make("new dir/")
    app.signal(signal.SIGWINCH)

    def enter():
        app.type("new")
        app.keys("Return")
        return app.title().endswith("/new dir")
    wait_for(enter, "the new entry")
    os.rmdir(made)
    app.signal(signal.SIGWINCH)
    for _ in range(200):  # many at once
        app.signal(signal.SIGWINCH)
    app.keys("BackSpace")
    wait_for(lambda: app.title().endswith("/work"), "the way out of a directory that is gone")
    app.close()
    assert app.wait() == 0


def children_leave_no_zombies(desk):
    app = desk.start(desk.work)
    with open(f"/proc/{app.pid}/status", encoding="utf-8") as status:
        masks = dict(line.split(":", 1) for line in status.read().splitlines())
    assert int(masks["SigIgn"], 16) & (1 << (signal.SIGCHLD - 1)), "SIGCHLD is not ignored"
    app.close()
    assert app.wait() == 0


def a_lost_display_still_ends(desk):
    app = desk.start(desk.work)
    os.kill(desk.server.pid, signal.SIGKILL)
    app.wait()


if __name__ == "__main__":
    sys.exit(run([every_end_signal_saves_and_ends, end_right_at_the_start, winch_refreshes,
                  children_leave_no_zombies, a_lost_display_still_ends]))
