#!/usr/bin/python3
"""A clipboard manager of the kind that desktops run: asked by a program that ends (SAVE_TARGETS), it takes over
every form of the clipboard's content and serves it from then on. Prints "ready" once it can be asked. Contents
that need to come in portions are not supported."""
from Xlib import X, display
from Xlib.protocol import event

connection = display.Display()
window = connection.screen().root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
atom = connection.intern_atom
CLIPBOARD, TARGETS, SAVE, ATOM, HERE = map(atom, ("CLIPBOARD", "TARGETS", "SAVE_TARGETS", "ATOM", "ZAN_TEST_TRANSFER"))
NOT_CONTENT = {TARGETS, SAVE, *map(atom, ("MULTIPLE", "TIMESTAMP", "DELETE"))}
saved = {}


def fetch(target):
    """What the clipboard's owner gives in that form, or None."""
    window.convert_selection(CLIPBOARD, target, HERE, X.CurrentTime)
    while True:
        got = connection.next_event()
        if got.type == X.SelectionNotify:
            return got.property and window.get_full_property(HERE, X.AnyPropertyType)


def take_over():
    targets = fetch(TARGETS)
    for target in targets.value if targets else []:
        content = None if target in NOT_CONTENT else fetch(target)
        if content:
            saved[target] = (content.property_type, content.format, content.value)
    window.set_selection_owner(CLIPBOARD, X.CurrentTime)


def answer(request):
    put = request.property
    if request.target == SAVE:
        take_over()
    elif request.target == TARGETS:
        request.requestor.change_property(put, ATOM, 32, list(saved))
    elif request.target in saved:
        request.requestor.change_property(put, *saved[request.target])
    else:
        put = X.NONE
    request.requestor.send_event(event.SelectionNotify(time=request.time, requestor=request.requestor, property=put,
                                                       selection=request.selection, target=request.target))
    connection.flush()


window.set_selection_owner(atom("CLIPBOARD_MANAGER"), X.CurrentTime)
connection.sync()
print("ready", flush=True)
while True:
    asked = connection.next_event()
    if asked.type == X.SelectionRequest:
        answer(asked)
