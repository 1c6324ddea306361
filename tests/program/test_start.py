#!/usr/bin/env python3
"""Starting: a window comes up, and closing it ends the program with status 0."""
import sys

from harness import run


def opens_a_window_and_ends_with_it(desk):
    app = desk.start(desk.work)
    assert app.windows(), "no window"
    app.close()
    assert app.wait() == 0, app.errors()


if __name__ == "__main__":
    sys.exit(run([opens_a_window_and_ends_with_it]))
