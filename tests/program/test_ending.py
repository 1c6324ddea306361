#!/usr/bin/env python3
"""Ends of the program while operations run: nothing half-written stays, nothing is lost, nobody hangs."""
import filecmp
import os
import shutil
import signal
import subprocess
import sys
import tempfile
import urllib.parse

from harness import descendants, run, wait_for

BIG = 96 << 20  # bytes of a file that takes its time
BIG_FILES = 16


def offer(desk, *paths, cut=False):
    """Puts files on the clipboard, as another file manager does."""
    text = ("cut" if cut else "copy") + "".join("\nfile://" + urllib.parse.quote(path) for path in paths)
    subprocess.run(["xclip", "-selection", "clipboard", "-t", "x-special/gnome-copied-files"], env=desk.env,
                   input=text.encode(), stdout=subprocess.DEVNULL, check=True)


def paste(desk, app, *paths, cut=False):
    offer(desk, *paths, cut=cut)
    app.keys("ctrl+v")


def question(desk, app):
    """Pastes over an existing file, and waits for what the program asks."""
    source = desk.make("conflict/asked", "new")
    desk.make("to/asked", "old")
    paste(desk, app, source)
    return app.other_window("Copy/Move")


def big_files(desk):
    """A directory of big files: many names of one, so that they cost their space only once copied."""
    first = desk.make("big/0", os.urandom(1 << 20) * (BIG >> 20))
    for i in range(1, BIG_FILES):
        os.link(first, os.path.join(os.path.dirname(first), str(i)))
    return os.path.dirname(first)


def in_mid_copy(place):
    copied = os.path.join(place, "big")
    wait_for(lambda: os.path.isdir(copied) and any(entry.stat().st_size for entry in os.scandir(copied)), "bytes")


def all_whole(source, place):
    """Every file that is there is complete; how many."""
    copied = os.path.join(place, "big")
    for name in os.listdir(copied):
        whole = next((path for path in (os.path.join(source, other) for other in map(str, range(BIG_FILES)))
                      if os.path.exists(path)), None)
        path = os.path.join(copied, name)
        assert os.path.getsize(path) == BIG, f"half-written: {name}"
        assert whole is None or filecmp.cmp(whole, path, shallow=False), f"not the same: {name}"
    return set(os.listdir(copied))


def display_server():
    for pid in descendants(os.getpid()):
        with open(f"/proc/{pid}/comm", encoding="utf-8") as comm:
            if comm.read().strip() == "Xvfb":
                return pid
    raise AssertionError("no display server")


def closing_the_window_leaves_the_operations_running(desk):
    app = desk.start(desk.make("to/"))
    asked = question(desk, app)
    holder = app.other_window("ZAN: File Operations")
    app.close()
    wait_for(lambda: app.window() not in app.windows(), "the main window's end")
    assert os.path.exists(os.path.join(desk.settings, "config.003")), "settings are saved when it closes"
    app.signal(signal.SIGWINCH)  # does nothing now
    app.close(holder)            # nor does this end anything
    assert app.running()
    app.keys("o", window=asked)
    assert app.wait() == 0, app.errors()
    with open(os.path.join(desk.work, "to/asked"), encoding="utf-8") as file:
        assert file.read() == "new"


def term_in_mid_copy_with_a_question_open(desk):
    place = desk.make("to/")
    app = desk.start(place)
    question(desk, app)
    source = big_files(desk)
    paste(desk, app, source)
    in_mid_copy(place)
    app.signal(signal.SIGTERM)
    assert app.wait() == 0, app.errors()
    assert len(all_whole(source, place)) < BIG_FILES, "it was not in the middle of it"
    with open(os.path.join(place, "asked"), encoding="utf-8") as file:
        assert file.read() == "old", "an unanswered question overwrites nothing"
    assert os.path.exists(os.path.join(desk.settings, "config.003")), "settings are saved"


def display_dies_in_mid_copy(desk):
    place = desk.make("to/")
    app = desk.start(place)
    question(desk, app)
    source = big_files(desk)
    paste(desk, app, source)
    in_mid_copy(place)
    os.kill(display_server(), signal.SIGKILL)
    assert app.wait() == 1, (app.process.returncode, app.errors())
    assert len(all_whole(source, place)) < BIG_FILES, "it was not in the middle of it"


def display_dies_in_mid_move_between_file_systems(desk):
    if os.stat("/dev/shm").st_dev == os.stat(desk.work).st_dev or shutil.disk_usage("/dev/shm").free < 3 * BIG:
        print("skipped: no second file system")
        return
    other = tempfile.mkdtemp(prefix="zan-ending-", dir="/dev/shm")
    try:
        app = desk.start(other)
        source = big_files(desk)
        paste(desk, app, source, cut=True)
        in_mid_copy(other)
        os.kill(display_server(), signal.SIGKILL)
        assert app.wait() == 1, (app.process.returncode, app.errors())
        moved, left = all_whole(source, other), set(os.listdir(source))
        assert moved | left == set(map(str, range(BIG_FILES))), "lost"
    finally:
        shutil.rmtree(other)


def display_dies_while_a_worker_hangs_in_the_kernel(desk):
    slow = os.path.join(os.path.dirname(desk.bin), "tests", "zan_slow_fs")
    slow = slow if os.path.exists(slow) else os.path.join(desk.bin, "zan_slow_fs")
    if not os.path.exists(slow) or not os.access("/dev/fuse", os.R_OK | os.W_OK):
        print("skipped: no file system that hangs")
        return
    mount, log = desk.make("slow/"), desk.make("log")
    server = subprocess.Popen([slow, "interruptible", "1000000", log, mount])
    try:
        wait_for(lambda: os.path.ismount(mount) or server.poll() is not None, "the mount")
        if server.poll() is not None:
            print("skipped: cannot mount")
            return
        app = desk.start(desk.make("to/"))
        paste(desk, app, os.path.join(mount, "entry03"))
        wait_for(lambda: os.path.getsize(log) > 0, "a call that hangs")
        os.kill(display_server(), signal.SIGKILL)
        assert app.wait() == 1, (app.process.returncode, app.errors())
    finally:
        subprocess.run(["umount", "-l", mount], check=False, stderr=subprocess.DEVNULL)
        server.kill()
        server.wait()


def another_instance_ends_and_refreshes_meanwhile(desk):
    place = desk.make("to/")
    app, other, gone = desk.start(place), desk.start(place), desk.start(desk.work)
    asked = question(desk, app)
    gone.close()
    assert gone.wait() == 0, gone.errors()
    assert app.running() and asked in app.windows(), "only that one ended"
    paste(desk, app, desk.make("fresh directory/"))

    def enter():
        other.type("fresh")
        other.keys("Return")
        return other.title().endswith("/fresh directory")
    wait_for(enter, "the other instance's refresh")
    app.keys("Escape", window=asked)
    other.close()
    app.close()
    assert other.wait() == 0 and app.wait() == 0


if __name__ == "__main__":
    sys.exit(run([closing_the_window_leaves_the_operations_running, term_in_mid_copy_with_a_question_open,
                  display_dies_in_mid_copy, display_dies_in_mid_move_between_file_systems,
                  display_dies_while_a_worker_hangs_in_the_kernel, another_instance_ends_and_refreshes_meanwhile]))
