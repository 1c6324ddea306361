#!/usr/bin/env python3
"""Starting: the command line, the start directory, the display; and the settings that a run leaves for the next."""
import os
import pathlib
import struct
import subprocess

from harness import becomes, listing, read, run, write

SIZE, HEIGHT, WIDTH, FLAGS, SAVE, SHOWN = 5692, 4644, 4648, 4656, 4660, 4664  # of the settings record, and offsets


def words(desk, *offsets):
    """These words of the settings record."""
    data = pathlib.Path(desk.record).read_bytes()
    assert len(data) == SIZE, len(data)
    return [struct.unpack_from("=I", data, offset)[0] for offset in offsets]


def the_start_directory(desk):
    """Each row: working directory, arguments, the directory shown."""
    docs, work = desk.make("docs/"), desk.work
    for cwd, arguments, path in ((work, [], work), (work, ["./docs/"], work + "/./docs"), (docs, ["-x10", work], work),
                                 (work, ["nowhere"], work), (work, ["--", "docs"], docs)):
        app = desk.start(*arguments, cwd=cwd)
        app.shows(path)
        assert os.getpgid(app.pid) == app.pid, "it leads no process group of its own"
        if path == docs:  # vanishes while it is shown
            os.rmdir(docs)
            app.keys("F5", "BackSpace")
            app.shows(work)
        app.end()


def answers_without_a_window(desk):
    copy = ["copy", "--from", desk.root, os.path.basename(desk.work), "--to", desk.home]
    bad = ([], ["paint"], ["copy"], copy[:4], [*copy, "--answer", "x"], [*copy, "--cancel-at", "101"],
           [*copy, "--pause-at", "5"], [*copy, "--flags", "zz"], [*copy, "--settings", "none"], [*copy, "--what"],
           ["copy", "--from", "/", "..", "--to", desk.home], ["delete", *copy[1:]], ["delete", *copy[1:3], "work/b"])
    for program, status, begins, rows in ((desk.zan, 0, "", (["--help"], ["--version"])),
                                          (desk.zan, 2, "usage:", (["-q"], ["-x"], ["-x10", "-Z"])),
                                          (desk.zan, 1, "ZAN error: ", (["-s:9999"],)), (desk.zan + "-op", 2, "", bad)):
        for arguments in rows:
            done = subprocess.run([program, *arguments], env={"PATH": os.environ["PATH"]}, capture_output=True,
                                  text=True, check=False)
            assert done.returncode == status and done.stderr.startswith(begins), (arguments, done)
            assert ("usage:" in done.stderr, bool(done.stdout)) == (status == 2, status == 0), (arguments, done)
    assert os.path.isdir(desk.work) and not os.path.exists(desk.home + "/work"), "something was done"


def geometry_and_state(desk):
    app = desk.start("-x100", "-y", "120", "-w700", "-h", "500", desk.work)
    becomes(lambda: app.geometry()[2:], (700, 500), "the size asked for")
    place = app.geometry()
    assert abs(place[0] - 100) < 40 and abs(place[1] - 120) < 60, place  # the frame may take part of it
    app.keys("alt+g", "Left", "h")  # hides the hotlist pane
    app.end()
    app = desk.start(desk.work)
    becomes(lambda: app.geometry()[2:], (700, 500), "the saved size")
    app.end()
    assert words(desk, HEIGHT, WIDTH, SHOWN) == [500, 700, 0], words(desk, HEIGHT, WIDTH, SHOWN)
    app = desk.start("-Sm", desk.work)
    becomes(lambda: app.geometry()[2] > 1200, True, "a maximised window")
    app.end()
    app = desk.start("-Si", "-s" + desk.display, desk.work, env={"DISPLAY": ":9999", "QT_QPA_PLATFORM": None})
    app.shows(desk.work)
    state = desk.said("xprop", "-id", app.window(), "_NET_WM_STATE")
    assert "_NET_WM_STATE_HIDDEN" in state, f"it shows although iconified: {state}"
    app.end()


def without_standard_descriptors(desk):
    """Its messages must not go into what took the closed descriptors' place."""
    app = desk.start("-c", f"exec '{desk.zan}' '{desk.work}' <&- >&- 2>&-", program="/bin/sh")
    app.shows(desk.work)
    targets = [os.readlink(f"/proc/{app.pid}/fd/{number}") for number in range(3)]
    assert targets == ["/dev/null"] * 3, targets
    app.end()
    desk.make("file", "x" * 3000000)
    command = f"exec '{desk.zan}-op' copy --from . --to {desk.make('to/')} file <&- >&- 2>&-"
    assert subprocess.run(["/bin/sh", "-c", command], cwd=desk.work, check=False).returncode == 0
    assert read(os.path.join(desk.work, "to/file")) == "x" * 3000000


def settings_are_kept_unless_they_are_not_to_be(desk):
    desk.start(desk.work).end()
    assert os.stat(desk.settings).st_mode & 0o777 == 0o700, os.stat(desk.settings)
    texts = {name: read(os.path.join(desk.settings, name)) for name in listing(desk.settings) if name != "config.003"}
    assert texts == {"fspec.001": "*\n", "goto.001": "", "hotlist.001": "/\n", "pattern.001": ""}, texts
    assert words(desk, HEIGHT, WIDTH, FLAGS, SAVE, SHOWN) == [410, 600, 0xff000925, 1, 1], read(desk.record)
    with open(desk.record, "r+b") as record:
        record.seek(SAVE)
        record.write(bytes(4))
    visited, before = desk.make("visited/"), read(desk.record)
    app = desk.start("-w800", desk.work)
    app.go(visited)
    app.shows(visited)
    app.end()
    assert read(desk.record) == before, "the record was written"
    assert read(os.path.join(desk.settings, "goto.001")).startswith(visited + "\n")


def a_damaged_record_does_no_harm(desk):
    for content in (b"\xff" * SIZE, b"\0" * SIZE, os.urandom(3 * SIZE)):
        write(desk.record, content)
        desk.open(desk.work).end()


run([the_start_directory, answers_without_a_window, geometry_and_state, without_standard_descriptors,
     settings_are_kept_unless_they_are_not_to_be, a_damaged_record_does_no_harm])
