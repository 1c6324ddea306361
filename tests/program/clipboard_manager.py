#!/usr/bin/env python3
"""A clipboard manager of the kind that desktops run: asked by a program that ends (SAVE_TARGETS), it takes over
every form of the clipboard's content and serves it from then on. Prints "ready" once it can be asked. Contents
that need to come in portions are not supported.
"""
import ctypes
import sys

x11 = ctypes.CDLL("libX11.so.6")
ulong, c_int, pointer = ctypes.c_ulong, ctypes.c_int, ctypes.c_void_p
for name, result in (("XOpenDisplay", pointer), ("XInternAtom", ulong), ("XCreateSimpleWindow", ulong),
                     ("XDefaultRootWindow", ulong)):
    getattr(x11, name).restype = result

SELECTION_REQUEST, SELECTION_NOTIFY, REPLACE, ANY = 30, 31, 0, 0


class Request(ctypes.Structure):
    _fields_ = [("type", c_int), ("serial", ulong), ("send_event", c_int), ("display", pointer), ("owner", ulong),
                ("requestor", ulong), ("selection", ulong), ("target", ulong), ("property", ulong), ("time", ulong)]


class Notify(ctypes.Structure):
    _fields_ = [("type", c_int), ("serial", ulong), ("send_event", c_int), ("display", pointer),
                ("requestor", ulong), ("selection", ulong), ("target", ulong), ("property", ulong), ("time", ulong)]


class Event(ctypes.Union):
    _fields_ = [("type", c_int), ("request", Request), ("notify", Notify), ("pad", ctypes.c_long * 24)]


display = pointer(x11.XOpenDisplay(None))
window = ulong(x11.XCreateSimpleWindow(display, ulong(x11.XDefaultRootWindow(display)), 0, 0, 1, 1, 0, ulong(0), ulong(0)))


def atom(name):
    return x11.XInternAtom(display, name.encode(), 0)


CLIPBOARD, MANAGER, TARGETS = atom("CLIPBOARD"), atom("CLIPBOARD_MANAGER"), atom("TARGETS")
SAVE, ATOM, HERE = atom("SAVE_TARGETS"), atom("ATOM"), atom("ZAN_TEST_TRANSFER")
NOT_CONTENT = {TARGETS, SAVE, atom("MULTIPLE"), atom("TIMESTAMP"), atom("DELETE")}
saved, waiting = {}, []


def next_event(wanted=None):
    event = Event()
    while True:
        if waiting and wanted is None:
            return waiting.pop(0)
        x11.XNextEvent(display, ctypes.byref(event))
        if wanted in (None, event.type):
            return event
        kept = Event()
        ctypes.memmove(ctypes.byref(kept), ctypes.byref(event), ctypes.sizeof(Event))
        waiting.append(kept)


def fetch(target):
    """(type, format, bytes as Xlib holds them, number of items), or None."""
    x11.XConvertSelection(display, ulong(CLIPBOARD), ulong(target), ulong(HERE), window, ulong(0))
    if next_event(SELECTION_NOTIFY).notify.property == 0:
        return None
    kind, form, items, after, data = ulong(), c_int(), ulong(), ulong(), pointer()
    x11.XGetWindowProperty(display, window, ulong(HERE), ctypes.c_long(0), ctypes.c_long(1 << 24), 1, ulong(ANY),
                           ctypes.byref(kind), ctypes.byref(form), ctypes.byref(items), ctypes.byref(after),
                           ctypes.byref(data))
    size = items.value * {8: 1, 16: 2, 32: 8}.get(form.value, 0)
    content = ctypes.string_at(data, size) if data else b""
    return kind.value, form.value, content, items.value


def take_over():
    found = fetch(TARGETS)
    targets = (ulong * found[3]).from_buffer_copy(found[2]) if found else []
    for target in targets:
        if target not in NOT_CONTENT:
            content = fetch(target)
            if content:
                saved[target] = content
    x11.XSetSelectionOwner(display, ulong(CLIPBOARD), window, ulong(0))


def answer(request):
    put = request.property
    if request.target == SAVE and request.selection == MANAGER:
        take_over()
    elif request.target == TARGETS:
        atoms = (ulong * len(saved))(*saved)
        x11.XChangeProperty(display, ulong(request.requestor), ulong(put), ulong(ATOM), 32, REPLACE, atoms, len(saved))
    elif request.target in saved:
        kind, form, content, items = saved[request.target]
        x11.XChangeProperty(display, ulong(request.requestor), ulong(put), ulong(kind), form, REPLACE, content, items)
    else:
        put = 0
    event = Event(notify=Notify(SELECTION_NOTIFY, 0, 0, display, request.requestor, request.selection,
                                request.target, put, request.time))
    x11.XSendEvent(display, ulong(request.requestor), 0, ctypes.c_long(0), ctypes.byref(event))
    x11.XFlush(display)


x11.XSetSelectionOwner(display, ulong(MANAGER), window, ulong(0))
x11.XSync(display, 0)
print("ready", flush=True)
while True:
    got = next_event()
    if got.type == SELECTION_REQUEST:
        request = Request.from_buffer_copy(got.request)
        answer(request)
    sys.stdout.flush()
