#!/usr/bin/env python3
"""Files on the clipboard and in drags: between two instances, to and from other programs, and after the end.
Of pcmanfm-qt, thunar and dolphin, those that are installed take part."""
import os
import shutil
import subprocess
import sys
import time

from harness import run

OWN_FILES, OWN_CUT = "application/x-zan-files", "application/x-zan-mvfiles"
GNOME, URIS, KDE = "x-special/gnome-copied-files", "text/uri-list", "application/x-kde-cutselection"


def clip(desk, kind):
    """What the clipboard holds in that form; empty when it has none."""
    return subprocess.run(["xclip", "-o", "-selection", "clipboard", "-t", kind], env=desk.env,
                          stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, check=False).stdout


def fill(desk, kind, content):
    """Fills the clipboard as another program."""
    subprocess.run(["xclip", "-i", "-selection", "clipboard", "-t", kind], env=desk.env, input=content,
                   stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, check=True)


def listing(path):
    return sorted(os.listdir(path))


def two_directories(desk):
    source, target = desk.make("source/"), desk.make("target/")
    for name in ("a b", "100%#?", "umläut"):
        desk.make("source/" + name, name)
    return source, target


def take_all(desk, app, key, kind):
    """Selects everything there and copies or cuts it, until the clipboard says so."""
    def taken():
        app.keys("ctrl+a", key)
        time.sleep(0.3)
        return clip(desk, kind)
    return desk.wait_for(taken, f"{kind} on the clipboard")


def two_instances_share_it(desk):
    source, target = two_directories(desk)
    names = listing(source)
    first, second = desk.start(source), desk.start(target)
    take_all(desk, first, "ctrl+c", OWN_FILES)
    assert clip(desk, GNOME).startswith(b"copy\nfile:///"), clip(desk, GNOME)
    assert b"/100%25%23%3F\r\n" in clip(desk, URIS), clip(desk, URIS)
    assert clip(desk, KDE) == b"0"
    second.keys("ctrl+v")
    desk.wait_for(lambda: listing(target) == names, "the copies")
    assert listing(source) == names
    shutil.rmtree(target)
    os.mkdir(target)
    take_all(desk, first, "ctrl+x", OWN_CUT)
    assert clip(desk, KDE) == b"1" and clip(desk, OWN_FILES) == b""
    second.keys("F5", "ctrl+v")
    desk.wait_for(lambda: listing(target) == names and not listing(source), "the move")
    desk.wait_for(lambda: clip(desk, OWN_CUT) == b"" and clip(desk, URIS) == b"", "every item forgotten")


def reads_what_others_write(desk):
    source, target = two_directories(desk)
    far = desk.make("far/")
    desk.make("far/z", "z")
    app = desk.start(target)
    uri = ("file://" + source + "/").encode()
    rows = [
        (GNOME, b"copy\n" + uri + b"a%20b", ["a b"], False),
        (GNOME, b"cut\r\n" + uri + b"a%20b\r\n\0", ["a b"], True),
        (URIS, b"# from elsewhere\r\n" + uri + b"100%25%23%3F\r\nfile://" + far.encode() + b"/z\r\n",
         ["100%#?", "z"], False),
        (URIS, b"file://otherhost/etc/passwd\r\nhttp://x/y\r\n" + uri + b"um%C3%A4ut%zz\r\nfile:"
         + source.encode() + b"/uml%C3%A4ut\r\n", ["umläut"], False),
    ]
    for kind, content, expected, moved in rows:
        fill(desk, kind, content)
        app.keys("F5", "ctrl+v")
        desk.wait_for(lambda want=expected: listing(target) == want, f"{expected} from {content}")
        assert os.path.exists(os.path.join(source, "a b")) != moved, content
        if moved:
            shutil.copy(os.path.join(target, "a b"), source)
        desk.wait_for(lambda: len(app.windows()) == 1, "the end of the operation")
        for name in listing(target):
            os.remove(os.path.join(target, name))
    fill(desk, OWN_CUT, b"ZANt\1\0\0\0")
    app.keys("F5", "ctrl+v")
    time.sleep(1)
    assert app.running() and listing(target) == [], "a malformed list of our own kind"


def content_outlives_the_program(desk):
    source, target = two_directories(desk)
    manager = subprocess.Popen([sys.executable, os.path.join(os.path.dirname(__file__), "clipboard_manager.py")],
                               env=desk.env, stdout=subprocess.PIPE, stderr=subprocess.DEVNULL)
    assert manager.stdout.readline() == b"ready\n", "no manager"
    first = desk.start(source)
    packed = take_all(desk, first, "ctrl+x", OWN_CUT)
    first.close()
    assert first.wait() == 0, first.errors()
    assert clip(desk, OWN_CUT) == packed
    second = desk.start(target)
    second.keys("ctrl+v")
    desk.wait_for(lambda: len(listing(target)) == 3 and not listing(source), "the move after the end")


