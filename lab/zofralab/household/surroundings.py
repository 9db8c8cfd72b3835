# SPDX-License-Identifier: GPL-3.0-or-later
"""What a player's services need of the house around them."""

from __future__ import annotations

from typing import Any, Protocol

from .recorder import Recorder
from .state import Player


class Surroundings(Protocol):
    """A house, seen from inside."""

    recorder: Recorder
    #: Seconds a player takes for any answer.
    latency: float
    #: What plays.
    streams: Any
    #: Who wants to be told of changes.
    events: Any

    def changed(self, player: Player) -> None:
        """State of a player is not what it was: whoever subscribed is told."""

    def dispatch(self, player: Player, request: Any) -> Any:
        """The answer to a request."""
