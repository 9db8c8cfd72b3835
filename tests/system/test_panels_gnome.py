# SPDX-License-Identifier: GPL-3.0-or-later
"""GNOME on Wayland with the extension for status items: it draws the menu, with the text beside the icon.

Its wheel is not tried here: the extension takes smooth turns only, and a shell in a window is given notches only."""

import pytest
from panels_support import calm, close_menus, display, drawn_menu, empty, item, radio, screen, session  # noqa: F401
from zofralab.picture import Box
from zofralab.process import wait_until
from zofralab.screen import NestedScreen
from zofralab.shells import GnomeOnWayland

PANEL = GnomeOnWayland
SCREEN = NestedScreen
#: Where the shell names the window in front.
IN_FRONT = Box(120, 0, 160, 28)
pytestmark = [pytest.mark.whole_desktop, pytest.mark.xdist_group("panels_gnome")]


def test_icon_and_text_are_shown_and_the_shell_draws_the_menu_and_its_submenus(item, screen, lab):
    assert item.radio.status()["tray"] == "hostmenu"
    assert item.box.width > 5 * item.box.height, "the song beside the icon"
    for song in ("The First Song", "Another Song"):
        lab.livefeed.song(station="zofra", artist="Mira Voss", title=song)
        wait_until(lambda song=song: song in item.radio.status()["song"], 30, "the song", 0.1)
        before = calm(screen)
        screen.click((item.box.right - 20, item.box.centre[1]))
        menu = drawn_menu(screen, before)
        opened = screen.still_picture(screen.below_panel, seconds=0.3)
        # The shell opens submenus within the menu. The second line is the stations'.
        screen.click((menu.x + 300, 99))
        wait_until(lambda: drawn_menu(screen, opened).height > menu.height, 30, "nine stations more", 0.1)
        close_menus(screen, before)


def test_the_right_click_opens_the_same_menu(item, screen):
    before = calm(screen)
    item.click(3)
    assert drawn_menu(screen, before).height > 150
    screen.key("Escape")


def test_the_middle_click_opens_the_panel_which_the_shell_knows(item, screen):
    before, nobody = calm(screen), screen.picture(IN_FRONT)
    item.click(2)
    window = drawn_menu(screen, before)
    assert window.width > 300 and window.height > 300
    assert screen.picture(IN_FRONT).difference(nobody), "its name is in the bar"


def test_the_shells_search_finds_a_station_and_plays_it(item, screen):
    screen.key("Super_L")
    nothing = screen.still_picture(screen.below_panel, seconds=1.0)
    screen.key("j", "o", "e")
    wait_until(lambda: screen.still_picture(screen.below_panel, seconds=1.0).difference(nothing), 30, "results", 0.1)
    screen.click((408, 303))
    item.radio.wait_status(station="joe", playing=True, timeout=30)
