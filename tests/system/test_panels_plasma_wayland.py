# SPDX-License-Identifier: GPL-3.0-or-later
"""Plasma on Wayland: the panel draws the menu, from what the program tells it each time."""

import pytest
from panels_support import calm, close_menus, display, drawn_menu, empty, item, radio, screen, session  # noqa: F401
from zofralab.process import wait_until
from zofralab.screen import NestedScreen
from zofralab.shells import PlasmaOnWayland

PANEL = PlasmaOnWayland
SCREEN = NestedScreen
pytestmark = [pytest.mark.whole_desktop, pytest.mark.xdist_group("panels_plasma_wayland")]


def test_the_panel_draws_the_menu_and_its_submenus_open_at_once(item, screen, lab):
    assert item.radio.status()["tray"] == "hostmenu"
    assert screen.picture(item.box).drawn() > 0.15
    for song in ("The First Song", "Another Song"):
        lab.livefeed.song(station="zofra", artist="Mira Voss", title=song)
        wait_until(lambda song=song: song in item.radio.status()["song"], 30, "the song", 0.1)
        before = calm(screen)
        item.click()
        menu = drawn_menu(screen, before)
        assert menu.height > 150
        opened = screen.still_picture(screen.below_panel, seconds=0.3)
        # The second line of ten is the stations'.
        screen.click((menu.centre[0], menu.y + round(menu.height * 0.18)))
        wait_until(lambda: drawn_menu(screen, opened).height > 150, 30, "the stations", 0.1)
        close_menus(screen, before)


def test_the_right_click_opens_the_same_menu(item, screen):
    before = calm(screen)
    item.click(3)
    assert drawn_menu(screen, before).height > 150
    screen.click((300, 700))


def test_the_middle_click_opens_the_panel(item, screen):
    before = calm(screen)
    item.click(2)
    window = drawn_menu(screen, before)
    assert 300 < window.width < 700 and window.height > 300


def test_one_notch_of_the_wheel_is_one_step_and_the_desktop_shows_it(item, screen):
    item.radio.wait_status(volume=pytest.approx(0.8), timeout=30)
    before = calm(screen)
    screen.click(item.box.centre, 5)
    item.radio.wait_status(volume=pytest.approx(0.75), timeout=30)
    shown = wait_until(lambda: screen.picture(screen.below_panel).difference(before), 30, "the desktop's display", 0.05)
    assert shown.width > 50 and shown.x + shown.width // 2 in range(440, 840), "in the middle, not a tool tip"
    screen.click(item.box.centre, 4)
    item.radio.wait_status(volume=pytest.approx(0.8), timeout=30)


def test_the_item_returns_with_a_panel_that_was_started_anew(item, screen):
    # The watcher of items is a program of its own, which says that all is well while there is no panel.
    screen.panel.stop(screen)
    screen.panel.start(screen)
    screen.still_picture(screen.panel_box, seconds=2.0)
    before = calm(screen)
    item.click()
    assert drawn_menu(screen, before).height > 150
