#!/usr/bin/python3
"""What a screen reader finds: every control of the main window, an operation's slot and each dialog has a name
and a role. Walks the accessibility tree of the running program."""
import os
import subprocess
import sys
import time

from harness import SKIP, run, wait_for

LAUNCHERS = ("/usr/libexec/at-spi-bus-launcher", "/usr/lib/at-spi2-core/at-spi-bus-launcher")
# Controls that a user acts on; labels, panes and the like may be nameless.
ROLES = ("push button", "toggle button", "check box", "radio button", "combo box", "text", "password text", "spin button",
         "menu item", "check menu item", "menu", "list", "table", "tree", "tree table", "progress bar", "page tab",
         "dialog", "alert", "frame", "column header", "table column header", "button", "editable text")


def start_bus(desk):
    launcher = next((path for path in LAUNCHERS if os.path.exists(path)), None)
    try:
        import gi  # noqa: F401
        gi.require_version("Atspi", "2.0")
    except (ImportError, ValueError):
        launcher = None
    if not launcher:
        print("skipped: no accessibility bus or no python3-pyatspi")
        sys.exit(SKIP)
    daemon = subprocess.Popen(["dbus-daemon", "--session", "--nofork", "--print-address"], env=desk.env,
                              stdout=subprocess.PIPE, text=True)
    address = daemon.stdout.readline().strip()
    desk.env.update(DBUS_SESSION_BUS_ADDRESS=address, QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
    desk.env.pop("NO_AT_BRIDGE", None)
    os.environ.update(DBUS_SESSION_BUS_ADDRESS=address, DISPLAY=desk.display, XDG_RUNTIME_DIR=desk.root)
    subprocess.Popen([launcher, "--launch-immediately"], env=desk.env, stdout=subprocess.DEVNULL,
                     stderr=subprocess.DEVNULL)
    time.sleep(1)


def nodes(root, depth=0):
    """Everything below root that is shown, as (path, role, name, states)."""
    from gi.repository import Atspi
    if root is None or depth > 40:
        return
    try:
        states = root.get_state_set()
        yield root, root.get_role_name(), root.get_name(), states
        if states.contains(Atspi.StateType.MANAGES_DESCENDANTS) or root.get_role_name() in ("tree", "table", "tree table"):
            count = min(root.get_child_count(), 20)  # rows: the first few stand for all
        else:
            count = root.get_child_count()
        for i in range(count):
            yield from nodes(root.get_child_at_index(i), depth + 1)
    except Exception as error:  # noqa: BLE001 - a window that closed while it was read
        if "not exist" not in str(error) and "no longer" not in str(error):
            raise


def application():
    from gi.repository import Atspi
    root = Atspi.get_desktop(0)
    for i in range(root.get_child_count()):
        child = root.get_child_at_index(i)
        if child is not None and child.get_name() == "zan":
            return child
    return None


def check(app_node, what, at_least):
    from gi.repository import Atspi
    controls, nameless = 0, []
    for node, role, name, states in nodes(app_node):
        if role not in ROLES and not states.contains(Atspi.StateType.FOCUSABLE):
            continue
        if not states.contains(Atspi.StateType.SHOWING) or role in ("table cell", "label"):
            continue  # a cell or a value that is empty has nothing to say
        if role == "frame" and node.get_parent().get_role_name() != "application":
            continue  # a line or a box around controls
        controls += 1
        if not name and not (role == "text" and node.get_parent().get_role_name() in ("combo box", "spin button")
                             and node.get_parent().get_name()):
            parent = node.get_parent()
            nameless.append(f"{role} in {parent.get_role_name() if parent else '?'} "
                            f"'{parent.get_name() if parent else ''}'")
    assert controls >= at_least, f"{what}: only {controls} controls found"
    assert not nameless, f"{what}: {len(nameless)} without a name: {sorted(set(nameless))}"


def every_control_has_a_name(desk):
    start_bus(desk)
    for name in ("a.txt", "b.txt", "folder/"):
        desk.make(name)
    app = desk.start(desk.work)
    node = wait_for(application, "the program on the accessibility bus")
    check(node, "main window", 25)
    app.keys("ctrl+a")
    for key, title in (("F9", ""), ("F10", "Preferences"), ("F11", ""), ("F3", "Create New File"), ("F4", "Create New Folder"),
                       ("ctrl+s", "Select Pattern"), ("F1", "")):
        before = set(app.windows())
        app.keys(key)
        window = wait_for(lambda known=before: [w for w in app.windows() if w not in known], f"the window of {key}")[0]
        time.sleep(0.3)
        check(node, f"{key} {title}", 25)
        app.keys("Escape", window=window)
        wait_for(lambda w=window: w not in app.windows(), f"the end of the window of {key}")
    app.keys("ctrl+a")
    before = set(app.windows())
    app.keys("Delete")  # a question, then a slot with its own
    question = wait_for(lambda: [w for w in app.windows() if w not in before], "the question")[0]
    check(node, "delete question", 25)
    app.keys("Return", window=question)
    wait_for(lambda: any("File Operations" in app.title(w) for w in app.windows()), "the slots window")
    check(node, "slot", 25)


sys.exit(run([every_control_has_a_name]))
