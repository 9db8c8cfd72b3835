# SPDX-License-Identifier: GPL-3.0-or-later
"""No panel, a panel that comes late, and a message bus that is started anew below both."""

import time

import pytest
from panels_support import display, popup, radio, screen, session  # noqa: F401
from zofralab.panels import HEIGHT, WIDTH, LxqtPanel, Trayer
from zofralab.picture import Box
from zofralab.process import wait_until

PANEL = None
PROGRAM = "zofrazofra"
#: Where the panel shows its items.
CORNER = Box(WIDTH - 44, 6, 44, HEIGHT - 12)
pytestmark = pytest.mark.xdist_group("panels_none")


@pytest.fixture(params=[LxqtPanel])
def late_panel(request, screen):
    """A panel that is not there yet."""
    panel = request.param()
    if panel.missing():
        pytest.skip(f"not run: no {', '.join(panel.missing())} on this machine")
    yield panel
    panel.stop(screen)


def unasked(screen):
    """The window that stands in where there is no tray."""
    return screen.wait_for_window(PROGRAM, "Zofra Zofra")


def test_a_window_that_a_person_turned_to_stays(radio, screen, late_panel):
    radio.start(headless=False)
    window = unasked(screen)
    radio.ask()
    popup(screen)
    late_panel.start(screen)
    radio.wait_status(tray="direct", timeout=30)
    wait_until(lambda: screen.picture(CORNER).drawn() > 0.1, 30, "the item", 0.1)
    assert [w.identity for w in screen.windows(PROGRAM, "Zofra Zofra")] == [window.identity]


def test_the_window_ends_the_program_by_its_key(radio, screen):
    radio.start(headless=False)
    unasked(screen)
    radio.ask()
    popup(screen)
    screen.key("ctrl+q")
    assert radio.wait_end(30) == 0


@pytest.mark.parametrize("way", ["mouse", "Menu", "shift+F10"])
def test_the_menu_that_a_tray_would_show_opens_in_the_window_and_ends_the_program(radio, screen, way):
    radio.start(headless=False)
    unasked(screen)
    radio.ask()
    window = popup(screen)
    if way == "mouse":
        screen.click((window.box.x + 40, window.box.y + 30), 3)
    else:
        screen.key(way)
    menu = wait_until(lambda: next((w for w in screen.windows(PROGRAM) if not w.title), None), 30, "a menu", 0.05)
    wait_until(lambda: screen.picture(menu.box).drawn() > 0.02, 30, "something in the menu", 0.05)
    screen.key("q", "Return")
    assert radio.wait_end(30) == 0, "its line that begins with Q ends the program"


def test_without_a_tray_the_panel_is_an_ordinary_window(radio, screen):
    radio.start(headless=False)
    assert radio.status()["tray"] == "none" and screen.windows(PROGRAM) == [], "a panel may still come"
    window = unasked(screen)
    assert radio.status()["tray"] == "window"
    assert screen.server.active_window() != window.identity, "nobody has asked for it"
    radio.ask()
    assert popup(screen).identity == window.identity
    screen.key("Escape")
    wait_until(lambda: not screen.windows(PROGRAM), 30, "the panel to close", 0.05)
    done = radio.ask()
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")
    again = popup(screen)
    radio.ask()
    assert [w.identity for w in screen.windows(PROGRAM)] == [again.identity]
    # Return is the key of its closing button.
    screen.key("Return")
    wait_until(lambda: not screen.windows(PROGRAM), 30, "the panel to close", 0.05)
    assert radio.process.poll() is None, "closing the window ends nothing"


def test_a_second_start_brings_the_panel_before_other_windows(radio, screen):
    radio.start(headless=False)
    window = unasked(screen)
    process = screen.spawn("xev", "-geometry", "200x200+20+20")
    other = screen.wait_for_window(title="Event Tester")
    screen.click((100, 100))
    wait_until(lambda: screen.server.active_window() == other.identity, 30, "the other window's turn", 0.05)
    radio.ask()
    assert popup(screen).identity == window.identity
    screen.end(process)


def test_whoever_started_it_is_told_that_it_is_up(radio, screen):
    screen.server.listen_to_starts()
    told = []

    def waits_no_longer(identity):
        told.extend(screen.server.told_of_starts())
        return f'remove: ID="{identity}"' in told
    radio.environment["DESKTOP_STARTUP_ID"] = "launcher/7-with more than twenty letters_TIME4711"
    radio.start(headless=False)
    wait_until(lambda: waits_no_longer(radio.environment["DESKTOP_STARTUP_ID"]), 30, "the end of the start", 0.05)
    radio.environment["DESKTOP_STARTUP_ID"] = 'a "second" one_TIME4712'
    radio.ask()
    wait_until(lambda: waits_no_longer('a \\"second\\" one_TIME4712'), 30, "the end of the second start", 0.05)
    assert len(told) == 2, "each is told once"


@pytest.mark.parametrize("late_panel", [Trayer], indirect=True, ids=["trayer"])
def test_an_old_tray_that_comes_late_gets_the_icon(radio, screen, late_panel):
    radio.start(headless=False)
    unasked(screen)
    assert radio.status()["tray"] == "window"
    late_panel.start(screen)
    radio.wait_status(tray="xembed", timeout=30)
    wait_until(lambda: not screen.windows(PROGRAM, "Zofra Zofra"), 30, "the window to be withdrawn", 0.05)
    wait_until(lambda: screen.picture(CORNER).drawn() > 0.1, 30, "the icon", 0.1)


@pytest.mark.slow
def test_a_panel_ten_seconds_late_and_a_new_bus_get_the_item(radio, screen, late_panel, session):
    radio.start(headless=False)
    unasked(screen)
    wait_until(lambda: time.monotonic() - radio.started_at > 10, 30, "ten seconds", 0.1)
    late_panel.start(screen)
    radio.wait_status(tray="direct", timeout=30)
    wait_until(lambda: screen.picture(CORNER).drawn() > 0.1, 30, "the item", 0.1)
    wait_until(lambda: not screen.windows(PROGRAM, "Zofra Zofra"), 30, "the window to be withdrawn", 0.05)
    late_panel.stop(screen)
    radio.wait_status(tray="none", timeout=30)
    session.session_bus.stop()
    session.session_bus.start()
    late_panel.start(screen)

    def answers():
        return radio.ask("--status", "--json").returncode == 0
    wait_until(answers, 30, "the program on the new bus", 0.1)
    radio.wait_status(tray="direct", timeout=30)
    wait_until(lambda: screen.picture(CORNER).drawn() > 0.1, 30, "the item", 0.1)
