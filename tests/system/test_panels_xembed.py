# SPDX-License-Identifier: GPL-3.0-or-later
"""A tray of the old kind, which the program takes when nobody on the bus watches over items."""

import time

import pytest
from panels_support import Item, display, popup, radio, screen, session  # noqa: F401
from zofralab.desktop import StatusBar
from zofralab.panels import Trayer
from zofralab.process import wait_until

PANEL = Trayer
PROGRAM = "zofrazofra"
#: The picture of the tray without an icon, once it is taken.
EMPTY = []
pytestmark = pytest.mark.xdist_group("panels_xembed")


@pytest.fixture
def empty(radio, screen):
    """The tray that has had an icon: newer versions hide themselves until their first."""
    if not EMPTY:
        nothing = screen.still_picture(screen.panel_box)
        radio.start(headless=False)
        radio.wait_status(tray="xembed", timeout=30)
        screen.wait_for_item(nothing)
        icon = screen.still_picture(screen.panel_box)
        radio.stop()
        wait_until(lambda: screen.picture(screen.panel_box).difference(icon), 30, "the icon to leave", 0.05)
        EMPTY.append(screen.still_picture(screen.panel_box))
    return EMPTY[0]


@pytest.fixture
def item(radio, screen, empty):
    """The program, running, with its icon in the old tray."""
    screen.move(640, 600)
    screen.wait_for_no_item(empty)
    radio.start(headless=False)
    radio.wait_status(tray="xembed", timeout=30)
    yield Item(radio, screen, screen.wait_for_item(empty))
    radio.stop()


def menus(screen):
    """The menus of the program's own drawing that can be seen."""
    return [w for w in screen.windows(PROGRAM) if not w.title and w.box.height > 100]


def test_the_icon_is_shown_and_both_clicks_work(item, screen):
    assert screen.picture(item.box).drawn() > 0.2
    item.click()
    menu = wait_until(lambda: next(iter(menus(screen)), None), 30, "the menu", 0.05)
    # One that is painted has the keyboard.
    wait_until(lambda: screen.picture(menu.box).drawn() > 0.02, 30, "something in the menu", 0.05)
    assert menu.box.y >= item.box.bottom - 4 and menu.box.y < 60, "below the icon"
    assert menu.box.x <= item.box.x <= menu.box.right
    screen.key("Escape")
    wait_until(lambda: not menus(screen), 30, "the menu to close", 0.05)
    screen.click(item.box.centre, 5)
    item.radio.wait_status(volume=pytest.approx(0.75), timeout=30)
    item.click(3)
    window = popup(screen)
    assert menus(screen) == []
    screen.key("Escape")
    wait_until(lambda: not screen.windows(PROGRAM, "Zofra Zofra"), 30, "the panel to close", 0.05)
    item.click(2)
    assert popup(screen).identity != window.identity, "by the middle button, too"


def test_the_icon_is_there_at_once(radio, screen, empty):
    screen.wait_for_no_item(empty)
    radio.start(headless=False)
    ready = time.monotonic()
    radio.wait_status(tray="xembed", timeout=30)
    assert time.monotonic() - ready < 3, "nobody is waited for who is not there"
    screen.wait_for_item(empty)


def test_a_panel_that_comes_later_takes_over(item, screen, empty, bus):
    bar = StatusBar(bus)
    bar.appear()
    shown = bar.wait_for_item(30)
    item.radio.wait_status(tray="hostmenu", timeout=30)
    assert shown.menu.look().children[0].label == "Play Radio"
    screen.wait_for_no_item(empty)
    bar.disappear()
    item.radio.wait_status(tray="xembed", timeout=30)
    screen.wait_for_item(empty)


def test_the_icon_returns_with_a_tray_that_was_started_anew(item, screen, empty):
    screen.panel.stop(screen)
    wait_until(lambda: not screen.server.has_old_tray(), 30, "no tray", 0.05)
    screen.panel.start(screen)
    item.box = screen.wait_for_item(empty)
    item.click()
    wait_until(lambda: menus(screen), 30, "the menu", 0.05)
