# SPDX-License-Identifier: GPL-3.0-or-later
"""Our own menu and the panel: clicked open, seen by the X server, and closed with a key."""

import select
import time

from gi.repository import GLib
from zofralab.desktop import ITEM

#: A click far from the window's own edges.
POINT = GLib.Variant("(ii)", (600, 5))


class WindowWatch:
    """What the X server says of windows that come and go. ImportError without python3-xlib."""

    def __init__(self, stage, patience=10):
        from Xlib import X, XK, display  # pylint: disable=import-outside-toplevel
        self._x, self._patience = X, patience
        self._display = display.Display(stage.display.name)
        self._escape = self._display.keysym_to_keycode(XK.XK_Escape)
        self._display.screen().root.change_attributes(event_mask=X.SubstructureNotifyMask)
        self._display.sync()

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self._display.close()

    def open(self, stage, item, click):
        """Seconds from the call that a click is (Activate or ContextMenu) to the window on the screen."""
        began = time.monotonic()
        stage.peer.connection.call(item.name, item.path, ITEM, click, POINT, None, 0, 1000 * self._patience, None, None)
        return self._next(self._x.MapNotify) - began

    def close(self):
        """Press Escape, and wait until the window is gone."""
        from Xlib.ext import xtest  # pylint: disable=import-outside-toplevel
        xtest.fake_input(self._display, self._x.KeyPress, self._escape)
        xtest.fake_input(self._display, self._x.KeyRelease, self._escape)
        self._display.sync()
        self._next(self._x.UnmapNotify)

    def _next(self, kind):
        deadline = time.monotonic() + self._patience
        while time.monotonic() < deadline:
            while self._display.pending_events():
                if self._display.next_event().type == kind:
                    return time.monotonic()
            select.select([self._display], [], [], max(0.0, deadline - time.monotonic()))
        raise RuntimeError(f"no window came or went for {self._patience} s")
