# SPDX-License-Identifier: GPL-3.0-or-later
"""What reached the household: every request and datagram byte for byte, and how many connections were open at once."""

from __future__ import annotations

import time
from collections import Counter
from dataclasses import dataclass
from typing import Any

_KEEP = 50_000


@dataclass
class Request:
    """One HTTP request. Bytes are kept as latin-1 text, one character a byte, so that they survive JSON."""

    number: int
    time: float
    monotonic: float
    player: str
    ip: str
    peer: str
    head: str
    body: str = ""
    method: str = ""
    target: str = ""
    action: str = ""
    arguments: dict[str, str] | None = None
    #: What was answered; 0 while, or if, nothing was.
    status: int = 0
    answered: float = 0.0


@dataclass
class Search:
    """One datagram that arrived at port 1900."""

    number: int
    time: float
    monotonic: float
    peer: str
    to: str
    kind: str
    data: str
    #: Written as the protocol wants it, to the last byte; players answer less than that.
    well_formed: bool = False
    answers: int = 0


class Gauge:
    """How many at once, and the most there ever were."""

    def __init__(self) -> None:
        self.now = 0
        self.most = 0
        self.total = 0

    def enter(self) -> None:
        self.now += 1
        self.total += 1
        self.most = max(self.most, self.now)

    def leave(self) -> None:
        self.now -= 1

    def reset(self) -> None:
        self.most = self.now
        self.total = 0


class Recorder:
    """Keeps what came, up to a bound; what did not fit is counted."""

    def __init__(self) -> None:
        self.requests: list[Request] = []
        self.searches: list[Search] = []
        self.connections = Gauge()
        self.per_player: dict[str, Gauge] = {}
        self.dropped = 0
        self._number = 0

    def request(self, player: str, ip: str, peer: str, head: bytes) -> Request:
        entry = Request(*self._stamp(), player, ip, peer, head.decode("latin-1"))
        self._keep(self.requests, entry)
        return entry

    def search(self, peer: str, to: str, kind: str, data: bytes) -> Search:
        entry = Search(*self._stamp(), peer, to, kind, data.decode("latin-1"))
        self._keep(self.searches, entry)
        return entry

    def gauge(self, player: str) -> Gauge:
        return self.per_player.setdefault(player, Gauge())

    def clear(self) -> None:
        """Forgets what came; connections that are open stay counted."""
        self.requests.clear()
        self.searches.clear()
        self.dropped = 0
        for gauge in (self.connections, *self.per_player.values()):
            gauge.reset()

    def select(self, player: str = "", action: str = "", method: str = "", since: int = 0) -> list[dict[str, Any]]:
        """Requests in their order; the empty filter takes everything."""
        return [
            vars(r)
            for r in self.requests
            if r.number > since
            and (not player or player in (r.player, r.ip))
            and (not action or r.action == action)
            and (not method or r.method == method)
        ]

    def counters(self) -> dict[str, Any]:
        return {
            "requests": len(self.requests),
            "searches": len(self.searches),
            "dropped": self.dropped,
            "connections": self.connections.total,
            "open_now": self.connections.now,
            "most_at_once": self.connections.most,
            "actions": dict(Counter(r.action for r in self.requests if r.action)),
            "statuses": {str(k): v for k, v in Counter(r.status for r in self.requests).items()},
            "per_player": {uuid: vars(g) for uuid, g in self.per_player.items()},
        }

    def _stamp(self) -> tuple[int, float, float]:
        self._number += 1
        return self._number, time.time(), time.monotonic()

    def _keep(self, log: list[Any], entry: Any) -> None:
        if len(log) < _KEEP:
            log.append(entry)
        else:
            self.dropped += 1
