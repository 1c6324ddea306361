#!/usr/bin/python3
"""A clipboard manager: asked by a program that ends (SAVE_TARGETS), it takes over every form of the clipboard's content
and serves it from then on. Prints "ready" once it can be asked. Contents that come in portions are not supported."""
from Xlib import X, Xatom, display
from Xlib.protocol import event

connection = display.Display()
window = connection.screen().root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
CLIPBOARD, MANAGER, HERE, TARGETS, SAVE, *NO_CONTENT = map(connection.intern_atom, (
    "CLIPBOARD", "CLIPBOARD_MANAGER", "ZAN_TRANSFER", "TARGETS", "SAVE_TARGETS", "MULTIPLE", "TIMESTAMP", "DELETE"))
saved = {}  # the type, the format and the value of each form


def fetch(target):
    """What the clipboard's owner gives in that form, or None."""
    window.convert_selection(CLIPBOARD, target, HERE, X.CurrentTime)
    while True:
        got = connection.next_event()
        if got.type == X.SelectionNotify:
            return got.property and window.get_full_property(HERE, X.AnyPropertyType)


def take_over():
    for target in fetch(TARGETS).value:
        content = None if target in (TARGETS, SAVE, *NO_CONTENT) else fetch(target)
        if content:
            saved[target] = (content.property_type, content.format, content.value)
    saved[TARGETS] = (Xatom.ATOM, 32, list(saved))
    window.set_selection_owner(CLIPBOARD, X.CurrentTime)


window.set_selection_owner(MANAGER, X.CurrentTime)
connection.sync()
print("ready", flush=True)
while True:
    asked = connection.next_event()
    if asked.type != X.SelectionRequest:
        continue
    if asked.target == SAVE:
        take_over()
    elif asked.target in saved:
        asked.requestor.change_property(asked.property, *saved[asked.target])
    put = asked.property if asked.target == SAVE or asked.target in saved else X.NONE
    asked.requestor.send_event(event.SelectionNotify(time=asked.time, requestor=asked.requestor, property=put,
                                                     selection=asked.selection, target=asked.target))
    connection.flush()
