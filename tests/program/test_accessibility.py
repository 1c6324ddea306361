#!/usr/bin/python3
"""What a screen reader finds: every control of the main window, a slot and each dialog has a name and a role."""
import os

from harness import run, skip, wait_for

# Controls that a user acts on; labels, panes and the like may be nameless.
ROLES = ("push button", "toggle button", "check box", "radio button", "combo box", "text", "password text",
         "spin button", "menu item", "check menu item", "menu", "list", "table", "tree", "tree table", "progress bar",
         "page tab", "dialog", "alert", "frame", "column header", "table column header", "button", "editable text")


def accessibility(desk):
    """The library that reads the tree, on a bus of the test's own."""
    try:
        import gi
        gi.require_version("Atspi", "2.0")
    except (ImportError, ValueError):
        skip("no python3-pyatspi")
    if not os.path.exists("/usr/share/dbus-1/services/org.a11y.Bus.service"):
        skip("no accessibility bus")
    desk.start_bus()
    desk.env.update(QT_LINUX_ACCESSIBILITY_ALWAYS_ON="1")
    del desk.env["NO_AT_BRIDGE"]
    os.environ.update({name: desk.env[name] for name in ("DBUS_SESSION_BUS_ADDRESS", "DISPLAY", "XDG_RUNTIME_DIR")})
    from gi.repository import Atspi
    return Atspi


def nodes(root):
    """root and everything below it; of a table's rows the first few stand for all."""
    if root is None:
        return
    yield root
    count = root.get_child_count()
    for i in range(min(count, 20) if root.get_role_name() in ("tree", "table", "tree table") else count):
        yield from nodes(root.get_child_at_index(i))


def check(atspi, program, what):
    controls, nameless = 0, []
    for node in nodes(program):
        states, role, parent = node.get_state_set(), node.get_role_name(), node.get_parent()
        silent = role in ("table cell", "label")  # an empty one has nothing to say
        line = role == "frame" and parent.get_role_name() != "application"
        control = role in ROLES or states.contains(atspi.StateType.FOCUSABLE)
        if not control or silent or line or not states.contains(atspi.StateType.SHOWING):
            continue
        controls += 1
        part = role == "text" and parent.get_role_name() in ("combo box", "spin button")
        if not node.get_name() and not (part and parent.get_name()):
            nameless.append(f"{role} in {parent.get_role_name()} '{parent.get_name()}'")
    assert controls >= 25, f"{what}: only {controls} controls found"
    assert not nameless, f"{what}: {len(nameless)} without a name: {sorted(set(nameless))}"


def every_control_has_a_name(desk):
    atspi = accessibility(desk)
    for name in ("a.txt", "b.txt", "folder/"):
        desk.make(name)
    app = desk.start(desk.work)
    desktop = atspi.get_desktop(0)
    program = wait_for(lambda: next((node for node in nodes(desktop) if node.get_name() == "zan"), None),
                       "the program on the accessibility bus")
    check(atspi, program, "main window")
    for key, title in (("F9", "Properties"), ("F10", "Preferences"), ("F11", ""), ("F3", "Create New File"),
                       ("F4", "Create New Folder"), ("ctrl+s", "Select Pattern"), ("F1", ""), ("Delete", "")):
        app.keys("ctrl+a", key)
        window = app.other_window(title)
        check(atspi, program, key)
        app.keys("Return" if key == "Delete" else "Escape", window=window)
        wait_for(lambda w=window: w not in app.windows(), f"the end of the window of {key}")
    app.other_window("File Operations")
    check(atspi, program, "slot")


run([every_control_has_a_name])
