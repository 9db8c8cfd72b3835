# SPDX-License-Identifier: GPL-3.0-or-later
"""The part of a desktop portal that says whether the desktop is light or dark."""

import time

from gi.repository import Gio, GLib

NAME = "org.freedesktop.portal.Desktop"
PATH = "/org/freedesktop/portal/desktop"
SETTINGS = "org.freedesktop.portal.Settings"
GROUP = "org.freedesktop.appearance"
XML = f"""<node><interface name="{SETTINGS}">
 <method name="ReadAll"><arg type="as" direction="in"/><arg type="a{{sa{{sv}}}}" direction="out"/></method>
 <signal name="SettingChanged"><arg type="s"/><arg type="s"/><arg type="v"/></signal>
</interface></node>"""
SCHEMES = {"dark": 1, "light": 2}


class Portal:
    """Answers whoever asks, from the time at which it `appear`s; remembers when it was asked."""

    def __init__(self, peer, scheme="light"):
        self._peer = peer
        self._scheme = scheme
        self.asked_at = []
        info = Gio.DBusNodeInfo.new_for_xml(XML).interfaces[0]
        peer.connection.register_object(PATH, info, self._called, None, None)

    def appear(self):
        """Be on the bus."""
        self._peer.own(NAME)
        return self

    def become(self, scheme):
        """"light" or "dark"; whoever listens is told."""
        self._scheme = scheme
        self._peer.connection.emit_signal(None, PATH, SETTINGS, "SettingChanged",
                                          GLib.Variant("(ssv)", (GROUP, "color-scheme", self._value())))

    def _value(self):
        return GLib.Variant("u", SCHEMES[self._scheme])

    def _called(self, _connection, _sender, _path, _interface, _method, _parameters, invocation):
        self.asked_at.append(time.monotonic())
        invocation.return_value(GLib.Variant("(a{sa{sv}})", ({GROUP: {"color-scheme": self._value()}},)))
