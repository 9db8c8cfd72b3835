# SPDX-License-Identifier: GPL-3.0-or-later
"""A client of an X server: pictures, windows, mouse and keyboard, quick enough to look many times a second."""

import ctypes
from ctypes import POINTER, byref, c_char_p, c_int, c_long, c_ubyte, c_uint, c_ulong, c_void_p

from .picture import Box, Picture

_ALL_PLANES = 0xFFFFFFFF
_Z_PIXMAP = 2
_VIEWABLE = 2
_CLIENT_MESSAGE = 33
_PROPERTY_CHANGE_MASK = 1 << 22


class _Image(ctypes.Structure):
    _fields_ = [("width", c_int), ("height", c_int), ("xoffset", c_int), ("format", c_int), ("data", c_void_p),
                ("byte_order", c_int), ("bitmap_unit", c_int), ("bitmap_bit_order", c_int), ("bitmap_pad", c_int),
                ("depth", c_int), ("bytes_per_line", c_int), ("bits_per_pixel", c_int)]


class _Attributes(ctypes.Structure):
    _fields_ = [("x", c_int), ("y", c_int), ("width", c_int), ("height", c_int), ("border_width", c_int),
                ("depth", c_int), ("visual", c_void_p), ("root", c_ulong), ("window_class", c_int),
                ("bit_gravity", c_int), ("win_gravity", c_int), ("backing_store", c_int), ("backing_planes", c_ulong),
                ("backing_pixel", c_ulong), ("save_under", c_int), ("colormap", c_ulong), ("map_installed", c_int),
                ("map_state", c_int), ("all_event_masks", c_long), ("your_event_mask", c_long),
                ("do_not_propagate_mask", c_long), ("override_redirect", c_int), ("screen", c_void_p)]


class _Message(ctypes.Structure):
    _fields_ = [("type", c_int), ("serial", c_ulong), ("send_event", c_int), ("display", c_void_p),
                ("window", c_ulong), ("message_type", c_ulong), ("format", c_int), ("data", c_long * 5)]


class _Event(ctypes.Union):
    _fields_ = [("message", _Message), ("room", c_long * 24)]


class _ClassHint(ctypes.Structure):
    _fields_ = [("name", c_void_p), ("kind", c_void_p)]


_ErrorHandler = ctypes.CFUNCTYPE(c_int, c_void_p, c_void_p)


@_ErrorHandler
def _ignore_error(_display, _event):
    """A window may be gone before it is asked about."""
    return 0


class Window:
    """A window that could be seen, at the place where it was then."""

    def __init__(self, identity, title, kind, box):
        self.identity = identity
        self.title = title
        self.kind = kind
        self.box = box

    def __repr__(self):
        return f"<{self.identity:#x} {self.title!r} {self.kind} {tuple(self.box)}>"


