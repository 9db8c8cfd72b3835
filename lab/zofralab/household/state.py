# SPDX-License-Identifier: GPL-3.0-or-later
"""What a household is at a moment: players, their transport and volume, and who plays with whom."""

from __future__ import annotations

import itertools
from dataclasses import dataclass, field
from typing import Any, Optional

from .models import CURRENT, Firmware, Kind, Model
from .switches import Switches


@dataclass
class Transport:
    """What one player plays. `state` is one of the four words AVTransport knows."""

    uri: str = ""
    metadata: str = ""
    state: str = "STOPPED"
    status: str = "OK"


@dataclass
class StreamCount:
    """Proof of playing: what a player has read of the stream it was given."""

    url: str = ""
    content_type: str = ""
    bytes_total: int = 0
    bytes_now: int = 0
    opened: int = 0
    error: str = ""


@dataclass(eq=False)
class Player:
    """One device on the network, with an address of its own."""

    uuid: str
    ip: str
    room: str
    model: Model
    firmware: Firmware = CURRENT
    household: Optional["Household"] = field(default=None, repr=False)
    invisible: bool = False
    #: The device this one is bonded to: the left half of a pair, or the box a sub belongs to.
    primary: Optional["Player"] = field(default=None, repr=False)
    satellites: list["Player"] = field(default_factory=list, repr=False)
    is_satellite: bool = False
    channel_map: str = ""
    theatre_map: str = ""
    boot_seq: int = 12
    volume: int = 25
    mute: bool = False
    bass: int = 0
    treble: int = 0
    loudness: bool = True
    has_topology: bool = True
    online: bool = True
    #: A device that is gone and whose absence the others have noticed.
    listed_as_vanished: bool = False
    transport: Transport = field(default_factory=Transport)
    stream: StreamCount = field(default_factory=StreamCount)
    switches: Switches = field(default_factory=Switches)

    @property
    def location(self) -> str:
        return f"http://{self.ip}:1400/xml/device_description.xml"

    @property
    def server(self) -> str:
        """The text of the SERVER header."""
        if self.model.is_companion:
            return "Linux UPnP/1.0 ZofraPi/1.4"
        return f"Linux UPnP/1.0 Sonos/{self.firmware.version} (ZP{self.model.number})"

    @property
    def mac(self) -> str:
        digits = self.uuid.removeprefix("RINCON_")[:12].ljust(12, "0")
        return ":".join(digits[i : i + 2] for i in range(0, 12, 2))

    @property
    def group(self) -> Optional["Group"]:
        return self.household.group_of(self) if self.household else None

    @property
    def coordinator(self) -> "Player":
        """Whoever leads this player: itself when it is alone or in no group."""
        group = self.group
        return group.coordinator if group else self

    @property
    def leads(self) -> bool:
        return self.coordinator is self and self.primary is None

    @property
    def can_play(self) -> bool:
        return self.model.kind is not Kind.BRIDGE

    def effective_state(self) -> str:
        """A follower does what its coordinator does."""
        return self.coordinator.transport.state

    def snapshot(self) -> dict[str, Any]:
        """Everything a test wants to know, ready for JSON."""
        group = self.group
        return {
            "uuid": self.uuid,
            "ip": self.ip,
            "room": self.room,
            "model": self.model.name,
            "household": self.household.id if self.household else "",
            "online": self.online,
            "invisible": self.invisible,
            "coordinator": self.coordinator.uuid,
            "group": [m.uuid for m in group.members] if group else [self.uuid],
            "group_id": group.id if group else "",
            "state": self.effective_state(),
            "transport": vars(self.transport).copy(),
            "volume": self.volume,
            "mute": self.mute,
            "stream": vars(self.stream).copy(),
            "switches": self.switches.changed(),
        }


@dataclass(eq=False)
class Group:
    """Players that play one thing together; `members` holds the coordinator, at any position."""

    id: str
    coordinator: Player
    members: list[Player]


