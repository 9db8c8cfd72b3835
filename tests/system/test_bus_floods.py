# SPDX-License-Identifier: GPL-3.0-or-later
"""Another program of the same person calls without end, or with more than anybody needs: everybody else is still
answered, and nothing grows."""

import array
import threading
import time

import pytest
from bus_flood import Flood, message
from gi.repository import GLib
from radio import MEDIA_PLAYER, NAME
from zofralab.bus import BusError
from zofralab.process import wait_until

ITEM = ("/StatusNotifierItem", "org.kde.StatusNotifierItem")
MENU = ("/MenuBar", "com.canonical.dbusmenu")
APPLICATION = ("/be/zofra/ZofraZofra", "be.zofra.ZofraZofra1")
PLAYER = ("/org/mpris/MediaPlayer2", "org.mpris.MediaPlayer2.Player")
LIMITS = "org.freedesktop.DBus.Error.LimitsExceeded"


@pytest.fixture
def running(radio, status_bar, bus):
    """The program with a panel; also its unique name."""
    radio.start(headless=False)
    status_bar.wait_for_item(20)
    radio.wait_status(tray="hostmenu")
    return radio, bus.owner(NAME)


def answered_within(bus, limit):
    """How long the program takes to tell its state."""
    asked = time.monotonic()
    bus.call(NAME, *APPLICATION, "Status", timeout=limit)
    return time.monotonic() - asked


@pytest.mark.measured
@pytest.mark.parametrize("place, method, body", [
    (MENU, "AboutToShow", GLib.Variant("(i)", (0,))),
    (MENU, "GetLayout", GLib.Variant("(iias)", (0, -1, []))),
    (ITEM, "Scroll", GLib.Variant("(is)", (120, "vertical"))),
    (ITEM, "ContextMenu", GLib.Variant("(ii)", (1, 1))),
    (APPLICATION, "Status", None),
    (APPLICATION, "Run", GLib.Variant("(a{sv})", ({"play": GLib.Variant("b", True)},))),
    (PLAYER, "PlayPause", None),
], ids=lambda value: value if isinstance(value, str) else "")
def test_others_are_answered_while_one_calls_without_end(running, session, bus, place, method, body):
    radio, name = running
    bus.wait_for_name(MEDIA_PLAYER)
    # Once each by hand: what a first window or a first sound takes is no growth.
    bus.call(name, *ITEM, "SecondaryActivate", "(ii)", (1, 1))
    bus.call(name, *PLAYER, "Play")
    radio.wait_status(playing=True, buffering=False)
    before = radio.memory()
    call = message(name, *place, method, body, wants_answer=False)
    with Flood(session.session_bus.socket, call) as flood:
        wait_until(lambda: flood.sent > 10000, 20, "the flood")
        slowest = max(answered_within(bus, 20) for _ in range(20))
        wait_until(lambda: flood.sent > 40000, 20, "more of the flood")
        slowest = max(slowest, answered_within(bus, 20))
    # Without limits it is twenty, and more for each second of the flood.
    assert slowest < 5, f"{slowest:.1f} s"
    assert answered_within(bus, 20) < 5, "afterwards"
    assert radio.memory() - before < 20000, f"{before} kB before, {radio.memory()} kB after"


def test_the_answer_to_a_flood_is_an_error(running, bus):
    _, name = running
    answers = []
    done = threading.Event()
    count = 3000

    def arrived(connection, result):
        try:
            connection.call_finish(result)
            answers.append("")
        except GLib.Error as error:
            answers.append(BusError(error).name)
        if len(answers) == count:
            done.set()
    for _ in range(count):
        bus.connection.call(name, *MENU, "GetLayout", GLib.Variant("(iias)", (0, -1, [])), None, 0, 30000, None, arrived)
    assert done.wait(30)
    assert set(answers) == {"", LIMITS}

    def is_answered():
        try:
            return bus.call(name, *MENU, "AboutToShow", "(i)", (0,)) is not None
        except BusError as error:
            assert error.name == LIMITS
            return False
    wait_until(is_answered, 5, "an answer to whoever has come to rest")


def empty_texts(count):
    """A list of that many empty texts: as it lies in memory, for making it one by one takes minutes."""
    laid_out = bytes(count) + array.array("I", range(1, count + 1)).tobytes()
    return GLib.Variant.new_from_bytes(GLib.VariantType.new("as"), GLib.Bytes.new(laid_out), True)


def ones(count):
    """A list of that many ones."""
    laid_out = array.array("i", [1]) * count
    return GLib.Variant.new_from_bytes(GLib.VariantType.new("ai"), GLib.Bytes.new(laid_out.tobytes()), True)


@pytest.mark.parametrize("method, arguments", [
    ("GetGroupProperties", lambda: (ones(4096), empty_texts(1_000_000))),
    ("GetLayout", lambda: (GLib.Variant("i", 0), GLib.Variant("i", -1), empty_texts(2_000_000))),
    ("AboutToShowGroup", lambda: (ones(4_000_000),)),
    ("EventGroup", lambda: (GLib.Variant("a(isvu)", [(1, "clicked", GLib.Variant("i", 0), 0)] * 4096),)),
], ids=lambda value: value if isinstance(value, str) else "")
def test_calls_that_carry_too_much_are_refused_at_once(running, bus, method, arguments):
    _, name = running
    outcome = []
    body = GLib.Variant.new_tuple(*arguments())

    def arrived(connection, result):
        try:
            connection.call_finish(result)
            outcome.append("answered")
        except GLib.Error as error:
            outcome.append(BusError(error).name)
    bus.connection.call(name, *MENU, method, body, None, 0, 60000, None, arrived)
    slowest = 0.0
    limit = time.monotonic() + 60
    while not outcome and time.monotonic() < limit:
        slowest = max(slowest, answered_within(bus, 60))
        time.sleep(0.02)
    assert outcome == [LIMITS]
    assert slowest < 5, f"{slowest:.1f} s"


@pytest.mark.measured
@pytest.mark.parametrize("path, interface, method, arguments", [
    (*MENU, "AboutToShowGroup", lambda: (ones(250_000),)),
    (*APPLICATION, "Run", lambda: (GLib.Variant("a{sv}", {f"{i:010000}": GLib.Variant("b", True) for i in range(100)}),)),
], ids=lambda value: value if value in ("AboutToShowGroup", "Run") else "")
def test_what_is_refused_is_not_kept(running, bus, path, interface, method, arguments):
    radio, name = running
    body = GLib.Variant.new_tuple(*arguments())

    def refused():
        with pytest.raises(GLib.Error) as error:
            bus.connection.call_sync(name, path, interface, method, body, None, 0, 20000, None)
        assert BusError(error.value).name == LIMITS
    for _ in range(10):
        refused()
    before = radio.memory()
    for _ in range(100):
        refused()
    # Each is a megabyte.
    assert radio.memory() - before < 20000, f"{before} kB before, {radio.memory()} kB after"
