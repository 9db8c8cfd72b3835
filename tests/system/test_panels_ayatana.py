# SPDX-License-Identifier: GPL-3.0-or-later
"""A host of Ayatana indicators: it shows text beside the icon."""

import pytest
from panels_support import display, empty, item, popup, radio, screen, session  # noqa: F401
from zofralab.panels import IndicatorPanel
from zofralab.process import wait_until

PANEL = IndicatorPanel
pytestmark = pytest.mark.xdist_group("panels_ayatana")


def song_is(item, text):
    """Wait until the program knows of that song."""
    wait_until(lambda: text in item.radio.status()["song"], 30, f"the song {text}", 0.05)


def test_text_stands_beside_the_icon_and_follows_the_song(item, screen, empty, lab):
    assert item.radio.status()["tray"] == "hostmenu"
    song_is(item, "Harbour Lights")
    wait_until(lambda: lab.livefeed.sessions() and lab.livefeed.sessions()[0]["stations"], 30, "the live feed")
    lab.livefeed.song(station="zofra", artist="Ax", title="I")
    song_is(item, "Ax")
    screen.still_picture(screen.panel_box)
    short = screen.wait_for_item(empty)
    assert short.width > 2 * short.height, "more than an icon"
    shown = screen.picture(short)
    lab.livefeed.song(station="zofra", artist="The Considerably Longer Name", title="Of A Song")
    song_is(item, "Longer")
    long = wait_until(lambda: (lambda box: box.width > short.width + 60 and box)(screen.wait_for_item(empty)), 30,
                      "room for the longer text", 0.05)
    assert screen.picture(long).data != shown.data
    assert long.right <= screen.panel_box.right and screen.panel_box.contains(long)


def test_the_icon_can_be_seen(item, screen):
    icon = screen.picture(item.box._replace(width=item.box.height))
    assert icon.drawn() > 0.15


def test_the_click_opens_the_menu_that_the_host_draws(item, screen, ears):
    item.click()
    menu = wait_until(lambda: next((w for w in screen.windows("Wrapper-2.0") if w.box.height > 100), None), 30,
                      "the menu", 0.05)
    screen.still_picture(menu.box)
    assert screen.windows("zofrazofra") == []
    screen.click((menu.box.centre[0], menu.box.y + 12))
    ears.wait_for(("zofra", "aac"), 30)
    item.radio.wait_status(playing=True, timeout=30)


def test_the_wheel_changes_the_volume_and_the_text_tells_it(item, screen):
    before = screen.still_picture(screen.panel_box)
    screen.click(item.box.centre, 5)
    wait_until(lambda: screen.picture(screen.panel_box).difference(before), 30, "another text", 0.05)
    item.radio.wait_status(volume=pytest.approx(0.75), timeout=30)


def test_the_middle_click_opens_the_panel(item, screen):
    item.click(2)
    popup(screen)