def pastes_nowhere_without_asking(desk):
    source, target = two_directories(desk)
    names = listing(source)
    first, second = desk.start(source), desk.start(target)
    take_all(desk, first, "ctrl+x", OWN_CUT)
    os.rmdir(target)  # while it is shown
    for answer, there in (("Escape", False), ("Return", True)):
        second.keys("ctrl+v")
        question = second.other_window("Make Directory")
        assert listing(source) == names and not os.path.exists(target), "asked first"
        second.keys(answer, window=question)
        desk.wait_for(lambda want=there: os.path.exists(target) == want and len(second.windows()) == 1, answer)
        assert listing(target if there else source) == names, answer


def drags_between_two_windows(desk):
    source, target = desk.make("source/"), desk.make("target/")
    for i in range(60):
        desk.make(f"source/{i:02}", "x")
    first, second = desk.start("-x10", "-y40", "-w500", "-h400", source), desk.start("-x640", "-y40", "-w500",
                                                                                  "-h400", target)
    places = []
    for app in (first, second):
        x, y, width, height = app.geometry()
        places.append((x + width * 2 // 3, y + height * 2 // 3))
    for modifier, left in (("ctrl", 60), (None, 59)):
        desk.xdotool("mousemove", *map(str, places[0]))
        desk.xdotool("mousedown", "1")
        (x, y), (to_x, to_y) = places
        for step in range(1, 21):
            desk.xdotool("mousemove", str(x + (to_x - x) * step // 20), str(y + (to_y - y) * step // 20))
        time.sleep(1.2)  # a drop within a second of the drag's start is ignored, in the list that it began in
        if modifier:
            desk.xdotool("keydown", modifier)
        desk.xdotool("mousemove", str(to_x + 3), str(to_y + 3))
        time.sleep(0.3)
        desk.xdotool("mouseup", "1")
        if modifier:
            desk.xdotool("keyup", modifier)
        desk.wait_for(lambda: len(listing(target)) == 1, "the dropped file")
        desk.wait_for(lambda want=left: len(listing(source)) == want, "a copy with Ctrl, else a move")
        for name in listing(target):
            os.remove(os.path.join(target, name))


def session_bus(desk):
    """Some file managers do not start without one."""
    bus = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], env=desk.env,
                           stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True)
    return {"DBUS_SESSION_BUS_ADDRESS": bus.stdout.readline().strip()}


def other_file_manager(program):
    def test(desk):
        if not shutil.which(program) or not shutil.which("dbus-daemon"):
            print(f"     {program}: not installed, left out")
            return
        environment = session_bus(desk)
        source, target = two_directories(desk)
        names = listing(source)
        peer = desk.start(source, program=program, env=environment)
        app = desk.start(target)
        for key, first in (("ctrl+c", b"copy"), ("ctrl+x", b"cut")):
            def read_by_us(key=key):
                peer.keys("ctrl+a", key)
                time.sleep(0.5)
                return clip(desk, URIS) or clip(desk, GNOME)
            desk.wait_for(read_by_us, f"{program} fills the clipboard")
            app.keys("F5", "ctrl+v")
            desk.wait_for(lambda: listing(target) == names, f"{first.decode()} in {program}, paste here")
            desk.wait_for(lambda left=names if first == b"copy" else []: listing(source) == left, "the sources")
            if first == b"copy":
                shutil.rmtree(target)
                os.mkdir(target)
                desk.wait_for(lambda: len(app.windows()) == 1, "the end of the operation")
        desk.wait_for(lambda: len(app.windows()) == 1, "the end of the operation")
        app.keys("F5")
        for key, kind in (("ctrl+c", OWN_FILES), ("ctrl+x", OWN_CUT)):
            take_all(desk, app, key, kind)
            peer.keys("F5", "ctrl+v")
            desk.wait_for(lambda: listing(source) == names, f"{key} here, paste in {program}")
            if key == "ctrl+c":
                for name in names:
                    os.remove(os.path.join(source, name))
                time.sleep(1)
        desk.wait_for(lambda: listing(target) == [], f"the move by {program}")
    test.__name__ = "exchanges_with_" + program.replace("-", "_")
    return test


if __name__ == "__main__":
    sys.exit(run([two_instances_share_it, reads_what_others_write, pastes_nowhere_without_asking,
                  content_outlives_the_program, drags_between_two_windows, other_file_manager("pcmanfm-qt"),
                  other_file_manager("thunar"), other_file_manager("dolphin")]))
