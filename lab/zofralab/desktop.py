# SPDX-License-Identifier: GPL-3.0-or-later
"""A desktop's side of the message bus: the status bar, menus drawn by panels, media players."""

import time
from dataclasses import dataclass, field

from gi.repository import Gio, GLib

from .process import wait_until

WATCHER = "org.kde.StatusNotifierWatcher"
WATCHER_XML = """<node><interface name="org.kde.StatusNotifierWatcher">
 <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
 <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
 <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
 <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
 <property name="ProtocolVersion" type="i" access="read"/>
 <signal name="StatusNotifierItemRegistered"><arg type="s"/></signal>
 <signal name="StatusNotifierItemUnregistered"><arg type="s"/></signal>
 <signal name="StatusNotifierHostRegistered"/>
</interface></node>"""
ITEM = "org.kde.StatusNotifierItem"
MENU = "com.canonical.dbusmenu"
PLAYER = "org.mpris.MediaPlayer2.Player"


class StatusBar:
    """A panel that only keeps the list: it owns the watcher's name and remembers who registered, and when."""

    def __init__(self, peer):
        self._peer = peer
        self._registration = None
        self.registered = []

    def appear(self):
        """Be there."""
        if self._registration is None:
            info = Gio.DBusNodeInfo.new_for_xml(WATCHER_XML).interfaces[0]
            self._registration = self._peer.connection.register_object("/StatusNotifierWatcher", info, self._called,
                                                                       self._asked, None)
        self._peer.own(WATCHER)

    def disappear(self):
        """Be gone, as a panel that crashed."""
        self._peer.disown(WATCHER)
        self.registered = []

    def wait_for_item(self, timeout=5.0):
        """The first item that registers, as a `StatusItem`."""
        at, sender, service = wait_until(lambda: self.registered and self.registered[0], timeout, "a status item",
                                         0.005)
        return StatusItem(self._peer, sender, "/StatusNotifierItem", at, service)

    def _called(self, connection, sender, _path, _interface, method, parameters, invocation):
        service = parameters.unpack()[0]
        if method == "RegisterStatusNotifierItem":
            self.registered.append((time.monotonic(), sender, service))
            connection.emit_signal(None, "/StatusNotifierWatcher", WATCHER, "StatusNotifierItemRegistered",
                                   GLib.Variant("(s)", (service,)))
        invocation.return_value(None)

    def _asked(self, _connection, _sender, _path, _interface, name):
        return {"RegisteredStatusNotifierItems": GLib.Variant("as", [service for _, _, service in self.registered]),
                "IsStatusNotifierHostRegistered": GLib.Variant("b", True),
                "ProtocolVersion": GLib.Variant("i", 0)}[name]


class StatusItem:
    """The program's item as a panel sees it."""

    def __init__(self, peer, name, path, registered_at=None, service=""):
        self.peer = peer
        self.name = name
        self.path = path
        self.registered_at = registered_at
        self.service = service

    def get(self, prop):
        """One property."""
        return self.peer.get(self.name, self.path, ITEM, prop)

    @property
    def properties(self):
        """All of them."""
        return self.peer.get_all(self.name, self.path, ITEM)

    @property
    def title(self):
        """What lists of items show."""
        return self.get("Title")

    @property
    def label(self):
        """What panels that can draw it show beside the icon."""
        return self.get("XAyatanaLabel")

    @property
    def tooltip(self):
        """The tooltip's lines."""
        return self.get("ToolTip")[2].split("\n")

    @property
    def menu(self):
        """Its menu."""
        return Menu(self.peer, self.name, self.get("Menu"))


