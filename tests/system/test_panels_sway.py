# SPDX-License-Identifier: GPL-3.0-or-later
"""sway with waybar: the menu is drawn by the bar, the popup panel floats, and nothing of ours is ever tiled."""

import pytest
from panels_support import calm, display, drawn_menu, empty, item, radio, reader, screen, session  # noqa: F401
from zofralab.panels import Waybar
from zofralab.process import wait_until
from zofralab.wayland import SwayScreen

PANEL = Waybar
SCREEN = SwayScreen
pytestmark = pytest.mark.xdist_group("panels_sway")



def popup(screen):
    """The popup panel as sway knows it, waited for."""
    return wait_until(lambda: next((w for w in screen.windows() if w["name"] == "Zofra Zofra"), None), 30,
                      "the popup panel", 0.1)


def test_the_item_can_be_seen_and_the_bar_draws_its_menu(item, screen):
    assert item.radio.status()["tray"] == "hostmenu"
    assert screen.picture(item.box).drawn() > 0.2
    before = calm(screen, item.box.centre)
    item.click()
    menu = drawn_menu(screen, before)
    assert menu.width > 200 and menu.height > 150
    assert screen.windows() == [], "no window at all, tiled or floating"
    screen.click((300, 700))


def test_an_entry_chosen_with_the_mouse_plays(item, screen, ears):
    before = calm(screen, item.box.centre)
    item.click()
    menu = drawn_menu(screen, before)
    # The bar itself covers the menu's upper edge.
    screen.click((menu.centre[0], screen.panel_box.bottom - 2))
    ears.wait_for(("zofra", "aac"), 30)
    item.radio.wait_status(playing=True, timeout=30)


def test_the_right_click_opens_the_menu_and_no_window(item, screen):
    before = calm(screen, item.box.centre)
    item.click(3)
    assert drawn_menu(screen, before).height > 150
    assert screen.windows() == []
    screen.click((300, 700))


def test_the_panel_opens_floating_with_the_keyboard_and_once(item, screen):
    item.click(2)
    window = popup(screen)
    assert screen.windows(floating=False) == []
    assert window["app_id"] == "be.zofra.ZofraZofra"
    wait_until(lambda: popup(screen)["focused"], 30, "the keyboard", 0.1)
    place = window["rect"]
    assert place["width"] < 450 and place["height"] < 600
    item.click(2)
    item.radio.ask()
    assert [w["id"] for w in screen.windows()] == [window["id"]]
    screen.run("swaymsg", f"[con_id={window['id']}]", "kill")
    wait_until(lambda: screen.windows() == [], 30, "the panel to close", 0.1)
    item.radio.ask()
    assert popup(screen)["id"] != window["id"]
    assert screen.windows(floating=False) == []


def test_the_panels_menus_are_no_windows(item, screen, reader):
    item.radio.ask()
    window = popup(screen)
    whole = reader.application("zofrazofra").children[0]
    button = next(thing for thing in whole.everything() if thing.name == "Station: Zofra").box.centre
    before = screen.still_picture(screen.below_panel)
    # No program of this kind knows where its windows are: what it tells is where the button is in the window.
    inside = [place - origin for place, origin in zip(button, whole.box)]
    screen.click((window["rect"]["x"] + window["window_rect"]["x"] + inside[0],
                  window["rect"]["y"] + window["window_rect"]["y"] + inside[1]))
    wait_until(lambda: (lambda box: box is not None and box.height > 150)(
        screen.still_picture(screen.below_panel).difference(before)), 30, "the menu of stations", 0.1)
    assert [w["id"] for w in screen.windows()] == [window["id"]]


def test_one_notch_of_the_wheel_is_one_step(item, screen):
    item.radio.wait_status(volume=pytest.approx(0.8), timeout=30)
    screen.click(item.box.centre, 5)
    item.radio.wait_status(volume=pytest.approx(0.75), timeout=30)
    screen.click(item.box.centre, 5)
    item.radio.wait_status(volume=pytest.approx(0.7), timeout=30)
    screen.click(item.box.centre, 4)
    item.radio.wait_status(volume=pytest.approx(0.75), timeout=30)


def test_the_item_returns_with_a_bar_that_was_started_anew(item, screen, empty):
    screen.panel.stop(screen)
    item.radio.wait_status(tray="none", timeout=30)
    screen.panel.start(screen)
    item.radio.wait_status(tray="hostmenu", timeout=30)


def test_direct_is_the_users_own_wish_and_still_tiles_nothing(radio, screen, empty):
    radio.write_section("tray", mode="direct")
    radio.start(headless=False)
    radio.wait_status(tray="direct", timeout=30)
    screen.click(screen.wait_for_item(empty).centre)
    popup(screen)
    assert screen.windows(floating=False) == []
