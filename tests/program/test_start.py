#!/usr/bin/env python3
"""Starting: the command line, the start directory, the display."""
import os
import subprocess
import sys

from harness import run, wait_for


def the_start_directory(desk):
    """Each row: working directory, arguments, the directory shown."""
    docs, work = desk.make("docs/"), desk.work
    for cwd, arguments, path in ((work, [], work), (work, ["./docs/"], work + "/./docs"), (docs, ["-x10", work], work),
                                 (work, ["nowhere"], work), (work, ["--", "docs"], docs)):
        app = desk.start(*arguments, cwd=cwd)
        app.shows(path)
        assert os.getpgid(app.pid) == app.pid, "it leads no process group of its own"
        app.end()
    os.rmdir(docs)  # vanishes while it is shown
    app = desk.start(desk.make("docs/"))
    app.shows(docs)
    os.rmdir(docs)
    app.keys("F5", "BackSpace")
    app.shows(work)
    app.end()


def answers_without_a_window(desk):
    for arguments, status in ((["--help"], 0), (["--version"], 0), (["-q"], 2), (["-x"], 2), (["-x10", "-Z"], 2),
                              (["-s:9999"], 1)):
        done = subprocess.run([desk.zan, *arguments], env={"PATH": os.environ["PATH"]}, stdout=subprocess.PIPE,
                              stderr=subprocess.PIPE, text=True, check=False)
        begins = {0: "", 1: "ZAN error: ", 2: "usage:"}[status]
        assert done.returncode == status and done.stderr.startswith(begins), (arguments, done)
        assert bool(done.stdout) == (status == 0), (arguments, done)


def geometry_and_state(desk):
    app = desk.start("-x100", "-y", "120", "-w700", "-h", "500", desk.work)
    wait_for(lambda: app.geometry()[2:] == (700, 500), lambda: f"the size asked for, not {app.geometry()}")
    x, y, _, _ = app.geometry()
    assert abs(x - 100) < 40 and abs(y - 120) < 60, (x, y)  # the frame may take part of it
    app.end()
    app = desk.start("-Sm", desk.work)
    wait_for(lambda: app.geometry()[2] > 1200, lambda: f"a maximised window, not {app.geometry()}")
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
    content = b"x" * 3000000
    desk.make("file", content)
    command = f"exec '{desk.zan}-op' copy --from . --to {desk.make('to/')} file <&- >&- 2>&-"
    assert subprocess.run(["/bin/sh", "-c", command], cwd=desk.work, check=False).returncode == 0
    with open(os.path.join(desk.work, "to", "file"), "rb") as copy:
        assert copy.read() == content


sys.exit(run([the_start_directory, answers_without_a_window, geometry_and_state, without_standard_descriptors]))