class Household:
    """Devices of one owner that know one another."""

    def __init__(self, identity: str, firmware: Firmware = CURRENT) -> None:
        self.id = identity
        self.firmware = firmware
        self.players: list[Player] = []
        self.groups: list[Group] = []
        self._numbers = itertools.count(210)

    def add(self, player: Player) -> Player:
        """Takes a device in; it is alone until it is grouped or bonded."""
        player.household = self
        player.firmware = self.firmware
        self.players.append(player)
        self.groups.append(Group(self._new_id(player), player, [player]))
        return player

    def by_uuid(self, uuid: str) -> Optional[Player]:
        return next((p for p in self.players if p.uuid == uuid), None)

    def group_of(self, player: Player) -> Optional[Group]:
        holder = player.primary if player.is_satellite and player.primary else player
        return next((g for g in self.groups if holder in g.members), None)

    def bond_pair(self, left: Player, right: Player) -> None:
        """Two units, one room: the right one is not shown."""
        self._bond(left, right, f"{left.uuid}:LF,LF;{right.uuid}:RF,RF")

    def bond_sub(self, main: Player, sub: Player) -> None:
        """A sub beside an ordinary player is a hidden member of its group."""
        self._bond(main, sub, f"{main.uuid}:LF,RF;{sub.uuid}:SW,SW")

    def bond_theatre(self, main: Player, channels: dict[str, Player]) -> None:
        """Satellites travel inside their main unit and are no members of their own."""
        parts = [f"{main.uuid}:LF,RF"]
        for channel, satellite in channels.items():
            self._drop(satellite)
            satellite.primary, satellite.is_satellite = main, True
            satellite.invisible = True
            satellite.theatre_map = f"{main.uuid}:LF,RF;{satellite.uuid}:{channel}"
            parts.append(f"{satellite.uuid}:{channel}")
            main.satellites.append(satellite)
        main.theatre_map = ";".join(parts)

    def join(self, player: Player, coordinator: Player) -> None:
        """`player` and what is bonded to it follow `coordinator` from now on."""
        target = self.group_of(coordinator)
        if target is None or player in target.members:
            return
        units = self._units(player)
        self._leave(units)
        target.members.extend(units)

    def stand_alone(self, player: Player) -> Group:
        """`player` becomes a group of its own; the rest goes on under another coordinator."""
        group = self.group_of(player)
        units = self._units(player)
        if group is not None and group.coordinator is player and len(group.members) == len(units):
            return group
        self._leave(units)
        alone = Group(self._new_id(player), player, units)
        self.groups.append(alone)
        return alone

    def hand_over(self, group: Group, coordinator: Player) -> None:
        """Another member leads; what was playing goes with the lead. The group keeps its id."""
        old, new = group.coordinator, coordinator
        group.coordinator = new
        new.transport, old.transport = old.transport, Transport(f"x-rincon:{new.uuid}")

    def _bond(self, main: Player, hidden: Player, channel_map: str) -> None:
        self._drop(hidden)
        hidden.primary, hidden.invisible = main, True
        main.channel_map = hidden.channel_map = channel_map
        group = self.group_of(main)
        assert group is not None
        group.members.insert(0, hidden)

    def _units(self, player: Player) -> list[Player]:
        return [player] + [p for p in self.players if p.primary is player and not p.is_satellite]

    def _leave(self, units: list[Player]) -> None:
        group = self.group_of(units[0])
        if group is None:
            return
        rest = [m for m in group.members if m not in units]
        leaders = [m for m in rest if m.primary is None]
        if group.coordinator in units and leaders:
            self.hand_over(group, leaders[0])
        group.members = rest
        if not rest:
            self.groups.remove(group)

    def _drop(self, player: Player) -> None:
        self._leave([player])

    def _new_id(self, player: Player) -> str:
        return f"{player.uuid}:{next(self._numbers)}"
