#!/usr/bin/env python3
"""What a run leaves in the settings directory, and what it makes of what it finds there."""
import os
import struct
import sys

from harness import read, run, wait_for

SIZE, HEIGHT, WIDTH, FLAGS, SAVE, SHOWN = 5692, 4644, 4648, 4656, 4660, 4664


def word(desk, offset, value=None):
    """That word of the settings record, after it was set where a value is given."""
    with open(desk.record, "r+b") as file:
        data = bytearray(file.read())
        assert len(data) == SIZE, len(data)
        if value is not None:
            struct.pack_into("=I", data, offset, value)
            file.seek(0)
            file.write(data)
    return struct.unpack_from("=I", data, offset)[0]


def a_fresh_run_saves_what_it_was_set_to(desk):
    desk.start(desk.work).end()
    names = ["config.003", "fspec.001", "goto.001", "hotlist.001", "pattern.001"]
    assert sorted(os.listdir(desk.settings)) == names, os.listdir(desk.settings)
    assert os.stat(desk.settings).st_mode & 0o777 == 0o700, os.stat(desk.settings)
    found = [word(desk, at) for at in (HEIGHT, WIDTH, FLAGS, SAVE)] + [word(desk, SHOWN) & 0xff]
    assert found == [410, 600, 0xff000925, 1, 1], found
    assert [read(os.path.join(desk.settings, name)) for name in ("hotlist.001", "fspec.001")] == ["/\n", "*\n"]
    app = desk.start("-w777", "-h444", desk.work)
    app.keys("alt+g", "Left", "h")  # hides the hotlist pane
    app.end()
    app = desk.start(desk.work)
    wait_for(lambda: app.geometry()[2:] == (777, 444), lambda: f"the saved size, not {app.geometry()}")
    app.end()
    found = [word(desk, WIDTH), word(desk, HEIGHT), word(desk, SHOWN) & 0xff]
    assert found == [777, 444, 0], found


def save_on_exit_off_keeps_the_record_only(desk):
    desk.start(desk.work).end()
    word(desk, SAVE, 0)
    visited, before = desk.make("visited/"), read(desk.record)
    app = desk.start("-w800", desk.work)
    app.keys("alt+p", "ctrl+a")
    app.type(visited)
    app.keys("Return")
    app.shows(visited)
    app.end()
    assert read(desk.record) == before, "the record was written"
    assert read(os.path.join(desk.settings, "goto.001")).startswith(visited + "\n")


def damaged_files_do_no_harm(desk):
    rows = {"config.003": (b"", b"\xff" * SIZE, b"\0" * SIZE, os.urandom(3 * SIZE)),
            "goto.001": (b"\0" * 5000, b"/a" * 4000, b"\n" * 300, os.urandom(3000)),
            "hotlist.001": (b"", b"\0" * 3000, b"/x" * 3000, os.urandom(3000)),
            "fspec.001": (b"[\n", b"\n", b"*", os.urandom(500))}
    os.makedirs(desk.settings)
    for number in range(4):
        for name, contents in rows.items():
            with open(os.path.join(desk.settings, name), "wb") as file:
                file.write(contents[number])
        app = desk.start(desk.work)
        app.shows(desk.work)
        app.end()


sys.exit(run([a_fresh_run_saves_what_it_was_set_to, save_on_exit_off_keeps_the_record_only, damaged_files_do_no_harm]))
