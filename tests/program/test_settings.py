#!/usr/bin/env python3
"""What a run leaves in the settings directory, and what it makes of what it finds there."""
import os
import struct
import sys

from harness import run, wait_for

SIZE = 5692
WORDS = {"word0": 0, "cdirs": 4, "col1": 4616, "col2": 4620, "col3": 4624, "col4": 4628, "col5": 4632,
         "col6": 4636, "hotlist": 4640, "height": 4644, "width": 4648, "type_ahead": 4652, "flags": 4656,
         "save": 4660}
TEXTS = {"editor": (8, 2048), "print": (2056, 1024), "terminal": (3080, 1024), "tree_font": (4104, 255),
         "list_font": (4359, 255), "encoding": (4665, 1024)}


def record_of(desk):
    with open(os.path.join(desk.settings, "config.003"), "rb") as file:
        data = file.read()
    assert len(data) == SIZE, len(data)
    values = {name: struct.unpack_from("=I", data, offset)[0] for name, offset in WORDS.items()}
    values.update({name: data[at:at + size].split(b"\0")[0].decode() for name, (at, size) in TEXTS.items()})
    values["shown"] = data[4664]
    return values, data


def write(desk, name, data):
    os.makedirs(desk.settings, mode=0o700, exist_ok=True)
    with open(os.path.join(desk.settings, name), "wb") as file:
        file.write(data)


def read(desk, name):
    with open(os.path.join(desk.settings, name), "rb") as file:
        return file.read()


def run_once(desk, *arguments):
    app = desk.start(*(arguments or [desk.work]))
    app.close()
    assert app.wait() == 0, app.errors()
    return app


def a_fresh_run_saves_the_defaults(desk):
    run_once(desk)
    values, data = record_of(desk)
    assert values == {
        "word0": 1, "cdirs": 0, "editor": "kored @", "print": "lpr @", "terminal": "conwin",
        "tree_font": "TextFont08", "list_font": "TextFont08", "col1": 125, "col2": 50, "col3": 105, "col4": 53,
        "col5": 53, "col6": 75, "hotlist": 190, "height": 410, "width": 600, "type_ahead": 1500,
        "flags": 0xff000925, "save": 1, "shown": 1, "encoding": ""}, values
    assert data[4614:4616] == b"\0\0" and data[5689:] == b"\0\0\0"
    assert sorted(os.listdir(desk.settings)) == ["config.003", "fspec.001", "goto.001", "hotlist.001",
                                                "pattern.001"], os.listdir(desk.settings)
    assert read(desk, "hotlist.001") == b"/\n"
    assert read(desk, "fspec.001") == b"*\n"


def sizes_come_back(desk):
    run_once(desk, "-w777", "-h444", desk.work)
    values, _ = record_of(desk)
    assert (values["width"], values["height"]) == (777, 444), values
    app = desk.start(desk.work)
    wait_for(lambda: app.geometry()[2:] == (777, 444), f"the saved size, not {app.geometry()}")
    app.close()
    assert app.wait() == 0
    again, _ = record_of(desk)
    assert again == values, "a second run changes nothing"


def flag_words_of_other_versions(desk):
    """Each row: the flag word found, the one kept."""
    run_once(desk)
    _, data = record_of(desk)
    for found, kept in [(0, 0xff000924), (0x1, 0xff000925), (0x924, 0xff000925), (0xff000010, 0xff000010),
                        (0xfe000010, 0xff000925)]:
        changed = bytearray(data)
        struct.pack_into("=I", changed, 4656, found)
        changed[8:14] = b"vi @\0\0"
        write(desk, "config.003", bytes(changed))
        run_once(desk)
        values, _ = record_of(desk)
        assert values["flags"] == kept, (hex(found), hex(values["flags"]))
        assert values["editor"] == "vi @", "the other fields stay"


def damaged_files_do_no_harm(desk):
    odd = os.urandom(SIZE)
    rows = {"config.003": [b"", b"x", b"\xff" * (SIZE - 1), b"\xff" * SIZE, b"\0" * SIZE, odd, odd * 3],
            "goto.001": [b"\0" * 5000, b"/a" * 4000, b"\n" * 300, os.urandom(3000)],
            "hotlist.001": [b"", b"\0" * 3000, b"/x" * 3000, os.urandom(3000)],
            "fspec.001": [b"[\n", os.urandom(500)]}
    for name, contents in rows.items():
        for content in contents:
            write(desk, name, content)
            app = desk.start(desk.work)
            wait_for(lambda: app.title().startswith("ZAN: "), "a title")
            app.close()
            assert app.wait() == 0, (name, content[:20], app.errors())
        os.unlink(os.path.join(desk.settings, name))
    record_of(desk)


def save_on_exit_off_keeps_the_record_only(desk):
    run_once(desk)
    _, data = record_of(desk)
    changed = bytearray(data)
    struct.pack_into("=I", changed, 4660, 0)
    write(desk, "config.003", bytes(changed))
    desk.make("visited/")
    app = desk.start("-w800", desk.work)
    app.keys("alt+p", "ctrl+a")
    app.type(os.path.join(desk.work, "visited"))
    app.keys("Return")
    wait_for(lambda: app.title().endswith("visited"), "the typed directory")
    app.close()
    assert app.wait() == 0
    assert record_of(desk)[1] == bytes(changed)
    assert read(desk, "goto.001").decode().splitlines()[0] == os.path.join(desk.work, "visited")


def histories_load_twenty_lines(desk):
    lines = [f"/tmp/{n}" for n in range(21)]
    for name in ("goto.001", "with.001", "copy.001"):
        write(desk, name, ("\n".join(lines) + "\n").encode())
    run_once(desk)
    assert read(desk, "goto.001").decode().splitlines() == lines[:20]
    for name in ("with.001", "copy.001"):
        assert read(desk, name).decode().splitlines() == lines, "never written back"


def hidden_hotlist_pane_stays_hidden(desk):
    run_once(desk)
    app = desk.start(desk.work)
    app.keys("alt+g", "Left", "h")
    app.close()
    assert app.wait() == 0
    assert record_of(desk)[0]["shown"] == 0
    run_once(desk)
    values, _ = record_of(desk)
    assert (values["shown"], values["hotlist"]) == (0, 190), values


if __name__ == "__main__":
    sys.exit(run([a_fresh_run_saves_the_defaults, sizes_come_back, flag_words_of_other_versions,
                  damaged_files_do_no_harm, save_on_exit_off_keeps_the_record_only, histories_load_twenty_lines,
                  hidden_hotlist_pane_stays_hidden]))
