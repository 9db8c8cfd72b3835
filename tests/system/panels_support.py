# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests with real panels share. A file of them names its panel (`PANEL`), and imports these fixtures: session,
screen and panel are started once for the file, the program for every test."""

from types import SimpleNamespace

import pytest
from zofralab.lab import program_environment
from zofralab.picture import Box
from zofralab.process import wait_until
from zofralab.screen import VirtualScreen
from zofralab.session import Session


@pytest.fixture(scope="module")
def session(running_lab):
    """A person's session, for all tests of the file."""
    with Session(running_lab.run_dir, with_sound=False) as one:
        yield one


@pytest.fixture(scope="module")
def reader(session):
    """A screen reader's ears; only started where the file needs it."""
    from zofralab.accessible import ScreenReader
    if ScreenReader.missing():
        pytest.skip(f"not run: no {', '.join(ScreenReader.missing())} on this machine")
    one = ScreenReader(session)
    try:
        yield one.start()
    finally:
        one.stop()


@pytest.fixture(scope="module")
def screen(request, running_lab, session, tmp_path_factory):
    """A screen with the panel of the file, and nothing in it."""
    kind = getattr(request.module, "SCREEN", VirtualScreen)
    panel = request.module.PANEL() if request.module.PANEL else None
    missing = kind.missing() + (panel.missing() if panel else [])
    if missing:
        pytest.skip(f"not run: no {', '.join(missing)} on this machine")
    one = kind(str(tmp_path_factory.mktemp("screen")), program_environment(running_lab, session),
                        running_lab.enter("/"), panel)
    try:
        one.start()
        one.move(*one.rest)
        yield one
    finally:
        one.stop()


@pytest.fixture(scope="module")
def empty(screen):
    """The panel without an item. Its parts come one after the other, on a crowded machine with pauses between them."""
    return screen.still_picture(screen.panel_box, seconds=2.0)


@pytest.fixture(scope="module")
def display(screen):
    """The display of that screen, as far as it has one."""
    return getattr(screen, "display", None) or SimpleNamespace(name="")


@pytest.fixture
def radio(make_radio, screen):
    """The program, not started yet, at home on the desktop of that screen."""
    one = make_radio()
    one.environment.pop("DISPLAY", None)
    one.environment.update(screen.variables)
    return one


def popup(screen):
    """The popup panel's window, waited for until it has the keyboard."""
    window = screen.wait_for_window("zofrazofra", "Zofra Zofra")
    wait_until(lambda: screen.server.active_window() == window.identity, 30, "the keyboard", 0.05)
    return window


def own_menus(screen):
    """The menus of the program's own drawing that can be seen."""
    return [w for w in screen.windows("zofrazofra") if not w.title and w.box.height > 60]


def wait_for_menus(screen, count):
    """Wait until so many of them can be seen. One that is painted has the keyboard."""
    def are_there():
        found = own_menus(screen)
        return len(found) == count and all(screen.picture(menu.box).drawn() > 0.02 for menu in found) and (found or True)
    return wait_until(are_there, 30, f"{count} menus", 0.05)


def calm(screen, pointer=None):
    """What is below the panel while no menu is open and the pointer rests at a place, else far from all of it."""
    screen.move(*(pointer or screen.rest))
    return screen.still_picture(screen.below_panel, seconds=0.5)


def drawn_menu(screen, before):
    """Where the menu is that the panel has opened since that picture, once it stands still."""
    def opened():
        now = screen.still_picture(screen.below_panel, seconds=0.3)
        return now.difference(before)
    box = wait_until(opened, 30, "a menu", 0.1)
    return Box(box.x, box.y + screen.below_panel.y, box.width, box.height)


def close_menus(screen, before):
    """Press Escape, which closes one menu after the other, until all is as in that picture."""
    def closed():
        screen.key("Escape")
        return calm(screen).difference(before) is None
    wait_until(closed, 30, "no menu", 0.1)


class Item:
    """The program's item in a panel."""

    def __init__(self, radio, screen, box):
        self.radio = radio
        self.screen = screen
        self.box = box

    def click(self, button=1):
        """Click on it."""
        self.screen.click(self.box.centre, button)


@pytest.fixture
def item(radio, screen, empty):
    """The program, running, with its item in the panel."""
    screen.move(*screen.rest)
    screen.wait_for_no_item(empty)
    radio.start(headless=False)
    yield Item(radio, screen, screen.wait_for_item(empty))
    radio.stop()
