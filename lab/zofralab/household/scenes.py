# SPDX-License-Identifier: GPL-3.0-or-later
"""Households to choose from, and the rooms their owner would name."""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Callable

from . import models as m
from .state import Household, Player

_FIRST = 11
_MOST = 200


@dataclass
class Scene:
    """Devices in order of their addresses; those without a household belong to no owner's system."""

    households: list[Household] = field(default_factory=list)
    loners: list[Player] = field(default_factory=list)

    @property
    def players(self) -> list[Player]:
        found = [p for h in self.households for p in h.players] + self.loners
        return sorted(found, key=lambda p: tuple(map(int, p.ip.split("."))))


class _Maker:
    """Deals out addresses from 10.77.0.11 on. Ids do not follow the addresses: nothing may depend on that."""

    def __init__(self) -> None:
        self._next = _FIRST

    def player(self, room: str, model: m.Model) -> Player:
        host, self._next = self._next, self._next + 1
        scattered = (host * 157 + 61) % 256
        uuid = f"RINCON_0277B0{scattered:02X}00{host:02X}01400"
        return Player(uuid, f"10.77.0.{host}", room, model)

    def companion(self, room: str, *, has_topology: bool) -> Player:
        player = self.player(room, m.PI_PLAYER)
        player.uuid = f"zofra-pi-{player.ip.rpartition('.')[2]}"
        player.has_topology = has_topology
        player.volume = 40
        return player


def empty() -> Scene:
    return Scene()


def one() -> Scene:
    """One player, in the kitchen."""
    house = Household("Sonos_LabHousehold00000000000000001")
    house.add(_Maker().player("Kitchen", m.ONE))
    return Scene([house])


def twelve() -> Scene:
    """Twelve devices of two owners, who call them seven rooms: Living Room, Kitchen, Dining Room and Office the one,
    Bedroom and Kitchen the other; and a companion in a second Bedroom."""
    make = _Maker()
    first = Household("Sonos_LabHousehold00000000000000001")
    beam = first.add(make.player("Living Room", m.BEAM))
    rear_left = first.add(make.player("Living Room", m.ONE_SL))
    rear_right = first.add(make.player("Living Room", m.ONE_SL))
    sub = first.add(make.player("Sub", m.SUB))
    first.bond_theatre(beam, {"LR": rear_left, "RR": rear_right, "SW": sub})
    kitchen = first.add(make.player("Kitchen", m.ONE))
    dining = first.add(make.player("Dining Room", m.PLAY5))
    first.join(dining, kitchen)
    left = first.add(make.player("Office", m.PLAY1))
    right = first.add(make.player("Office", m.PLAY1))
    first.bond_pair(left, right)

    second = Household("Sonos_LabHousehold00000000000000002", m.OLD)
    boost = second.add(make.player("BOOST", m.BOOST))
    boost.invisible = True
    second.add(make.player("Bedroom", m.PLAY1))
    second.add(make.player("Kitchen", m.PLAY3))

    return Scene([first, second], [make.companion("Bedroom", has_topology=False)])


def many(count: int) -> Scene:
    """Plain players of one household, each a room."""
    if not 1 <= count <= _MOST:
        raise ValueError(f"a house holds 1 to {_MOST} players, not {count}")
    make, house = _Maker(), Household("Sonos_LabHousehold00000000000000003")
    for number in range(1, count + 1):
        house.add(make.player(f"Room {number:03d}", m.ONE))
    return Scene([house])


def large() -> Scene:
    """Thirty players whose topology is too large to be told: HTTP 500 with fault 501."""
    scene = many(30)
    for player in scene.players:
        player.switches.topology_too_large = True
    return scene


def mixed() -> Scene:
    """A room of two grouped players that is not led by the one with the smaller id, one of them with a sub; two more
    rooms, whose names need care; and two companions that tell their own topology, one named like a room."""
    make = _Maker()
    house = Household("Sonos_LabHousehold00000000000000004")
    salon = house.add(make.player("Salon", m.PLAY5))
    house.join(house.add(make.player("Salon", m.PLAY5)), salon)
    house.bond_sub(salon, house.add(make.player("Sub", m.SUB_MINI)))
    house.add(make.player("Hall & Stairs", m.ONE))
    house.add(make.player("Küche <1>", m.ONE))
    companions = [make.companion("Workshop", has_topology=True), make.companion("Hall & Stairs", has_topology=True)]
    return Scene([house], companions)


SCENES: dict[str, Callable[[], Scene]] = {"empty": empty, "one": one, "twelve": twelve, "large": large, "mixed": mixed}


def build(name: str, count: int = 32) -> Scene:
    """A fresh scene by name; `many` takes how many."""
    if name == "many":
        return many(count)
    if name not in SCENES:
        raise ValueError(f"no scene called {name!r}; there are {', '.join([*SCENES, 'many'])}")
    return SCENES[name]()
