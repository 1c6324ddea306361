#!/usr/bin/env python3
"""Signals and ends, while operations run and at rest: what was set is saved, nothing half-written stays, nothing is
lost, nobody hangs."""
import filecmp
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import time
import urllib.parse

from harness import becomes, read, run, wait_for, write

BIG = 96 << 20  # bytes of a file that takes its time
BIG_FILES = 16


def paste(desk, app, *paths, cut=False):
    """Puts files on the clipboard, as another file manager does, and pastes them."""
    text = ("cut" if cut else "copy") + "".join("\nfile://" + urllib.parse.quote(path) for path in paths)
    subprocess.run(["xclip", "-selection", "clipboard", "-t", "x-special/gnome-copied-files"], env=desk.env,
                   input=text.encode(), stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)
    app.keys("ctrl+v")


def question(desk, app, place):
    """Pastes over an existing file, and waits for what the program asks."""
    write(os.path.join(place, "asked"), "old")
    paste(desk, app, desk.make("conflict/asked", "new"))
    return app.other_window("Copy/Move")


def in_mid_copy(desk, app, place, cut):
    """Begins to copy a directory of big files: many names of one, so that they cost their space only once copied."""
    first = desk.make("big/0", os.urandom(1 << 20) * (BIG >> 20))
    for i in range(1, BIG_FILES):
        os.link(first, os.path.join(os.path.dirname(first), str(i)))
    paste(desk, app, os.path.dirname(first), cut=cut)
    copied = os.path.join(place, "big")
    wait_for(lambda: os.path.isdir(copied) and any(entry.stat().st_size for entry in os.scandir(copied)), "bytes")
    return first


def whole_ones(first, place):
    """The names of the copied files, each of which must be whole."""
    copied = os.path.join(place, "big")
    for name in os.listdir(copied):
        path = os.path.join(copied, name)
        assert os.path.getsize(path) == BIG, f"half-written: {name}"
        assert not os.path.exists(first) or filecmp.cmp(first, path, shallow=False), f"not the same: {name}"
    return set(os.listdir(copied))


def every_end_signal_saves_and_ends(desk):
    for number in (signal.SIGTERM, signal.SIGHUP, signal.SIGINT, signal.SIGQUIT):
        app = desk.start(desk.work)
        ignored = next(line for line in read(f"/proc/{app.pid}/status").splitlines() if line.startswith("SigIgn"))
        assert int(ignored.split()[1], 16) & 1 << (signal.SIGCHLD - 1), "children would become zombies"
        app.process.send_signal(number)
        app.ends()
        os.unlink(desk.record)
    for delay in (0.01, 0.02, 0.04, 0.08, 0.12):  # before the window stands
        app = desk.start(desk.work, wait=False)
        time.sleep(delay)
        app.process.send_signal(signal.SIGTERM)
        app.ends(0, -signal.SIGTERM)


def closing_the_window_leaves_the_operations_running(desk):
    place = desk.make("to/")
    app = desk.start(place)
    asked = question(desk, app, place)
    holder = app.other_window("ZAN: File Operations")
    app.close()
    wait_for(lambda: app.window() not in app.windows(), "the main window's end")
    assert os.path.exists(desk.record), "settings are saved when it closes"
    app.process.send_signal(signal.SIGWINCH)  # does nothing now
    app.close(holder)  # nor does this end anything
    app.keys("o", window=asked)
    app.ends()
    assert read(os.path.join(place, "asked")) == "new"


def ended_in_the_middle_with_a_question_open(desk):
    """By a signal while it copies; then, while it moves to another file system, by the display's death."""
    rows = [(lambda app: app.process.send_signal(signal.SIGTERM), 0, False, desk.work)]
    if os.stat("/dev/shm").st_dev != os.stat(desk.work).st_dev and shutil.disk_usage("/dev/shm").free > 3 * BIG:
        rows += [(lambda _: desk.server.kill(), 1, True, "/dev/shm")]
    for end, status, cut, parent in rows:
        with tempfile.TemporaryDirectory(prefix="zan-ending-", dir=parent) as place:
            app = desk.start(place)
            question(desk, app, place)
            first = in_mid_copy(desk, app, place, cut)
            end(app)
            app.ends(status)
            copies = whole_ones(first, place)
            assert len(copies) < BIG_FILES, "it was not in the middle of it"
            left = copies | set(os.listdir(os.path.dirname(first)))
            assert left == set(map(str, range(BIG_FILES))), f"lost, there is only {left}"
            assert read(os.path.join(place, "asked")) == "old", "an unanswered question overwrites nothing"
            assert {"config.003", "hotlist.001"} <= set(os.listdir(desk.settings)), "settings are saved"
        shutil.rmtree(os.path.dirname(first))


def another_instance_ends_and_refreshes_meanwhile(desk):
    place = desk.make("to/")
    app, other, gone = desk.start(place), desk.start(place), desk.start(desk.work)
    asked = question(desk, app, place)
    gone.end()
    assert app.running() and asked in app.windows(), "only that one ended"
    paste(desk, app, desk.make("fresh directory/"))

    def listed():
        other.keys("ctrl+a", "ctrl+c")
        return f"file://{place}/fresh%20directory" in desk.clip("text/uri-list")
    wait_for(listed, "the other instance's refresh")
    os.rmdir(os.path.join(place, "fresh directory"))
    for _ in range(200):  # many at once
        other.process.send_signal(signal.SIGWINCH)
    becomes(listed, False, "what is gone, listed after signals,")
    app.keys("Escape", window=asked)
    other.end()
    app.end()


sys.exit(run([every_end_signal_saves_and_ends, closing_the_window_leaves_the_operations_running,
              ended_in_the_middle_with_a_question_open, another_instance_ends_and_refreshes_meanwhile]))
