# SPDX-License-Identifier: GPL-3.0-or-later
"""LXQt's panel: it passes both clicks on, the menu is of our own drawing. And what a screen reader hears of all of it."""

import re

import pytest
from panels_support import display, empty, item, popup, radio, reader, screen, session  # noqa: F401
from zofralab.panels import LxqtPanel
from zofralab.process import wait_until
from zofralab.stations import STATIONS

PANEL = LxqtPanel
PROGRAM = "zofrazofra"
pytestmark = pytest.mark.xdist_group("panels_lxqt")


def menus(screen):
    """The menus of the program's own drawing that can be seen."""
    return [w for w in screen.windows(PROGRAM) if not w.title]


def wait_for_menus(screen, count):
    """Wait until so many can be seen. One that is painted has the keyboard."""
    def are_there():
        found = menus(screen)
        return len(found) == count and all(screen.picture(menu.box).drawn() > 0.02 for menu in found)
    wait_until(are_there, 30, f"{count} menus", 0.05)


def open_menu(item, reader):
    """Click with the left button; the menu as a screen reader sees it once a key has moved into it."""
    reader.forget()
    item.click()
    wait_for_menus(item.screen, 1)
    reader.application(PROGRAM)
    item.screen.key("Down")
    return reader.focused("Play Radio").parent


def test_the_item_can_be_seen(item, screen):
    assert screen.picture(item.box).drawn() > 0.2
    assert 8 <= item.box.width <= 36 and 8 <= item.box.height <= 36
    assert item.box.right > screen.panel_box.right - 60
    assert item.radio.status()["tray"] == "direct"


def test_the_icon_tells_whether_the_radio_plays(item, screen):
    stopped = screen.still_picture(screen.panel_box)
    item.radio.ask("--play")
    wait_until(lambda: screen.picture(screen.panel_box).difference(stopped), 30, "another icon", 0.1)


def test_the_left_click_opens_our_menu_at_the_button(item, screen, reader):
    open_menu(item, reader)
    menu = menus(screen)[0]
    assert menu.box.y == screen.panel_box.bottom, "just below the panel"
    assert menu.box.x <= item.box.x <= menu.box.right
    screen.key("Escape")
    wait_for_menus(screen, 0)
    item.click()
    wait_for_menus(screen, 1)
    item.click()
    screen.still_picture()
    assert len(menus(screen)) <= 1, "closed, or opened anew, but never twice"


def test_a_screen_reader_hears_the_names_of_the_menus_items(item, screen, reader):
    menu = open_menu(item, reader)
    names = [child.name for child in menu.children if child.role != "separator"]
    assert names[:4] == ["Play Radio", "Station (Zofra)", "Audio Output (This Mac)", "Volume (80 %)"]
    assert names[4].startswith("Now Playing: ") and names[-2:] == ["About Zofra Zofra", "Quit Zofra Zofra"]
    assert {child.role for child in menu.children} == {"menu item", "separator"}
    screen.key("Down", "Right")
    first = reader.focused(f"{STATIONS[0].title} – {STATIONS[0].genre}")
    assert "checked" in first.states
    assert [child.name for child in first.parent.children] == [f"{s.title} – {s.genre}" for s in STATIONS]


def test_letters_go_to_a_line_and_the_menus_key_works_in_its_submenus(item, screen, reader):
    open_menu(item, reader)
    screen.key("s")
    reader.focused("Station (Zofra)")
    screen.key("Right", "q")
    reader.focused("Qmusic – Hits & Pop")
    screen.key("ctrl+p")
    wait_for_menus(screen, 0)
    item.radio.wait_status(playing=True, station="zofra", timeout=30)


def test_what_is_only_said_in_the_menu_can_be_read(item, screen, reader):
    open_menu(item, reader)
    reader.forget()
    screen.key("n")
    assert reader.focused().name.startswith("Now Playing: ")
    screen.key("Return")
    assert len(menus(screen)) == 1, "there is nothing to choose"


def test_a_station_chosen_with_the_mouse_is_heard(item, screen, reader, ears):
    menu = open_menu(item, reader)
    screen.glide(menu.children[0].box.centre, menu.child("Station (Zofra)").box.centre)
    wait_for_menus(screen, 2)
    stations = menu.child("Station (Zofra)").children[0]
    # First sideways: a pointer that leaves across the other entries closes the submenu.
    entry = stations.child("JOE – 80s, 90s & Pop Classics").box
    screen.move(stations.children[1].box.centre[0], menu.child("Station (Zofra)").box.centre[1])
    screen.click(entry.centre)
    wait_for_menus(screen, 0)
    item.radio.wait_status(station="joe", timeout=30)
    item.click()
    wait_for_menus(screen, 1)
    screen.click(menu_entry(reader, screen, "Play Radio").box.centre)
    ears.wait_for(("joe", "aac"), 30)
    assert item.radio.status()["playing"] is True


def menu_entry(reader, screen, name):
    """An entry of the menu that is open."""
    reader.forget()
    screen.key("Down")
    return reader.focused().parent.child(name)


def test_the_right_click_opens_the_panel_and_gives_it_the_keyboard(item, screen):
    item.click(3)
    window = popup(screen)
    assert menus(screen) == []
    # Another window takes the keyboard, so that the second click has something to do.
    process = screen.spawn("xev", "-geometry", "200x200+20+80")
    other = screen.wait_for_window(title="Event Tester")
    screen.click((100, 200))
    wait_until(lambda: screen.server.active_window() == other.identity, 30, "the other window's turn", 0.05)
    item.click(3)
    assert popup(screen).identity == window.identity
    assert [w.identity for w in screen.windows(PROGRAM)] == [window.identity]
    screen.end(process)
    screen.click(window.box.centre)
    wait_until(lambda: screen.server.active_window() == window.identity, 30, "the panel's turn", 0.05)
    screen.key("Escape")
    wait_until(lambda: not screen.windows(PROGRAM), 30, "the panel to close", 0.05)


