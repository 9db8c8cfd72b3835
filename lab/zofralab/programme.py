# SPDX-License-Identifier: GPL-3.0-or-later
"""What every station is playing: one truth for the live feed, the on-air service and the scraper."""

import time
from dataclasses import dataclass

from .stations import INDEX, station as find_station

#: Invented. Some carry what a careless program would trip over.
SONGS = (
    ("The Paper Lanterns", "Harbour Lights"), ("Émilie Dùval", "Les Années d'été"), ("Salt & Iron", "Northbound"),
    ("De Laatste Tram", "Zonder Jou"), ("Kowalski 3", "Signal / Noise"), ("Mira Voss", "Über den Dächern"),
    ("The Hollow Ships", "(Don't) Turn Around"), ("Oak_and_Ash", "50_50"), ("Ana Bélisle", "Où sont nos matins"),
    ("Cobalt Avenue", "Running \"Late\""), ("Sint-Jansplein", "Één Zomer"), ("Novak & Daughters", "Tell <Me> More"),
)
SONG_SECONDS = 180


@dataclass
class Song:
    """One song on the air."""

    artist: str
    title: str
    started: float

    @property
    def text(self):
        """As the program is to show it."""
        return f"{self.artist} – {self.title}" if self.artist and self.title else self.title or self.artist


class Programme:
    """Per station: the song on the air and the one after it."""

    def __init__(self):
        self._position = {}
        self._song = {}
        self._next = {}
        self.reset()

    def reset(self):
        """Every station at its first song."""
        self._position = {raw: index for raw, index in INDEX.items()}
        self._next.clear()
        for raw in INDEX:
            self._set_from_list(raw)

    def advance(self, raw):
        """On to the next song of the list."""
        self._position[find_station(raw).raw] += 1
        self._set_from_list(raw)

    def set(self, raw, artist, title, next_artist=None, next_title=None):
        """Play this now; without a next song when none is given."""
        raw = find_station(raw).raw
        self._song[raw] = Song(artist, title, time.time())
        self._next[raw] = None if next_title is None and next_artist is None else (next_artist or "", next_title or "")

    def stations(self):
        """All raw values."""
        return list(self._song)

    def song(self, raw):
        """What is on the air."""
        return self._song[find_station(raw).raw]

    def next(self, raw):
        """(artist, title) of the next song, or None."""
        return self._next[find_station(raw).raw]

    def _set_from_list(self, raw):
        at = self._position[raw]
        # Began a while ago, so that it is on the air by every clock.
        self._song[raw] = Song(*SONGS[at % len(SONGS)], time.time() - 30)
        self._next[raw] = SONGS[(at + 1) % len(SONGS)]
