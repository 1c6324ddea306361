#!/usr/bin/env python3
"""Starting: the command line, the start directory, the display; and the settings that a run leaves behind for the next."""
import os
import struct
import subprocess
import sys

from harness import becomes, listing, read, run, write

SIZE, HEIGHT, WIDTH, FLAGS, SAVE, SHOWN = 5692, 4644, 4648, 4656, 4660, 4664  # of the settings record, and offsets


def words(desk, *offsets):
    """These words of the settings record."""
    with open(desk.record, "rb") as record:
        data = record.read()
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
    for arguments, status in ((["--help"], 0), (["--version"], 0), (["-q"], 2), (["-x"], 2), (["-x10", "-Z"], 2),
                              (["-s:9999"], 1)):
        done = subprocess.run([desk.zan, *arguments], env={"PATH": os.environ["PATH"]}, capture_output=True,
                              text=True, check=False)
        begins = {0: "", 1: "ZAN error: ", 2: "usage:"}[status]
        assert done.returncode == status and done.stderr.startswith(begins), (arguments, done)
        assert bool(done.stdout) == (status == 0), (arguments, done)


def geometry_and_state(desk):
    app = desk.start("-x100", "-y", "120", "-w700", "-h", "500", desk.work)
    becomes(lambda: app.geometry()[2:], (700, 500), "the size asked for")
    x, y, _, _ = app.geometry()
    assert abs(x - 100) < 40 and abs(y - 120) < 60, (x, y)  # the frame may take part of it
    app.keys("alt+g", "Left", "h")  # hides the hotlist pane
    app.end()
    app = desk.start(desk.work)
    becomes(lambda: app.geometry()[2:], (700, 500), "the saved size")
    app.end()
    height, width, shown = words(desk, HEIGHT, WIDTH, SHOWN)
    assert (height, width, shown & 0xff) == (500, 700, 0), (height, width, shown)
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
    files = ["config.003", "fspec.001", "goto.001", "hotlist.001", "pattern.001"]
    assert listing(desk.settings) == files and os.stat(desk.settings).st_mode & 0o777 == 0o700, listing(desk.settings)
    assert [read(os.path.join(desk.settings, name)) for name in ("hotlist.001", "fspec.001")] == ["/\n", "*\n"]
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


def damaged_files_do_no_harm(desk):
    rows = {"config.003": (b"", b"\xff" * SIZE, b"\0" * SIZE, os.urandom(3 * SIZE)),
            "goto.001": (b"\0" * 5000, b"/a" * 4000, b"\n" * 300, os.urandom(3000)),
            "hotlist.001": (b"", b"\0" * 3000, b"/x" * 3000, os.urandom(3000)),
            "fspec.001": (b"[\n", b"\n", b"*", os.urandom(500))}
    for number in range(4):
        for name, contents in rows.items():
            write(os.path.join(desk.settings, name), contents[number])
        app = desk.start(desk.work)
        app.shows(desk.work)
        app.end()


sys.exit(run([the_start_directory, answers_without_a_window, geometry_and_state, without_standard_descriptors,
              settings_are_kept_unless_they_are_not_to_be, damaged_files_do_no_harm]))