class XServer:
    """A connection to the server at `name`. Main thread only."""

    def __init__(self, name):
        self._x = ctypes.CDLL("libX11.so.6")
        self._test = ctypes.CDLL("libXtst.so.6")
        self._parts = {}
        self._declare()
        self._x.XSetErrorHandler(_ignore_error)
        self._display = self._x.XOpenDisplay(name.encode())
        if not self._display:
            raise RuntimeError(f"no X server at {name}")
        self._root = self._x.XDefaultRootWindow(self._display)
        screen = self._x.XDefaultScreen(self._display)
        self.width = self._x.XDisplayWidth(self._display, screen)
        self.height = self._x.XDisplayHeight(self._display, screen)

    def close(self):
        """Leave it."""
        if self._display:
            self._x.XCloseDisplay(self._display)
            self._display = None

    def picture(self, box=None):
        """A part of the screen, or all of it."""
        box = box or Box(0, 0, self.width, self.height)
        image = self._x.XGetImage(self._display, self._root, *box, _ALL_PLANES, _Z_PIXMAP)
        if not image:
            raise RuntimeError(f"no picture of {box}")
        try:
            told = image.contents
            if told.bits_per_pixel != 32 or told.bytes_per_line != box.width * 4:
                raise RuntimeError("not a screen of four bytes a pixel")
            raw = ctypes.string_at(told.data, told.bytes_per_line * box.height)
        finally:
            self._x.XDestroyImage(image)
        data = bytearray(box.width * box.height * 3)
        data[0::3], data[1::3], data[2::3] = raw[2::4], raw[1::4], raw[0::4]
        return Picture(box.width, box.height, bytes(data))

    def windows(self):
        """Every window with a title or a class that can be seen, as `Window`; the uppermost last."""
        found = []
        self._collect(self._root, found)
        return found

    def manager_is_there(self):
        """Whether a window manager has taken the screen."""
        atom = self._x.XInternAtom(self._display, b"_NET_SUPPORTING_WM_CHECK", 0)
        kind, size, count, rest, data = c_ulong(), c_int(), c_ulong(), c_ulong(), c_void_p()
        self._x.XGetWindowProperty(self._display, self._root, atom, 0, 1, 0, 0, byref(kind), byref(size), byref(count),
                                   byref(rest), byref(data))
        if data:
            self._x.XFree(data)
        return count.value == 1

    def has_old_tray(self):
        """Whether somebody takes icons in the old way."""
        atom = self._x.XInternAtom(self._display, b"_NET_SYSTEM_TRAY_S0", 0)
        return self._x.XGetSelectionOwner(self._display, atom) != 0

    def listen_to_starts(self):
        """Note from now on what programs tell about how far they are with being started."""
        self._x.XSelectInput(self._display, self._root, _PROPERTY_CHANGE_MASK)
        self._x.XSync(self._display, 0)

    def told_of_starts(self):
        """What has been told since; each as one text, for example "remove: ID=..."."""
        texts = []
        event = _Event()
        while self._x.XPending(self._display):
            self._x.XNextEvent(self._display, byref(event))
            if event.message.type != _CLIENT_MESSAGE or event.message.format != 8:
                continue
            text = self._parts.pop(event.message.window, b"") + bytes(event.message.data)[:20]
            if b"\0" in text:
                texts.append(text.partition(b"\0")[0].decode("utf-8", "replace"))
            else:
                self._parts[event.message.window] = text
        return texts

    def active_window(self):
        """The window that has the keyboard."""
        window, revert = c_ulong(), c_int()
        self._x.XGetInputFocus(self._display, byref(window), byref(revert))
        return window.value

    def move(self, x, y):
        """Move the pointer, in two steps so that every program notices."""
        for left in (x - 1, x):
            self._test.XTestFakeMotionEvent(self._display, -1, left, y, 0)
            self._x.XSync(self._display, 0)

    def press(self, button):
        """Press and release a button of the mouse where the pointer is."""
        for down in (1, 0):
            self._test.XTestFakeButtonEvent(self._display, button, down, 0)
            self._x.XSync(self._display, 0)

    def key(self, name):
        """Press and release a key, by itself or with others held, as in "ctrl+q"."""
        codes = [self._code({"ctrl": "Control_L", "shift": "Shift_L", "alt": "Alt_L"}.get(part, part))
                 for part in name.split("+")]
        for down, code in [(1, code) for code in codes] + [(0, code) for code in reversed(codes)]:
            self._test.XTestFakeKeyEvent(self._display, code, down, 0)
            self._x.XSync(self._display, 0)

    def _code(self, name):
        symbol = self._x.XStringToKeysym(name.encode())
        code = self._x.XKeysymToKeycode(self._display, symbol) if symbol else 0
        if code == 0:
            raise ValueError(f"no key {name}")
        return code

    def _collect(self, parent, found):
        root, above, children, count = c_ulong(), c_ulong(), POINTER(c_ulong)(), c_uint()
        if not self._x.XQueryTree(self._display, parent, byref(root), byref(above), byref(children), byref(count)):
            return
        identities = children[:count.value]
        if children:
            self._x.XFree(children)
        for identity in identities:
            attributes = _Attributes()
            if not self._x.XGetWindowAttributes(self._display, identity, byref(attributes)) \
                    or attributes.map_state != _VIEWABLE:
                continue
            title, kind = self._name(identity), self._kind(identity)
            if title or kind:
                x, y, child = c_int(), c_int(), c_ulong()
                self._x.XTranslateCoordinates(self._display, identity, self._root, 0, 0, byref(x), byref(y),
                                              byref(child))
                found.append(Window(identity, title, kind,
                                    Box(x.value, y.value, attributes.width, attributes.height)))
            self._collect(identity, found)

    def _name(self, identity):
        text = c_void_p()
        if not self._x.XFetchName(self._display, identity, byref(text)) or not text:
            return ""
        name = ctypes.string_at(text).decode("utf-8", "replace")
        self._x.XFree(text)
        return name

    def _kind(self, identity):
        hint = _ClassHint()
        if not self._x.XGetClassHint(self._display, identity, byref(hint)):
            return ""
        kind = ctypes.string_at(hint.kind).decode("utf-8", "replace")
        self._x.XFree(hint.name)
        self._x.XFree(hint.kind)
        return kind

    def _declare(self):
        x, test = self._x, self._test
        display, window = c_void_p, c_ulong
        for function, result, arguments in (
                (x.XOpenDisplay, c_void_p, [c_char_p]), (x.XCloseDisplay, c_int, [display]),
                (x.XSetErrorHandler, c_void_p, [_ErrorHandler]), (x.XDefaultRootWindow, window, [display]),
                (x.XDefaultScreen, c_int, [display]), (x.XDisplayWidth, c_int, [display, c_int]),
                (x.XDisplayHeight, c_int, [display, c_int]), (x.XFree, c_int, [c_void_p]),
                (x.XSync, c_int, [display, c_int]), (x.XDestroyImage, c_int, [POINTER(_Image)]),
                (x.XGetImage, POINTER(_Image), [display, window, c_int, c_int, c_uint, c_uint, c_ulong, c_int]),
                (x.XQueryTree, c_int, [display, window, POINTER(window), POINTER(window), POINTER(POINTER(c_ulong)),
                                       POINTER(c_uint)]),
                (x.XGetWindowAttributes, c_int, [display, window, POINTER(_Attributes)]),
                (x.XTranslateCoordinates, c_int, [display, window, window, c_int, c_int, POINTER(c_int),
                                                  POINTER(c_int), POINTER(window)]),
                (x.XFetchName, c_int, [display, window, POINTER(c_void_p)]),
                (x.XGetClassHint, c_int, [display, window, POINTER(_ClassHint)]),
                (x.XGetInputFocus, c_int, [display, POINTER(window), POINTER(c_int)]),
                (x.XSelectInput, c_int, [display, window, c_long]), (x.XPending, c_int, [display]),
                (x.XNextEvent, c_int, [display, POINTER(_Event)]),
                (x.XGetSelectionOwner, window, [display, c_ulong]),
                (x.XInternAtom, c_ulong, [display, c_char_p, c_int]),
                (x.XGetWindowProperty, c_int, [display, window, c_ulong, c_long, c_long, c_int, c_ulong,
                                               POINTER(c_ulong), POINTER(c_int), POINTER(c_ulong), POINTER(c_ulong),
                                               POINTER(c_void_p)]),
                (x.XStringToKeysym, c_ulong, [c_char_p]), (x.XKeysymToKeycode, c_ubyte, [display, c_ulong]),
                (test.XTestFakeMotionEvent, c_int, [display, c_int, c_int, c_int, c_ulong]),
                (test.XTestFakeButtonEvent, c_int, [display, c_uint, c_int, c_ulong]),
                (test.XTestFakeKeyEvent, c_int, [display, c_uint, c_int, c_ulong])):
            function.restype = result
            function.argtypes = arguments
