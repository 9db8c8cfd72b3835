# SPDX-License-Identifier: GPL-3.0-or-later
"""The module for waybar that docs/command-line.md gives, in the real bar."""

import json
import os
import re

import pytest
from conftest import ROOT
from panels_support import display, empty, radio, screen, session  # noqa: F401
from zofralab.panels import HEIGHT, Waybar
from zofralab.picture import Box
from zofralab.process import wait_until
from zofralab.wayland import SwayScreen

pytestmark = pytest.mark.xdist_group("command_line_waybar")


def documented_module():
    """Name and settings of the module, word for word."""
    with open(os.path.join(ROOT, "docs", "command-line.md"), encoding="utf-8") as file:
        block = re.search(r"```json\n(.*?)```", file.read(), re.S).group(1)
    (name, module), = json.loads("{" + block + "}").items()
    return name, module


class BarWithModule(Waybar):
    """The bar with that module at its left end, and nothing else."""

    def start(self, screen):
        folder = os.path.join(screen.home, "waybar")
        os.makedirs(folder, exist_ok=True)
        name, module = documented_module()
        with open(os.path.join(folder, "config"), "w", encoding="ascii") as file:
            json.dump({"layer": "top", "position": "top", "height": HEIGHT, "modules-left": [name], name: module}, file)
        with open(os.path.join(folder, "style.css"), "w", encoding="ascii") as file:
            file.write("window#waybar { background: #eef0f4; color: black; }\n"
                       "#custom-zofrazofra.playing { background: #000000; color: white; }\n")
        bin_dir = os.path.join(screen.home, "bin")
        os.makedirs(bin_dir, exist_ok=True)
        link = os.path.join(bin_dir, "zofrazofra")
        if not os.path.lexists(link):
            os.symlink(os.environ.get("ZOFRA_BINARY") or os.path.join(ROOT, "build", "release", "bin", "zofrazofra"), link)
        screen.environment["PATH"] = bin_dir + ":" + screen.environment.get("PATH", os.environ["PATH"])
        self._spawn(screen, "waybar")
        wait_until(lambda: screen.still_picture(screen.panel_box).drawn() == 0, 30, "the bar", 0.1)


PANEL = BarWithModule
SCREEN = SwayScreen


def left_end(screen):
    """How much is drawn where the module begins."""
    bar = screen.panel_box
    return screen.picture(Box(bar.x, bar.y, 60, bar.height)).drawn()


def test_the_bar_shows_the_radio_and_operates_it(radio, screen, lab):
    assert left_end(screen) == 0, "nothing while it is off"
    radio.start()
    wait_until(lambda: left_end(screen) > 0, 30, "the station in the bar", 0.1)
    stopped = screen.still_picture(screen.panel_box)
    screen.click((screen.panel_box.x + 15, screen.panel_box.centre[1]))
    radio.wait_status(playing=True, timeout=30)
    # What is data stays text: unescaped, the bar would show nothing of it.
    lab.livefeed.song(station="zofra", artist="Mira & Voss", title="<b>North")
    radio.wait_status(song="Mira & Voss – <b>North")
    wait_until(lambda: screen.picture(screen.panel_box).difference(stopped) is not None and left_end(screen) > 0.2, 30,
               "the song in the bar", 0.1)
    screen.click((screen.panel_box.x + 15, screen.panel_box.centre[1]), 2)
    radio.wait_status(station="qmusic", timeout=30)
    screen.click((screen.panel_box.x + 15, screen.panel_box.centre[1]), 5)
    wait_until(lambda: radio.status()["volume"] < 0.8, 30, "less volume", 0.1)
    radio.quit()
    screen.move(640, 600)  # the pointer is drawn, too
    wait_until(lambda: left_end(screen) == 0, 30, "nothing when it has ended", 0.1)
