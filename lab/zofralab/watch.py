# SPDX-License-Identifier: GPL-3.0-or-later
"""Follows a running radio and says what has changed."""

import json

from .bus import BusError

NAME = "be.zofra.ZofraZofra"
PATH = "/be/zofra/ZofraZofra"
INTERFACE = "be.zofra.ZofraZofra1"


class Watch:
    """Asks for the state now and then; `say` gets one line for each thing that is not as it was."""

    def __init__(self, peer, say):
        self._peer = peer
        self._say = say
        self._shown = {}

    def status(self):
        """The object that `--status --json` prints, or None while the radio does not answer."""
        try:
            return json.loads(self._peer.call(NAME, PATH, INTERFACE, "Status", timeout=2.0)[0])
        except (BusError, ValueError):
            return None

    def look(self):
        """Look once."""
        status = self.status()
        if not status:
            return
        state = "stopped"
        if status["playing"]:
            state = "buffering" if status["buffering"] else "playing"
        rooms = status["rooms"]
        self._tell("station", status["station"])
        self._tell("state", state)
        self._tell("song", status["song"])
        self._tell("next", status["next"] or "")
        self._tell("output", status["output_title"])
        self._tell("rooms", f"{len(rooms)} ({', '.join(room['title'] for room in rooms)})" if rooms else "none")
        self._tell("volume", f"{round(status['volume'] * 100)} %")
        self._tell("tray", status["tray"])

    def _tell(self, what, value):
        if self._shown.get(what) != value:
            self._shown[what] = value
            self._say(f"{what}: {value}")
