# SPDX-License-Identifier: GPL-3.0-or-later
"""How work grows with what there is: players in a house, songs, rooms in the menu. Instructions, so that the exponent is not noise."""

import math

import counts

PLAYERS = (1, 8, 32, 64)
SONGS = (1, 8, 64)
ROOMS = (0, 30, 200)


def exponent(points):
    """Of the growth between the two largest sizes: 1 is in proportion, 2 is the square."""
    (small, less), (large, more) = points[-2:]
    return math.log(more / less) / math.log(large / small)


def run(stage, _seconds):
    """Every row."""
    stage.heading("Work against size (instructions)")
    found = []
    for players in PLAYERS:
        taken = counts.search(stage, players=players)[f"a search of {players} players"]
        found.append((players, taken["instructions"]))
        stage.row(f"a search of {players} players", f"{taken['instructions'] / 1e6:.1f} million", "", **taken)
    stage.row("search: exponent from 32 to 64 players", f"{exponent(found):.2f}", "<= 1.2")
    found = []
    for songs, taken in counts.songs_at_once(stage, SONGS):
        found.append((songs, taken["instructions"]))
        stage.row(f"{songs} songs at once" if songs > 1 else "a song", f"{taken['instructions'] / 1e6:.2f} million", "", **taken)
    stage.row("songs: exponent from 8 to 64 at once", f"{exponent(found):.2f}", "<= 1")
    found = []
    for rooms in ROOMS:
        taken = counts.menu_with(stage, rooms)
        found.append((rooms, taken["instructions"]))
        stage.row(f"a menu of {rooms} rooms", f"{taken['instructions'] / 1e6:.2f} million", "", **taken)
    stage.row("menu: exponent from 30 to 200 rooms", f"{exponent(found):.2f}", "<= 1.1")