@dataclass
class Entry:
    """One entry of a menu."""

    identity: int
    properties: dict
    children: list = field(default_factory=list)

    @property
    def label(self):
        """Its text, without the marks for access keys."""
        text, out, i = self.properties.get("label", ""), "", 0
        while i < len(text):
            if text[i] == "_":
                i += 1  # "__" is an underscore, "_x" is an x
            out += text[i:i + 1]
            i += 1
        return out

    @property
    def checked(self):
        """Whether a check mark is shown."""
        return self.properties.get("toggle-state", 0) == 1

    @property
    def enabled(self):
        """Whether it can be chosen."""
        return self.properties.get("enabled", True)

    @property
    def separator(self):
        """Whether it is only a line."""
        return self.properties.get("type") == "separator"


class Menu:
    """A menu that a panel draws: it asks for the tree, and reports clicks."""

    def __init__(self, peer, name, path):
        self._peer = peer
        self.name = name
        self.path = path

    def call(self, method, signature, arguments, timeout=5.0):
        """One call to the program's menu object."""
        return self._peer.call(self.name, self.path, MENU, method, signature, arguments, timeout)

    def open(self):
        """What a panel does when its user clicks: announce it, say that it is open, ask for the whole tree. Returns
        the root. What is shown stays as it is until `close`."""
        self.call("AboutToShow", "(i)", (0,))
        self.event(0, "opened")
        return self.tree()

    def close(self):
        """The user is done with it."""
        self.event(0, "closed")

    def tree(self):
        """The whole tree as it is now."""
        return _entry(self.call("GetLayout", "(iias)", (0, -1, []))[1])

    def event(self, identity, kind="clicked"):
        """Report that something happened to an entry."""
        self.call("Event", "(isvu)", (identity, kind, GLib.Variant("i", 0), int(time.monotonic() * 1000) & 0xFFFFFFFF))

    def look(self):
        """Open, look and close: the root as it was shown."""
        root = self.open()
        self.close()
        return root

    def choose(self, *path):
        """Open the menu and choose an entry by its texts (or by the beginnings of them, ending in "…")."""
        entry = find(self.open(), *path)
        assert entry.enabled, f"{path} is greyed out"
        self.event(entry.identity)
        self.close()

    def choose_as_gtk_does(self, identity):
        """The menu closes before the click is reported, and nobody waits for an answer in between."""
        for what, kind in ((0, "closed"), (identity, "clicked")):
            arguments = GLib.Variant("(isvu)", (what, kind, GLib.Variant("i", 0), 0))
            self._peer.connection.call(self.name, self.path, MENU, "Event", arguments, None,
                                       Gio.DBusCallFlags.NO_AUTO_START, 5000, None, None)


def _entry(layout):
    identity, properties, children = layout
    return Entry(identity, properties, [_entry(child) for child in children])


def find(entry, *path):
    """The entry behind these texts; "Station (…" stands for every text that begins with "Station (" ."""
    for text in path:
        def matches(child, text=text):
            return child.label.startswith(text[:-1]) if text.endswith("…") else child.label == text
        found = [child for child in entry.children if matches(child)]
        assert found, f"no entry {text!r} among {[child.label for child in entry.children]}"
        entry = found[0]
    return entry


class MediaPlayer:
    """The program as media keys and playerctl see it."""

    PATH = "/org/mpris/MediaPlayer2"
    NAME = "org.mpris.MediaPlayer2.zofrazofra"

    def __init__(self, peer, name=NAME):
        self.peer = peer
        self.name = name

    def call(self, method):
        """Press a key: Play, Pause, PlayPause, Stop."""
        self.peer.call(self.name, self.PATH, PLAYER, method)

    def get(self, prop):
        """One property of the player."""
        return self.peer.get(self.name, self.PATH, PLAYER, prop)

    @property
    def status(self):
        """Playing, Paused or Stopped."""
        return self.get("PlaybackStatus")

    @property
    def metadata(self):
        """What is on."""
        return self.get("Metadata")

    @property
    def volume(self):
        """0 to 1."""
        return self.get("Volume")

    @volume.setter
    def volume(self, value):
        self.peer.set(self.name, self.PATH, PLAYER, "Volume", GLib.Variant("d", value))
