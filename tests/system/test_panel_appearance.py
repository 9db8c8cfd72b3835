# SPDX-License-Identifier: GPL-3.0-or-later
"""Light and dark: the panel and the menu as the desktop says, from the first opening on."""

import os
import re
import signal
import subprocess
import time

import pytest
from gi.repository import GLib
from zofralab.picture import Picture
from zofralab.portal import Portal
from zofralab.process import wait_until

# Of the panel's ground, and of the menu's.
LIGHT, DARK = (0xfb, 0xfb, 0xfd), (0x1f, 0x20, 0x24)
LIGHT_MENU, DARK_MENU = (0xff, 0xff, 0xff), (0x29, 0x2a, 0x2f)


@pytest.fixture
def shown(radio, status_bar, display):
    """Start it so that clicks reach it; gives a function that clicks and one that looks."""
    radio.write_section("tray", mode="direct")

    def start():
        radio.start(headless=False)
        item = status_bar.wait_for_item(30)

        def click(method):
            item.peer.connection.call(item.name, item.path, "org.kde.StatusNotifierItem", method,
                                      GLib.Variant("(ii)", (400, 5)), None, 0, 30000, None, None)
        return click

    def grounds():
        raw = subprocess.run(["import", "-window", "root", "-depth", "8", "ppm:-"], check=True, capture_output=True,
                             timeout=60, env={**radio.environment, "DISPLAY": display.name}).stdout
        picture = Picture.from_ppm(raw)
        colours = {}
        for at in range(0, len(picture.data), 3 * 7):
            colour = tuple(picture.data[at:at + 3])
            colours[colour] = colours.get(colour, 0) + 1
        return colours

    def wait_ground(colour):
        wait_until(lambda: grounds().get(colour, 0) > 2000, 30, f"ground of {colour}", 0.1)

    return start, wait_ground


def test_the_first_panel_is_dark_on_a_dark_desktop_and_follows_a_change(shown, bus):
    start, wait_ground = shown
    portal = Portal(bus, "dark").appear()
    click = start()
    wait_until(lambda: portal.asked_at, 30, "the question at the start")
    click("ContextMenu")
    wait_ground(DARK)
    portal.become("light")
    wait_ground(LIGHT)
    portal.become("dark")
    wait_ground(DARK)
    assert len(portal.asked_at) == 1, "the answer is kept"


def test_the_menu_is_as_dark_as_the_panel_and_follows_a_change_while_it_is_open(shown, bus, radio):
    start, wait_ground = shown
    portal = Portal(bus, "dark").appear()
    click = start()
    wait_until(lambda: portal.asked_at, 30, "the question at the start")
    radio.status()  # messages arrive in order: once this is answered, so was the program's question
    click("Activate")
    wait_ground(DARK_MENU)
    portal.become("light")
    wait_ground(LIGHT_MENU)
    portal.become("dark")
    wait_ground(DARK_MENU)


def test_a_portal_that_comes_after_the_program_is_asked_when_it_comes(shown, bus):
    start, wait_ground = shown
    click = start()
    click("ContextMenu")
    wait_ground(LIGHT)
    Portal(bus, "dark").appear()
    wait_ground(DARK)


def test_without_a_portal_the_menu_is_light(shown):
    start, wait_ground = shown
    click = start()
    click("Activate")
    wait_ground(LIGHT_MENU)


def test_what_the_first_click_needs_is_there_before_and_nothing_is_shown_meanwhile(shown, radio, display):
    start, _wait_ground = shown
    start()

    def mapped():
        with open(f"/proc/{radio.pid}/maps", encoding="utf-8") as file:
            return file.read()
    # Reading the fonts is the longest part of a first opening.
    wait_until(lambda: "/share/fonts/" in mapped(), 30, "the fonts")
    tree = subprocess.run(["xwininfo", "-root", "-tree"], check=True, capture_output=True, text=True, timeout=60,
                          env={**radio.environment, "DISPLAY": display.name}).stdout
    for number in re.findall(r"^ +(0x[0-9a-f]+) ", tree, re.M):
        about = subprocess.run(["xwininfo", "-id", number], check=False, capture_output=True, text=True, timeout=60,
                               env={**radio.environment, "DISPLAY": display.name}).stdout
        assert "IsViewable" not in about, about


def test_a_bus_that_hangs_after_the_start_does_not_hang_the_program(shown, radio, session):
    start, _wait_ground = shown
    start()
    os.kill(session.session_bus.pid, signal.SIGSTOP)
    try:
        time.sleep(5)  # past the moment in which the first opening is prepared
        radio.process.send_signal(signal.SIGTERM)
        assert radio.wait_end(15) == 0
    finally:
        os.kill(session.session_bus.pid, signal.SIGCONT)


def test_a_bus_that_hangs_before_a_panel_came_does_not_hang_the_program(radio, session, display):
    radio.start(headless=False)
    os.kill(session.session_bus.pid, signal.SIGSTOP)
    try:
        time.sleep(7)  # past the moment in which another way to be seen is looked for
        radio.process.send_signal(signal.SIGTERM)
        assert radio.wait_end(15) == 0
    finally:
        os.kill(session.session_bus.pid, signal.SIGCONT)
