#!/usr/bin/env python3
"""Signals and ends, in operations and at rest: settings are saved, nothing is half-written or lost, nobody hangs."""
import os
import pathlib
import shutil
import signal
import tempfile
import time
import urllib.parse

from harness import becomes, read, run, wait_for, write

BIG_FILES = set(map(str, range(16)))  # the names of files that take their time


def paste(desk, app, path, cut=False):
    """Puts a file on the clipboard, as another file manager does, and pastes it."""
    text = ("cut" if cut else "copy") + "\nfile://" + urllib.parse.quote(path)
    desk.helper("xclip", "-selection", "clipboard", "-t", "x-special/gnome-copied-files",
                write(desk.root + "/clipboard", text)).wait()
    app.keys("ctrl+v")


def question(desk, app, place):
    """Pastes over an existing file, and waits for what the program asks."""
    write(os.path.join(place, "asked"), "old")
    paste(desk, app, desk.make("conflict/asked", "new"))
    return app.other_window("Copy/Move")


def in_mid_copy(desk, app, place, cut):
    """Begins to copy a directory of big files: many names of one, so that they cost their space only once copied. The
    directory, its copy and what each file holds."""
    content, copied = os.urandom(1 << 20) * 96, os.path.join(place, "big")
    first = desk.make("big/0", content)
    for name in BIG_FILES - {"0"}:
        os.link(first, os.path.join(os.path.dirname(first), name))
    paste(desk, app, os.path.dirname(first), cut)
    wait_for(lambda: os.path.isdir(copied) and any(entry.stat().st_size for entry in os.scandir(copied)), "bytes")
    return os.path.dirname(first), copied, content


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
    if os.stat("/dev/shm").st_dev != os.stat(desk.work).st_dev and shutil.disk_usage("/dev/shm").free > 1 << 29:
        rows += [(lambda _: desk.server.kill(), 1, True, "/dev/shm")]
    for end, status, cut, parent in rows:
        with tempfile.TemporaryDirectory(prefix="zan-ending-", dir=parent) as place:
            app = desk.start(place)
            question(desk, app, place)
            source, copied, content = in_mid_copy(desk, app, place, cut)
            end(app)
            app.ends(status)
            for name in os.listdir(copied):
                assert pathlib.Path(copied, name).read_bytes() == content, f"half-written, or not the same: {name}"
            assert len(os.listdir(copied)) < len(BIG_FILES), "it was not in the middle of it"
            assert set(os.listdir(copied) + os.listdir(source)) == BIG_FILES, "some are lost"
            assert read(os.path.join(place, "asked")) == "old", "an unanswered question overwrites nothing"
            assert {"config.003", "hotlist.001"} <= set(os.listdir(desk.settings)), "settings are saved"
        shutil.rmtree(source)


def another_instance_ends_and_refreshes_meanwhile(desk):
    place = desk.make("to/")
    app, other, gone = desk.start(place), desk.start(place), desk.start(desk.work)
    asked = question(desk, app, place)
    gone.end()
    assert asked in app.windows(), "only that one ended"
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


run([every_end_signal_saves_and_ends, closing_the_window_leaves_the_operations_running,
     ended_in_the_middle_with_a_question_open, another_instance_ends_and_refreshes_meanwhile])