def test_the_middle_click_opens_the_panel_too(item, screen):
    item.click(2)
    popup(screen)


def test_the_panel_can_be_moved_and_closed_and_nothing_else(item, screen):
    item.click(3)
    window = popup(screen)
    hints = screen.run("xprop", "-id", str(window.identity))
    functions, decorations = re.search(r"_MOTIF_WM_HINTS\) = 0x3, (0x[0-9a-f]+), (0x[0-9a-f]+)", hints).groups()
    move, minimise, maximise, close = 0x4, 0x8, 0x10, 0x20
    assert int(functions, 16) & (move | minimise | maximise | close) == move | close
    title, minimise_button, maximise_button = 0x8, 0x20, 0x40
    assert int(decorations, 16) & (title | minimise_button | maximise_button) == title
    sizes = [re.search(rf"program specified {which} size: (\d+ by \d+)", hints).group(1)
             for which in ("minimum", "maximum")]
    assert sizes == [f"{window.box.width} by {window.box.height}"] * 2
    assert "MAXIMIZE" not in hints and "_NET_WM_ACTION_RESIZE" not in hints
    assert abs(window.box.centre[0] - screen.panel_box.width // 2) <= 2, "in the middle of the screen"


def test_the_wheel_changes_the_volume_and_shows_it_at_once(item, screen):
    screen.click(item.box.centre, 5)
    tip = screen.wait_for_window(PROGRAM)
    assert screen.picture(tip.box).drawn() > 0.02 and tip.box.height < 40, "a tip with something in it"
    item.radio.wait_status(timeout=30, volume=pytest.approx(0.75))
    screen.click(item.box.centre, 4)
    screen.click(item.box.centre, 4)
    item.radio.wait_status(timeout=30, volume=pytest.approx(0.85))


def test_everything_in_the_panel_has_a_name_and_is_reached_by_the_keyboard(item, screen, reader):
    reader.application(PROGRAM)  # so early that nobody listens yet, a window would not be told
    reader.forget()
    item.click(3)
    popup(screen)
    window = reader.application(PROGRAM).children[0]
    assert (window.role, window.name) == ("frame", "Zofra Zofra")
    whole = window.everything()
    operated = {"push button", "check box", "slider", "radio button", "button menu"}
    # Of the languages, which are one group, Tab reaches the current one.
    wanted = ["English", "Station: Zofra", "Output: This Mac", "Play", "Volume", "Write to us", "Start automatically",
              "Close Window"]
    reachable = [thing for thing in whole if "focusable" in thing.states and thing.role != "filler"]
    assert [thing.name for thing in reachable] == [wanted[0], "Nederlands", "Français", "Deutsch", *wanted[1:]]
    assert {thing.role for thing in reachable} <= operated
    opening = [thing for thing in reachable if thing.role == "button menu"]
    assert [thing.name for thing in opening] == ["Station: Zofra", "Output: This Mac"]
    assert all("expandable" in thing.states and "expanded" not in thing.states for thing in opening)
    assert [thing.name for thing in whole if thing.role == "radio button"] == ["English", "Nederlands", "Français", "Deutsch"]
    assert [thing for thing in whole if not thing.name or thing.role == "filler"] == []
    assert [thing for thing in whole if thing.description == thing.name] == []
    assert any("Harbour Lights" in thing.name for thing in whole if thing.role == "label")
    assert reader.focused().name == "Close Window", "the keyboard starts on a control"
    order = []
    for name in wanted:
        screen.key("Tab")
        order.append(reader.focused(name).name)
    assert order == wanted
    screen.key("Tab")
    assert reader.focused(wanted[0]).name == wanted[0], "round and round"
    screen.key("Tab", "space")
    wait_until(lambda: "expanded" in opening[0].states, 30, "the button to say that its menu is open", 0.05)


def test_the_panels_play_button_works_by_keyboard(item, screen, reader, ears):
    reader.forget()
    item.click(3)
    popup(screen)
    for name in ("English", "Station: Zofra", "Output: This Mac", "Play"):
        screen.key("Tab")
        reader.focused(name)
    screen.key("space")
    ears.wait_for(("zofra", "aac"), 30)
    reader.focused("Stop")


def test_the_item_returns_with_a_panel_that_was_started_anew(item, screen, empty, reader):
    screen.panel.stop(screen)
    item.radio.wait_status(tray="none", timeout=30)
    screen.panel.start(screen)
    item.radio.wait_status(tray="direct", timeout=30)
    item.box = screen.wait_for_item(empty)
    open_menu(item, reader)


def test_the_setting_overrules_the_panels_kind(radio, screen, empty, bus):
    screen.wait_for_no_item(empty)
    radio.write_section("tray", mode="hostmenu")
    radio.start(headless=False)
    radio.wait_status(tray="hostmenu", timeout=30)
    box = screen.wait_for_item(empty)
    screen.click(box.centre, 3)
    # Now the panel draws the menu, and asks us for it.
    wait_until(lambda: [w for w in screen.windows(kind="lxqt-panel") if w.box.height > 100], 30,
               "a menu of the panel's drawing", 0.05)
    assert menus(screen) == []
    screen.key("Escape")
