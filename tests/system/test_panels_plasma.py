# SPDX-License-Identifier: GPL-3.0-or-later
"""Plasma on X11: it passes both clicks on, the menu is of our own drawing."""

import re

import pytest
from panels_support import (display, empty, item, own_menus, popup, radio, screen, session,  # noqa: F401
                            wait_for_menus)
from zofralab.picture import Box
from zofralab.process import wait_until
from zofralab.shells import Plasma

PANEL = Plasma
PROGRAM = "zofrazofra"
#: Where the panel shows windows.
TASKS = Box(0, 0, 600, 36)
pytestmark = [pytest.mark.whole_desktop, pytest.mark.xdist_group("panels_plasma")]


def test_the_left_click_opens_our_menu_at_the_button_and_its_submenus_open_at_once(item, screen, lab):
    assert item.radio.status()["tray"] == "direct"
    assert screen.picture(item.box).drawn() > 0.15
    for song in ("The First Song", "Another Song"):
        lab.livefeed.song(station="zofra", artist="Mira Voss", title=song)
        wait_until(lambda song=song: song in item.radio.status()["song"], 30, "the song", 0.1)
        item.click()
        menu = wait_for_menus(screen, 1)[0]
        assert menu.box.y >= screen.panel_box.bottom and menu.box.x <= item.box.right <= menu.box.right + 4
        screen.key("s", "Right")
        both = wait_for_menus(screen, 2)
        assert all(one.box.y >= screen.panel_box.bottom for one in both), "neither covers the panel"
        screen.key("Escape", "Escape")
        wait_for_menus(screen, 0)


def test_the_right_click_opens_the_panel_and_gives_it_the_keyboard(item, screen):
    item.click(3)
    window = popup(screen)
    assert own_menus(screen) == []
    item.click(2)
    assert [w.identity for w in screen.windows(PROGRAM)] == [window.identity]
    screen.click(window.box.centre)
    wait_until(lambda: screen.server.active_window() == window.identity, 30, "the keyboard", 0.05)
    screen.key("Escape")
    wait_until(lambda: not screen.windows(PROGRAM), 30, "the panel to close", 0.05)


def test_the_middle_click_opens_the_panel_whom_the_task_bar_knows(item, screen):
    before = screen.picture(TASKS)
    item.click(2)
    window = popup(screen)
    hints = screen.run("xprop", "-id", str(window.identity), "WM_CLASS", "_NET_WM_ICON")
    assert re.search(r'WM_CLASS.* = "zofrazofra", "zofrazofra"', hints) and "Icon (" in hints
    shown = wait_until(lambda: screen.picture(TASKS).difference(before), 30, "a window in the task bar", 0.1)
    assert shown.width >= 16 and shown.height >= 16


def test_one_notch_of_the_wheel_is_one_step(item, screen):
    item.radio.wait_status(volume=pytest.approx(0.8), timeout=30)
    for button, volume in ((5, 0.75), (5, 0.7), (4, 0.75)):
        screen.click(item.box.centre, button)
        item.radio.wait_status(volume=pytest.approx(volume), timeout=30)


def test_the_item_returns_with_a_panel_that_was_started_anew(item, screen):
    # The watcher of items is a program of its own, which says that all is well while there is no panel.
    screen.panel.stop(screen)
    screen.panel.start(screen)
    screen.still_picture(screen.panel_box, seconds=2.0)
    item.click()
    wait_for_menus(screen, 1)
