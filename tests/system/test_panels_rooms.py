# SPDX-License-Identifier: GPL-3.0-or-later
"""The panel's output menu and the rooms of a house: chosen by keyboard, seen at the players."""

import pytest
from panels_support import display, popup, radio, reader, screen, session  # noqa: F401
from zofralab.process import wait_until

PANEL = None
BEAM = "10.77.0.11"
pytestmark = pytest.mark.xdist_group("panels_rooms")


@pytest.fixture
def panel(radio, screen, reader, lab):
    """The program with its panel open, having found the house."""
    lab.household.scene(scene="twelve")
    reader.forget()
    radio.start("--play", "zofra", headless=False, discovery=True)
    screen.wait_for_window("zofrazofra", "Zofra Zofra")
    radio.ask()  # the window that comes by itself leaves the keyboard where it is
    popup(screen)
    wait_until(lambda: radio.status()["rooms"] and not radio.status()["scanning"], 60, "the rooms", 0.2)
    yield radio
    radio.stop()


def transport(lab):
    return lab.household.player(player=BEAM)["transport"]


def choose(screen, reader, output, entry):
    """Open the output menu, which shows `output`, and go down to the entry of that name."""
    for name in ("English", "Station: Zofra", f"Output: {output}"):
        screen.key("Tab")
        reader.focused(name)
    reader.forget()
    screen.key("space")
    for _ in range(20):
        screen.key("Down")
        focused = reader.focused()
        if focused.name == entry:
            break
        reader.forget()
    screen.key("Return")


def test_a_room_chosen_in_the_panel_takes_the_sound_over(panel, screen, reader, lab, ears):
    ears.wait_for(("zofra", "aac"), 30)
    choose(screen, reader, "This Mac", "Living Room")
    wait_until(lambda: "zofra.mp3" in transport(lab)["uri"] and transport(lab)["state"] == "PLAYING", 30, "the room to play")
    ears.wait_for(None, 30)
    assert panel.status()["output_title"] == "Living Room", "it is the target, as from the menu"
