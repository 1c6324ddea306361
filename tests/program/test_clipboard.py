#!/usr/bin/env python3
"""Files on the clipboard and in drags: between instances, with other file managers where there are, after the end."""
import os
import shutil
import time

from harness import becomes, listing, run, wait_for

OWN_FILES, OWN_CUT = "application/x-zan-files", "application/x-zan-mvfiles"
GNOME, URIS, KDE = "x-special/gnome-copied-files", "text/uri-list", "application/x-kde-cutselection"
NAMES = ["100%#?", "a b", "umläut"]


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
        return next(filter(None, map(desk.clip, kinds)), None)
    return wait_for(taken, f"{kinds} on the clipboard")


def all_goes(desk, giver, source, taker, target, key, *kinds):
    """Copies or cuts everything in one window, and pastes it in the other."""
    empty(target)
    take_all(desk, giver, key, *kinds)
    taker.keys("F5", "ctrl+v")
    becomes(lambda: listing(target), NAMES, f"what {key} brought")
    becomes(lambda: listing(source), NAMES if key == "ctrl+c" else [], f"what {key} left")
    becomes(lambda: len(desk.windows()), 2, "the number of windows after the operation")


def two_instances_share_it(desk):
    source, target = two_directories(desk)
    first, second = desk.start(source), desk.start(target)
    all_goes(desk, first, source, second, target, "ctrl+c", OWN_FILES)
    assert "/100%25%23%3F\n" in desk.clip(URIS), desk.clip(URIS)
    take_all(desk, first, "ctrl+x", OWN_CUT)
    assert (desk.clip(KDE), desk.clip(OWN_FILES)) == ("1", "")
    all_goes(desk, first, source, second, target, "ctrl+x", OWN_CUT)
    becomes(lambda: desk.clip(OWN_CUT) + desk.clip(URIS), "", "the clipboard, every item forgotten,")
    # Into a directory that vanished while it is shown: asked first.
    take_all(desk, second, "ctrl+x", OWN_CUT)
    os.rmdir(source)
    for answer, there in (("Escape", False), ("Return", True)):
        first.keys("ctrl+v")
        question = first.other_window("Make Directory")
        assert listing(target) == NAMES and not os.path.exists(source), answer
        first.keys(answer, window=question)
        wait_for(lambda want=there: os.path.exists(source) == want and len(first.windows()) == 1, answer)
    becomes(lambda: listing(source), NAMES, "what is in the directory made")


def content_outlives_the_program(desk):
    source, target = two_directories(desk)
    manager = desk.helper(os.path.join(os.path.dirname(__file__), "clipboard_manager.py"))
    assert manager.stdout.readline() == "ready\n", "no manager"
    first = desk.start(source)
    packed = take_all(desk, first, "ctrl+x", OWN_CUT)
    first.end()
    assert desk.clip(OWN_CUT) == packed
    desk.start(target).keys("ctrl+v")
    becomes(lambda: listing(target), NAMES, "what the move after the end brought")


def drags_between_two_windows(desk):
    source, target = desk.make("source/"), desk.make("target/")
    for i in range(60):
        desk.make(f"source/{i:02}", "x")
    places = []
    for at, path in (("-x10", source), ("-x640", target)):
        left, top, width, height = desk.start(at, "-y40", "-w500", "-h400", path).geometry()
        places.append((left + width * 2 // 3, top + height * 2 // 3))
    (x, y), (to_x, to_y) = places

    def drag(held):
        """Until a file is there: on a slow machine the button may be let go before the windows have agreed."""
        desk.xdotool("mousemove", str(x), str(y), "mousedown", "1")
        for step in range(1, 21):
            desk.xdotool("mousemove", str(x + (to_x - x) * step // 20), str(y + (to_y - y) * step // 20))
        time.sleep(1.1)  # a drop within a second of the drag's start is ignored, in the list that it began in
        desk.xdotool(*held, "mousemove", str(to_x + 3), str(to_y + 3), "sleep", "0.3", "mouseup", "1")
        patience = time.monotonic() + 10
        while not listing(target) and time.monotonic() < patience:
            time.sleep(0.02)
        desk.xdotool("keyup", "ctrl")
        return listing(target)
    for held, left in ((["keydown", "ctrl"], 60), ([], 59)):
        wait_for(lambda keys=held: drag(keys), "a dropped file")
        becomes(lambda: len(desk.windows()), 2, "the number of windows after the operation")
        assert len(listing(source)) == left, f"a copy with Ctrl, else a move: {held} left {listing(source)}"
        empty(target)


def other_file_managers(desk):
    desk.start_bus()  # some do not start without
    for program in filter(shutil.which, ("pcmanfm-qt", "thunar", "dolphin")):
        theirs, mine = two_directories(desk)
        peer, app = desk.start(theirs, program=program), desk.start(mine)
        for key in ("ctrl+c", "ctrl+x"):  # all theirs first: the forms they offer we offer, too
            all_goes(desk, peer, theirs, app, mine, key, URIS, GNOME)
        for key, own in (("ctrl+c", OWN_FILES), ("ctrl+x", OWN_CUT)):
            all_goes(desk, app, mine, peer, theirs, key, own)
        print(f"     exchanged with {program}")
        peer.close()
        app.end()


run([two_instances_share_it, content_outlives_the_program, drags_between_two_windows, other_file_managers])
