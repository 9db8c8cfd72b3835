# SPDX-License-Identifier: GPL-3.0-or-later
"""Any call that another program of the same user can make: every method that the radio's objects say they have, with values of
the right and of wrong types, made from a seed. Each is answered, and the radio goes on as if nothing had been."""

import random
import threading
import time
import xml.etree.ElementTree as ElementTree

import pytest
from gi.repository import Gio, GLib
from radio import MEDIA_PLAYER, NAME

CALLS, AT_ONCE = 900, 48
#: What ends the radio is no fault of it.
ENDS = {"Quit"}
OBJECTS = ((MEDIA_PLAYER, "/org/mpris/MediaPlayer2"), (None, "/StatusNotifierItem"), (None, "/MenuBar"),
           (NAME, "/be/zofra/ZofraZofra"))
BASIC = "ybnqiuxtdsogv"


def methods(bus, name, path):
    """[(interface, method, signature)] that an object says it has, the properties' own among them."""
    root = ElementTree.fromstring(bus.introspect(name, path))
    found = [("org.freedesktop.DBus.Properties", member, signature)
             for member, signature in (("Get", "ss"), ("GetAll", "s"), ("Set", "ssv"))]
    for interface in root.iter("interface"):
        for method in interface.iter("method"):
            arguments = [one.get("type") for one in method.iter("arg") if one.get("direction", "in") == "in"]
            if method.get("name") not in ENDS:
                found.append((interface.get("name"), method.get("name"), "".join(arguments)))
    return found


class Values:
    """Random values by signature."""

    def __init__(self, seed, words):
        self.random = random.Random(seed)
        self._words = words

    def signature(self, depth=0):
        """Any complete type."""
        kind = self.random.choice(BASIC + ("aa({" if depth < 3 else ""))
        if kind == "a":
            return "a" + self.signature(depth + 1)
        if kind == "(":
            return "(" + "".join(self.signature(depth + 1) for _ in range(self.random.randint(1, 3))) + ")"
        if kind == "{":
            return "a{" + self.random.choice("sioy") + self.signature(depth + 1) + "}"
        return kind

    def text(self):
        """A word that means something somewhere, or one that does not."""
        return self.random.choice((*self._words, "", "x" * 70_000, "\u202e<b>&amp;\n\x07", "-1", "NaN", "🔊" * 40))

    def of(self, kind, depth=0):
        """A value of one complete type."""
        if kind in "ybnqiuxtd" and len(kind) == 1:
            limits = {"y": (0, 255), "b": (0, 1), "n": (-2**15, 2**15 - 1), "q": (0, 2**16 - 1), "i": (-2**31, 2**31 - 1),
                      "u": (0, 2**32 - 1), "x": (-2**63, 2**63 - 1), "t": (0, 2**64 - 1)}
            if kind == "d":
                return GLib.Variant("d", self.random.choice((0.0, 0.5, -1.0, 7e300, float("nan"), float("inf"))))
            low, high = limits[kind]
            value = self.random.choice((low, high, 0, 1, min(7, high), self.random.randint(low, high)))
            return GLib.Variant(kind, bool(value) if kind == "b" else value)
        if kind in ("s", "o", "g"):
            return GLib.Variant(kind, {"s": self.text(), "o": "/org/mpris/MediaPlayer2", "g": "a{sv}"}[kind])
        if kind == "v":
            inner = self.of(self.signature(depth + 1), depth + 1) if depth < 4 else GLib.Variant("s", "deep")
            return GLib.Variant("v", inner)
        if kind.startswith("a{"):
            key, value = kind[2], kind[3:-1]
            entries = {}
            for _ in range(self.random.randint(0, 4)):
                one = self.of(key)
                entries[one.unpack()] = GLib.Variant.new_dict_entry(one, self.of(value, depth + 1))
            return _array(kind, list(entries.values()))
        if kind.startswith("a"):
            count = self.random.choice((0, 1, 3, 200 if depth == 0 else 2))
            return _array(kind, [self.of(kind[1:], depth + 1) for _ in range(count)])
        parts, rest = [], kind[1:-1]
        while rest:
            one = first_type(rest)
            parts.append(self.of(one, depth + 1))
            rest = rest[len(one):]
        return GLib.Variant.new_tuple(*parts)

    def arguments(self, signature):
        """For a call: mostly of the right types, sometimes others, fewer or more."""
        if self.random.random() < 0.25:
            signature = "".join(self.signature() for _ in range(self.random.randint(0, 4)))
        return self.of(f"({signature})") if signature else None


def _array(kind, values):
    return GLib.Variant.new_array(GLib.VariantType.new(kind[1:]), values)


def first_type(signature):
    """The first complete type of a signature."""
    at = 0
    while signature[at] == "a":
        at += 1
    if signature[at] not in "({":
        return signature[:at + 1]
    depth = 0
    for end in range(at, len(signature)):
        depth += {"(": 1, "{": 1, ")": -1, "}": -1}.get(signature[end], 0)
        if depth == 0:
            return signature[:end + 1]
    raise ValueError(signature)


@pytest.mark.slow
@pytest.mark.parametrize("seed", [1, 2])
def test_every_call_is_answered_and_nothing_comes_of_nonsense(radio, bus, status_bar, seed):
    radio.start("--play", headless=False)
    item = status_bar.wait_for_item()
    known = [(name or item.name, path, *one) for name, path in OBJECTS
             for one in methods(bus, name or item.name, path)]
    assert len({member for _, _, _, member, _ in known}) > 20
    words = sorted({word for _, _, interface, member, _ in known for word in (interface, member)} |
                   {"Volume", "PlaybackStatus", "clicked", "opened", "play", "station", "output", "qmusic", "everywhere"})
    values, left, unanswered = Values(seed, words), threading.Semaphore(AT_ONCE), []

    def answered(connection, result, call):
        try:
            connection.call_finish(result)
        except GLib.Error as error:
            if error.matches(Gio.io_error_quark(), Gio.IOErrorEnum.TIMED_OUT):
                unanswered.append(call)
        left.release()
    for _ in range(CALLS):
        name, path, interface, member, signature = values.random.choice(known)
        assert left.acquire(timeout=30)
        bus.connection.call(name, path, interface, member, values.arguments(signature), None,
                            Gio.DBusCallFlags.NO_AUTO_START, 15000, None, answered, f"{member} {path}")
    for _ in range(AT_ONCE):
        assert left.acquire(timeout=30), "calls without an answer"
    assert not unanswered
    assert radio.process.poll() is None, radio.transcript()
    began = time.monotonic()
    status = radio.status()
    assert time.monotonic() - began < 3 and status["station"] and 0 <= status["volume"] <= 1
    assert radio.memory() < 60_000
