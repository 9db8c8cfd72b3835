# SPDX-License-Identifier: GPL-3.0-or-later
"""What a screen reader is told: the accessibility bus of a session, and the tree of widgets on it."""

import os
import subprocess

from gi.repository import GLib

from .bus import BusError, Peer
from .picture import Box
from .process import terminate, wait_until

LAUNCHER = "/usr/libexec/at-spi-bus-launcher"
ACCESSIBLE = "org.a11y.atspi.Accessible"
COMPONENT = "org.a11y.atspi.Component"
REGISTRY = "org.a11y.atspi.Registry"
FOCUSED = "object:state-changed:focused"
#: Numbers of states, as the protocol has them.
STATES = {4: "checked", 8: "enabled", 9: "expandable", 10: "expanded", 11: "focusable", 12: "focused",
          24: "sensitive", 25: "showing", 30: "visible", 41: "checkable"}


class Accessible:
    """One thing that a screen reader can speak about."""

    def __init__(self, peer, name, path):
        self._peer = peer
        self.owner = name
        self.path = path

    def __eq__(self, other):
        return isinstance(other, Accessible) and (self.owner, self.path) == (other.owner, other.path)

    def __hash__(self):
        return hash((self.owner, self.path))

    def __repr__(self):
        return f"<{self.role} {self.name!r}>"

    @property
    def name(self):
        """What is spoken."""
        return self._peer.get(self.owner, self.path, ACCESSIBLE, "Name")

    @property
    def description(self):
        """What is spoken after a while."""
        return self._peer.get(self.owner, self.path, ACCESSIBLE, "Description")

    @property
    def role(self):
        """What kind of thing it is."""
        return self._call("GetRoleName")[0]

    @property
    def states(self):
        """The set of names of those states that are known here."""
        words = self._call("GetState")[0]
        bits = words[0] | words[1] << 32
        return {name for bit, name in STATES.items() if bits >> bit & 1}

    @property
    def parent(self):
        """What it is a part of."""
        return Accessible(self._peer, *self._peer.get(self.owner, self.path, ACCESSIBLE, "Parent"))

    @property
    def children(self):
        """Its parts."""
        return [Accessible(self._peer, name, path) for name, path in self._call("GetChildren")[0]]

    @property
    def box(self):
        """Where it is on the screen."""
        return Box(*self._peer.call(self.owner, self.path, COMPONENT, "GetExtents", "(u)", (0,))[0])

    def everything(self):
        """It and all that is below it."""
        found = [self]
        for child in self.children:
            found += child.everything()
        return found

    def child(self, name):
        """The part of that name, or of a name that begins so when it ends in "…"."""
        names = []
        for child in self.children:
            names.append(child.name)
            if child.name == name or name.endswith("…") and child.name.startswith(name[:-1]):
                return child
        raise AssertionError(f"nothing is named {name!r} among {names}")

    def _call(self, method):
        return self._peer.call(self.owner, self.path, ACCESSIBLE, method)


class ScreenReader:
    """Starts the accessibility bus of a session and listens to what gets the keyboard. Start it from the main thread,
    before the programs that it is to meet."""

    def __init__(self, session):
        self._session = session
        self._process = None
        self._peer = None

    @staticmethod
    def missing():
        """What this machine lacks for it."""
        return [] if os.access(LAUNCHER, os.X_OK) else [LAUNCHER]

    def start(self):
        """Start and announce that somebody needs it."""
        # Terminated, it ends the bus that it has started; killed, it would leave it behind.
        self._process = subprocess.Popen(
            ["setpriv", "--pdeathsig", "TERM", "--", LAUNCHER, "--launch-immediately", "--a11y=1",
             "--screen-reader=1"],
            env={**os.environ, **self._session.environment()}, stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
            stderr=subprocess.DEVNULL, start_new_session=True)
        outer = Peer(self._session.session_bus.address)
        try:
            outer.wait_for_name("org.a11y.Bus", 30)
            outer.set("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Status", "IsEnabled", GLib.Variant("b", True))
            outer.set("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Status", "ScreenReaderEnabled",
                      GLib.Variant("b", True))
            address = outer.call("org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0]
        finally:
            outer.close()
        self._peer = Peer(address)
        self._peer.call("org.freedesktop.DBus", "/org/freedesktop/DBus", "org.freedesktop.DBus", "StartServiceByName",
                        "(su)", (REGISTRY, 0), 30)
        self._peer.record_signals(interface="org.a11y.atspi.Event.Object")
        self._peer.call(REGISTRY, "/org/a11y/atspi/registry", REGISTRY, "RegisterEvent", "(sass)",
                        (FOCUSED, [], ""))
        return self

    def stop(self):
        """End it."""
        if self._peer:
            self._peer.close()
        if self._process:
            terminate(self._process)

    def application(self, name, timeout=30.0):
        """The program of that name."""
        desktop = Accessible(self._peer, REGISTRY, "/org/a11y/atspi/accessible/root")

        def found():
            for child in desktop.children:
                try:
                    if child.name == name:
                        return child
                except BusError:
                    continue  # it has just ended
            return None
        return wait_until(found, timeout, f"{name} among the accessible programs", 0.05)

    def forget(self):
        """Forget what had the keyboard so far."""
        self._peer.signals.clear()

    def focused(self, name=None, timeout=30.0):
        """What was last told to have got the keyboard, waited for: anything, or what has that name."""
        def found():
            told = [signal for signal in list(self._peer.signals)
                    if signal.name == "StateChanged" and signal.arguments[0] == "focused" and signal.arguments[1]]
            if not told:
                return None
            last = Accessible(self._peer, told[-1].sender, told[-1].path)
            try:
                return last if name is None or last.name == name else None
            except BusError:
                return None
        return wait_until(found, timeout, f"{name or 'anything'} to have the keyboard", 0.02)
