# SPDX-License-Identifier: GPL-3.0-or-later
"""Cinnamon: its watcher passes both clicks on, and turns the wheel the other way round."""

import pytest
from panels_support import (display, empty, item, own_menus, popup, radio, screen, session,  # noqa: F401
                            wait_for_menus)
from zofralab.picture import Box
from zofralab.process import wait_until
from zofralab.shells import Cinnamon

PANEL = Cinnamon
PROGRAM = "zofrazofra"
#: Where the panel shows windows.
TASKS = Box(0, 0, 600, 36)
pytestmark = [pytest.mark.whole_desktop, pytest.mark.xdist_group("panels_cinnamon")]


def test_the_left_click_opens_our_menu_below_the_panel_with_round_corners(item, screen):
    assert item.radio.status()["tray"] == "direct"
    assert screen.picture(item.box).drawn() > 0.1
    below = screen.still_picture()
    item.click()
    menu = wait_for_menus(screen, 1)[0]
    assert menu.box.y >= screen.panel_box.bottom and menu.box.x <= item.box.x <= menu.box.right
    corner = Box(menu.box.x, menu.box.bottom - 1, 1, 1)
    assert screen.picture(corner).data == below.crop(corner).data, "what is below the menu is seen there"


def test_the_right_and_the_middle_click_open_the_panel_whom_the_task_bar_knows(item, screen):
    before = screen.picture(TASKS)
    item.click(3)
    window = popup(screen)
    assert own_menus(screen) == []
    wait_until(lambda: screen.picture(TASKS).difference(before), 30, "a window in the task bar", 0.1)
    item.click(2)
    assert [w.identity for w in screen.windows(PROGRAM)] == [window.identity]


def test_one_notch_of_the_wheel_is_one_step_in_its_own_direction(item, screen):
    item.radio.wait_status(volume=pytest.approx(0.8), timeout=30)
    for button, volume in ((5, 0.75), (5, 0.7), (4, 0.75)):
        screen.click(item.box.centre, button)
        item.radio.wait_status(volume=pytest.approx(volume), timeout=30)
