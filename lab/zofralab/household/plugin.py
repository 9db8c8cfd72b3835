# SPDX-License-Identifier: GPL-3.0-or-later
"""The household as a service of the lab: its switches, and what it tells tests.

A player is named by its id, its address, or its room when one player alone is seen there.
"""

from __future__ import annotations

from typing import Any

from .. import addresses
from ..service import Service
from . import scenes
from .house import House
from .names import Resolver
from .network import Others

_FIRST_SCENE = "twelve"
_ROUTER_IP = "10.77.0.254"


class Household(Service):
    """`household.scene scene=twelve`, `household.vanish player=Office`, `household.requests action=Play` and so on."""

    name = "household"

    def __init__(self, world: Any) -> None:
        super().__init__(world)
        resolver = Resolver(addresses.DNS_ADDRESS)
        self._house = House(world.cable, addresses.HOUSE_INTERFACE, resolver, world.authority.certificate)
        self._others = Others(world.cable, self._house.recorder.connections)

    async def start(self) -> None:
        await self._house.open()
        await self._house.furnish(scenes.build(_FIRST_SCENE))

    async def stop(self) -> None:
        # The routes end with their namespaces.
        await self._house.close()

    async def reset(self) -> None:
        """The household of the first scene, as new; nothing recorded; other addresses nobody's, as at home."""
        await self._others.set_mode("absent")
        await self._house.furnish(scenes.build(_FIRST_SCENE))

    # What there is.

    async def do_scene(self, scene: str, count: int = 32) -> list[dict[str, Any]]:
        """Another household: empty, one, twelve, mixed, large, or many with `count`. Answers its players."""
        await self._house.furnish(scenes.build(scene, count))
        return self.do_players()

    def do_players(self) -> list[dict[str, Any]]:
        """Every player with all of its state."""
        return [p.snapshot() for p in self._house.scene.players]

    def do_player(self, player: str) -> dict[str, Any]:
        """One player with all of its state."""
        return self._house.player(player).snapshot()

    # What was asked of it.

    def do_requests(
        self, player: str = "", action: str = "", method: str = "", since: int = 0
    ) -> list[dict[str, Any]]:
        """Every HTTP request byte for byte, in order; `since` is the number of the last one already seen."""
        name = self._house.player(player).uuid if player else ""
        return self._house.recorder.select(name, action, method, since)

    def do_searches(self, since: int = 0) -> list[dict[str, Any]]:
        """Every datagram that arrived at port 1900, announcements aside, byte for byte."""
        return [vars(x) for x in self._house.recorder.searches if x.number > since]

    def do_counters(self) -> dict[str, Any]:
        """How many requests, answers by status, and the most connections that were ever open at once."""
        counters = self._house.recorder.counters()
        return {**counters, "subscriptions": len(self._house.events), "reached": self._others.reached}

    def do_forget(self) -> None:
        """Empties the records; everything else stays as it is."""
        self._house.recorder.clear()

    # What goes wrong.

    async def do_switch(self, player: str = "", **changes: Any) -> None:
        """Sets switches (`switches.Switches` lists them) of one player, or of all without `player`."""
        chosen = [self._house.player(player)] if player else self._house.scene.players
        for one in chosen:
            await self._house.switch(one, changes)

    async def do_vanish(self, player: str, noticed: bool = False) -> None:
        """Power cut. `noticed`: the rest of the household lists it as vanished."""
        await self._house.vanish(self._house.player(player), noticed)

    async def do_come_back(self, player: str, ip: str = "") -> dict[str, Any]:
        """Power on again, perhaps at another address."""
        one = self._house.player(player)
        await self._house.come_back(one, ip)
        return one.snapshot()

    def do_ssdp(self, silent: bool) -> None:
        """No player answers searches, or all do again as their own switch says."""
        self._house.responder.silenced = silent

    async def do_router(self, mode: str = "", ip: str = _ROUTER_IP) -> None:
        """A gateway that answers searches: stranger, impostor, relay, noise, or "" for none."""
        if mode not in ("", "stranger", "impostor", "relay", "noise"):
            raise ValueError(f"no router of mode {mode!r}")
        await self._house.set_router(mode, ip)

    def do_latency(self, seconds: float) -> None:
        """How long every player takes for any answer."""
        self._house.latency = float(seconds)

    # The rest of the network.

    async def do_others(self, mode: str = "absent") -> None:
        """What the addresses do that are nobody's: absent, dropped, refused or held (`network.MODES`)."""
        await self._others.set_mode(mode)

    # What its owner does.

    async def do_group(self, player: str, coordinator: str) -> None:
        """Adds a player to the group of another, as an owner would in another program."""
        one, other = self._house.player(player), self._house.player(coordinator)
        if one.household is None or one.household is not other.household:
            raise ValueError("players of two households do not play together")
        one.household.join(one, other.coordinator)
        self._house.streams.settle(one.household)
        self._house.changed(one)

    async def do_ungroup(self, player: str) -> None:
        """Takes a player out of its group."""
        one = self._house.player(player)
        if one.household is not None:
            one.household.stand_alone(one)
            self._house.streams.settle(one.household)
        self._house.changed(one)

    def do_rename(self, player: str, room: str) -> None:
        """Another name for a room and everything bonded to it."""
        one = self._house.player(player)
        before = one.room
        for unit in self._house.scene.players:
            if unit is one or (unit.primary is one and unit.room == before):
                unit.room = room
        self._house.changed(one)
