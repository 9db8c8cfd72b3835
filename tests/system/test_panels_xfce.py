# SPDX-License-Identifier: GPL-3.0-or-later
"""Xfce's panel: it draws the menu itself, from what the program tells it each time.

Its wheel is not tried here: this panel passes on only wheels that tell finer distances than a notch, and a display
without devices has none of them (watched on the bus: no call at all, however the item describes itself)."""

import pytest
from panels_support import display, empty, item, popup, radio, screen, session  # noqa: F401
from zofralab.desktop import StatusItem, find
from zofralab.panels import XfcePanel
from zofralab.process import wait_until

PANEL = XfcePanel
PROGRAM = "zofrazofra"
pytestmark = pytest.mark.xdist_group("panels_xfce")


def drawn_menus(screen):
    """The menus of the panel's drawing that are there now."""
    return [window for window in screen.windows("Wrapper-2.0") if window.box.height > 100]


def drawn_menu(screen):
    """The menu of the panel's drawing, waited for until it stands still."""
    menu = wait_until(lambda: next(iter(drawn_menus(screen)), None), 30, "a menu of the panel's drawing", 0.05)
    screen.still_picture(menu.box)
    return menu


def close_menu(screen):
    """Close it again."""
    screen.key("Escape")
    wait_until(lambda: not drawn_menus(screen), 30, "no menu", 0.05)


def test_the_item_can_be_seen_and_the_panel_draws_its_menu(item, screen):
    assert item.radio.status()["tray"] == "hostmenu"
    assert screen.picture(item.box).drawn() > 0.2
    item.click()
    menu = drawn_menu(screen)
    assert menu.box.y <= screen.panel_box.bottom + 4 and menu.box.x <= item.box.x <= menu.box.right
    assert screen.picture(menu.box).drawn() > 0.05, "with something in it"
    assert screen.windows(PROGRAM) == [], "nothing of our own drawing"
    close_menu(screen)


def test_the_first_entry_plays_and_the_menu_tells_so_when_it_opens_again(item, screen, ears, bus):
    tray_item = StatusItem(bus, bus.owner("be.zofra.ZofraZofra"), "/StatusNotifierItem")
    item.click()
    menu = drawn_menu(screen)
    before = screen.picture(menu.box)
    screen.click((menu.box.centre[0], menu.box.y + 15))
    ears.wait_for(("zofra", "aac"), 30)
    item.radio.wait_status(playing=True, timeout=30)
    item.radio.ask("--play", "qmusic")
    item.radio.wait_status(station="qmusic", timeout=30)
    # The panel takes no click while it closes a menu or draws the button anew.
    wait_until(lambda: not drawn_menus(screen), 30, "no menu", 0.05)
    screen.still_picture(item.box)
    item.click()
    again = drawn_menu(screen)
    wait_until(lambda: again.box.height != menu.box.height or again.box.width != menu.box.width
               or screen.picture(again.box).data != before.data, 30, "another picture of the menu", 0.05)
    close_menu(screen)
    told = tray_item.menu.look()
    assert told.children[0].label == "Stop Radio"
    assert find(told, "Station (Qmusic)", "Qmusic – Hits & Pop").checked


def test_the_middle_click_opens_the_panel_with_the_keyboard(item, screen):
    item.click(2)
    window = popup(screen)
    item.click(2)
    assert [w.identity for w in screen.windows(PROGRAM)] == [window.identity]


def test_the_item_returns_with_a_panel_that_was_started_anew(item, screen, empty):
    screen.panel.stop(screen)
    item.radio.wait_status(tray="none", timeout=30)
    screen.panel.start(screen)
    item.radio.wait_status(tray="hostmenu", timeout=30)
    item.box = screen.wait_for_item(empty)
    item.click()
    drawn_menu(screen)
    close_menu(screen)


def test_the_setting_overrules_the_panels_kind(radio, screen, empty):
    screen.wait_for_no_item(empty)
    radio.write_section("tray", mode="direct")
    radio.start(headless=False)
    radio.wait_status(tray="direct", timeout=30)
    screen.click(screen.wait_for_item(empty).centre)
    screen.wait_for_window(PROGRAM)
    assert not [w for w in screen.windows("Wrapper-2.0") if w.box.height > 100]
