# SPDX-License-Identifier: GPL-3.0-or-later
"""The house: players with their sockets, their streams and their events, as one thing that can be furnished anew."""

from __future__ import annotations

import asyncio
import ssl
from typing import Any, Optional

# Imported for what they register: the actions of the services.
from . import avtransport, properties, rendering, topology  # noqa: F401
from .dispatch import dispatch
from .events import Events
from .playerserver import Answer, HttpRequest, PlayerServer
from .names import Resolver
from .recorder import Recorder
from .router import RouterServer
from .scenes import Scene
from .ssdp import Responder, Router
from .state import Player
from .streams import Streams

_LATENCY = 0.012


class House:
    """Everything between the network and the state of the players. Lives on one event loop.

    `cable` gives and takes addresses (`add_addresses`, `remove_addresses`).
    """

    def __init__(self, cable: Any, interface: str, resolver: Resolver, authority: str = "") -> None:
        self._cable = cable
        self._interface = interface
        self.recorder = Recorder()
        self.events = Events()
        self.streams = Streams(self.changed, resolver, _trust(authority))
        self.responder = Responder(interface, self.recorder, seed=1)
        self.scene = Scene()
        #: Seconds a player takes for any answer.
        self.latency = _LATENCY
        self._servers: dict[Player, PlayerServer] = {}
        self._router: Optional[RouterServer] = None
        self._returns: set[asyncio.Task[None]] = set()

    async def open(self) -> None:
        self.responder.open()

    async def close(self) -> None:
        """Empties the house and lets go of everything."""
        await self.furnish(Scene())
        self.responder.close()

    async def furnish(self, scene: Scene) -> None:
        """Throws everything out and moves the players of `scene` in, all of them on at once."""
        await self._clear()
        self.scene = scene
        self._cable.add_addresses([p.ip for p in scene.players])
        for player in scene.players:
            await self._plug_in(player)

    def player(self, which: str) -> Player:
        """By id, address, or room when only one is seen there. Raises ValueError."""
        found = [p for p in self.scene.players if which in (p.uuid, p.ip)]
        found = found or [p for p in self.scene.players if p.room == which and not p.invisible]
        if len(found) != 1:
            raise ValueError(f"{len(found) or 'no'} players called {which!r}")
        return found[0]

    def dispatch(self, player: Player, request: HttpRequest) -> Answer:
        return dispatch(self, player, request)

    def changed(self, player: Player) -> None:
        """State of a player is not what it was: whoever subscribed is told."""
        self.events.changed(player)

    async def switch(self, player: Player, changes: dict[str, Any]) -> None:
        """Throws switches of one player."""
        player.switches.apply(changes)
        server = self._servers.get(player)
        if player.switches.refuse and server is not None:
            await self._servers.pop(player).close()
        elif player.online and not player.switches.refuse and server is None:
            await self._serve(player)

    async def vanish(self, player: Player, noticed: bool) -> None:
        """Power cut: no goodbye, address gone, connections dead. `noticed`: the others no longer list it."""
        if player.online:
            player.online = False
            self.streams.drop(player)
            self.responder.remove(player)
            # First the address: what is torn down after that does not say so on the network.
            self._cable.remove_addresses([player.ip])
            server = self._servers.pop(player, None)
            if server is not None:
                await server.close()
        player.listed_as_vanished = noticed

    async def come_back(self, player: Player, ip: str = "") -> None:
        """Power on again, at the same address or another; alone unless it is bonded."""
        if player.online:
            await self.vanish(player, noticed=False)
        if ip:
            taken = [p for p in self.scene.players if p.ip == ip and p is not player]
            if taken:
                raise ValueError(f"{ip} belongs to {taken[0].uuid}")
            player.ip = ip
        player.online, player.listed_as_vanished = True, False
        player.boot_seq += 1
        if player.household is not None and player.primary is None:
            player.household.stand_alone(player)
        self._cable.add_addresses([player.ip])
        await self._plug_in(player)
        self.changed(player)

    async def set_router(self, mode: str, ip: str) -> None:
        """A gateway in the same network that answers searches; "" takes it away."""
        if self._router is not None:
            self.responder.set_router(None)
            await self._router.close()
            self._cable.remove_addresses([self._router.ip])
            self._router = None
        if mode:
            self._cable.add_addresses([ip])
            self._router = RouterServer(ip)
            await self._router.open()
            self.responder.set_router(Router(ip, mode))

    async def _plug_in(self, player: Player) -> None:
        if not player.switches.refuse:
            await self._serve(player)
        self.responder.add(player)

    async def _serve(self, player: Player) -> None:
        server = PlayerServer(self, player)
        self._servers[player] = server
        await server.open()

    async def _clear(self) -> None:
        await self.set_router("", "")
        self.responder.silenced = False
        self.latency = _LATENCY
        self.streams.clear()
        self.events.clear()
        for player in self.scene.players:
            self.responder.remove(player)
        await asyncio.gather(*(server.close() for server in self._servers.values()))
        self._servers.clear()
        self._cable.remove_addresses([p.ip for p in self.scene.players])
        self.recorder.clear()
        self.recorder.per_player.clear()


def _trust(authority: str) -> Optional[ssl.SSLContext]:
    return ssl.create_default_context(cafile=authority) if authority else None
