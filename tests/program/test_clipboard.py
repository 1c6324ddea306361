#!/usr/bin/env python3
"""Files on the clipboard and in drags: between two instances, to and from other programs, and after the end.
Of pcmanfm-qt, thunar and dolphin, those that are installed take part."""
import os
import shutil
import subprocess
import sys
import time

from harness import run, wait_for

OWN_FILES, OWN_CUT = "application/x-zan-files", "application/x-zan-mvfiles"
GNOME, URIS, KDE = "x-special/gnome-copied-files", "text/uri-list", "application/x-kde-cutselection"
NAMES = ["100%#?", "a b", "umläut"]


def clip(desk, kind):
    """What the clipboard holds in that form; empty when it has none."""
    return subprocess.run(["xclip", "-o", "-selection", "clipboard", "-t", kind], env=desk.env,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False).stdout


def listing(path):
    return sorted(os.listdir(path))


def awaits(path, names, what):
    wait_for(lambda: listing(path) == names, lambda: f"{what}: {listing(path)}")


def two_directories(desk):
    for name in NAMES:
        desk.make("source/" + name, name)
    return os.path.join(desk.work, "source"), desk.make("target/")


def empty(path):
    for name in os.listdir(path):
        os.remove(os.path.join(path, name))


def take_all(desk, app, key, *kinds):
    """Selects everything there and copies or cuts it, until the clipboard says so; what it says."""
    def taken():
        app.keys("ctrl+a", key)
        return next(filter(None, (clip(desk, kind) for kind in kinds)), None)
    return wait_for(taken, f"{kinds} on the clipboard")


def operations_over(app):
    wait_for(lambda: len(app.windows()) == 1, "the end of the operation")


def two_instances_share_it(desk):
    source, target = two_directories(desk)
    first, second = desk.start(source), desk.start(target)
    take_all(desk, first, "ctrl+c", OWN_FILES)
    assert b"/100%25%23%3F\r\n" in clip(desk, URIS), clip(desk, URIS)
    second.keys("ctrl+v")
    awaits(target, NAMES, "the copies")
    assert listing(source) == NAMES, listing(source)
    empty(target)
    take_all(desk, first, "ctrl+x", OWN_CUT)
    assert (clip(desk, KDE), clip(desk, OWN_FILES)) == (b"1", b"")
    second.keys("F5", "ctrl+v")
    awaits(target, NAMES, "the move")
    awaits(source, [], "the moved")
    wait_for(lambda: clip(desk, OWN_CUT) == b"" and clip(desk, URIS) == b"", "every item forgotten")
    # Into a directory that vanished while it is shown: asked first.
    operations_over(second)
    take_all(desk, second, "ctrl+x", OWN_CUT)
    os.rmdir(source)
    for answer, there in (("Escape", False), ("Return", True)):
        first.keys("ctrl+v")
        question = first.other_window("Make Directory")
        assert listing(target) == NAMES and not os.path.exists(source), answer
        first.keys(answer, window=question)
        wait_for(lambda want=there: os.path.exists(source) == want and len(first.windows()) == 1, answer)
    awaits(source, NAMES, "the move into the directory made")


def content_outlives_the_program(desk):
    source, target = two_directories(desk)
    manager = desk.helper(os.path.join(os.path.dirname(__file__), "clipboard_manager.py"))
    assert manager.stdout.readline() == "ready\n", "no manager"
    first = desk.start(source)
    packed = take_all(desk, first, "ctrl+x", OWN_CUT)
    first.end()
    assert clip(desk, OWN_CUT) == packed
    desk.start(target).keys("ctrl+v")
    awaits(target, NAMES, "the move after the end")


def drags_between_two_windows(desk):
    source, target = desk.make("source/"), desk.make("target/")
    for i in range(60):
        desk.make(f"source/{i:02}", "x")
    places = []
    for at, path in (("-x10", source), ("-x640", target)):
        left, top, width, height = desk.start(at, "-y40", "-w500", "-h400", path).geometry()
        places.append((left + width * 2 // 3, top + height * 2 // 3))
    (x, y), (to_x, to_y) = places

    def drag(modifier):
        """Until a file is there: on a slow machine the button may be let go before the windows have agreed."""
        desk.said("xdotool", "mousemove", str(x), str(y), "mousedown", "1")
        for step in range(1, 21):
            desk.said("xdotool", "mousemove", str(x + (to_x - x) * step // 20), str(y + (to_y - y) * step // 20))
        time.sleep(1.1)  # a drop within a second of the drag's start is ignored, in the list that it began in
        held = ["keydown", modifier] if modifier else []
        desk.said("xdotool", *held, "mousemove", str(to_x + 3), str(to_y + 3), "sleep", "0.3", "mouseup", "1")
        patience = time.monotonic() + 10
        while not listing(target) and time.monotonic() < patience:
            time.sleep(0.02)
        desk.said("xdotool", "keyup", "ctrl")
        return listing(target)
    for modifier, left in (("ctrl", 60), (None, 59)):
        wait_for(lambda key=modifier: drag(key), "a dropped file")
        wait_for(lambda: len(desk.windows()) == 2, "the end of the operation")
        assert len(listing(source)) == left, f"a copy with Ctrl, else a move: {modifier} left {listing(source)}"
        empty(target)


def other_file_managers(desk):
    desk.start_bus()  # some do not start without
    for program in filter(shutil.which, ("pcmanfm-qt", "thunar", "dolphin")):
        source, target = two_directories(desk)
        peer, app = desk.start(source, program=program), desk.start(target)
        for key, left in (("ctrl+c", NAMES), ("ctrl+x", [])):
            empty(target)
            take_all(desk, peer, key, URIS, GNOME)
            app.keys("F5", "ctrl+v")
            awaits(target, NAMES, f"{key} in {program}, paste here")
            awaits(source, left, "the sources")
            operations_over(app)
        for key, kind, left in (("ctrl+c", OWN_FILES, NAMES), ("ctrl+x", OWN_CUT, [])):
            empty(source)
            app.keys("F5")
            take_all(desk, app, key, kind)
            peer.keys("F5", "ctrl+v")
            awaits(source, NAMES, f"{key} here, paste in {program}")
            awaits(target, left, f"the sources of {program}'s paste")
        print(f"     exchanged with {program}")
        peer.close()
        app.end()
        empty(source)


sys.exit(run([two_instances_share_it, content_outlives_the_program, drags_between_two_windows, other_file_managers]))
