#!/usr/bin/env python3
"""Starting: the command line, the start directory, the settings directory's messages."""
import os
import subprocess
import sys

from harness import run, wait_for


def shows(app, path):
    wait_for(lambda: app.title() == "ZAN: " + path, f"a window on {path}, not {app.title()}")


def end(app):
    app.close()
    assert app.wait() == 0, app.errors()


def start_directory(desk):
    """Each row: working directory, arguments, the directory shown."""
    desk.make("docs/")
    desk.make("file", "x")
    desk.make("-odd/")
    docs, work = os.path.join(desk.work, "docs"), desk.work
    rows = [
        (work, [], work),
        (work, ["docs"], docs),
        (work, ["./docs/"], os.path.join(work, "./docs")),
        (docs, ["-x10", work], work),
        (work, ["-S", "n", docs], work),  # the scan knows nothing of option values: "n" is the first argument
        (work, [docs, "/usr"], docs),
        (work, ["nowhere"], work),
        (work, ["file"], work),
        (work, ["-odd"], None),
        (work, ["--", "docs"], docs),
        (work, ["-Sn", docs + "//"], docs),
    ]
    for cwd, arguments, path in rows:
        app = desk.start(*arguments, cwd=cwd, wait=path is not None)
        if path is None:
            assert app.wait() == 2 and app.errors().startswith("usage:"), app.errors()
            continue
        shows(app, path)
        assert os.getpgid(app.pid) == app.pid, "it leads no process group of its own"
        end(app)


def answers_without_a_window(desk):
    rows = [(["--help"], 0), (["--version"], 0), (["-q"], 2), (["--nonsense"], 2), (["-x"], 2), (["-x10", "-Z"], 2)]
    for arguments, status in rows:
        done = subprocess.run([desk.zan, *arguments], env={"PATH": os.environ["PATH"]}, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, check=False)
        assert done.returncode == status, (arguments, done.returncode)
        assert (done.stdout if status == 0 else done.stderr), arguments
        assert "usage:" in done.stderr or status == 0, done.stderr


def geometry_and_state(desk):
    app = desk.start("-x100", "-y", "120", "-w700", "-h", "500", desk.work)
    x, y, width, height = wait_for(lambda: app.geometry() if app.geometry()[2] == 700 else None, "a width of 700")
    assert (width, height) == (700, 500), (width, height)
    assert abs(x - 100) < 40 and abs(y - 120) < 60, (x, y)  # the frame may take part of it
    end(app)
    app = desk.start("-Sm", desk.work)
    wait_for(lambda: app.geometry()[2] > 1200, "a maximised window")
    end(app)
    app = desk.start("-Si", desk.work, wait=False)
    wait_for(lambda: app.windows(visible=False), "a window")
    assert not app.windows(), "it shows although iconified"
    app.close(app.windows(visible=False)[0])
    assert app.wait() == 0


def display_of_the_command_line(desk):
    app = desk.start("-s" + desk.display, desk.work, env={"DISPLAY": ":9999", "QT_QPA_PLATFORM": None})
    end(app)
    app = desk.start("-s:9999", desk.work, wait=False)
    assert app.wait() == 1, "no display is a failure, not a crash"
    assert app.errors().startswith("ZAN error: "), app.errors()


def settings_directory_messages(desk):
    create = "ZAN error: unable to create config directory {}\n"
    access = "ZAN error: unable to access config directory {}\n"
    bare = os.path.join(desk.root, "bare")
    os.makedirs(bare)
    blocked = os.path.join(desk.root, "blocked")
    os.makedirs(os.path.join(blocked, ".vr"))
    with open(os.path.join(blocked, ".vr", "zan"), "w", encoding="utf-8"):
        pass
    rows = [
        (bare, create.format(bare + "/.vr/zan")),
        (blocked, access.format(blocked + "/.vr/zan")),
        (desk.home, ""),
        (os.path.join(blocked, ".vr", "zan"), create.format(blocked + "/.vr/zan/.vr/zan")),
    ]
    for home, message in rows:
        app = desk.start(desk.work, env={"HOME": home})
        shows(app, desk.work)
        end(app)
        assert app.errors() == message, app.errors()
    assert not os.path.exists(os.path.join(bare, ".vr")), "something was saved"
    assert oct(os.stat(desk.settings).st_mode & 0o777) == "0o700"
    app = desk.start(desk.work, env={"HOME": None})
    end(app)
    assert app.errors() in ("", create.format("/.vr/zan")), app.errors()


def without_standard_descriptors(desk):
    """Its messages must not go into what took the closed descriptors' place."""
    bare = os.path.join(desk.root, "bare")
    os.makedirs(bare)
    app = desk.start("-c", f"exec '{desk.zan}' '{desk.work}' <&- >&- 2>&-", program="/bin/sh", env={"HOME": bare})
    shows(app, desk.work)
    for number in range(3):
        assert os.readlink(f"/proc/{app.pid}/fd/{number}") == "/dev/null", number
    end(app)
    desk.make("to/")
    desk.make("file", b"x" * 3000000)
    command = f"exec '{desk.zan}-op' copy --from . --to to file <&- >&- 2>&-"
    assert subprocess.run(["/bin/sh", "-c", command], cwd=desk.work, check=False).returncode == 0
    with open(os.path.join(desk.work, "to", "file"), "rb") as copy:
        assert copy.read() == b"x" * 3000000


def start_directory_that_vanishes(desk):
    gone = desk.make("gone/")
    app = desk.start(gone)
    shows(app, gone.rstrip("/"))
    os.rmdir(gone)
    app.keys("F5")
    app.keys("BackSpace")
    shows(app, desk.work)
    end(app)


if __name__ == "__main__":
    sys.exit(run([start_directory, answers_without_a_window, geometry_and_state, display_of_the_command_line,
                  settings_directory_messages, without_standard_descriptors, start_directory_that_vanishes]))
