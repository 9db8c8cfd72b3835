# SPDX-License-Identifier: GPL-3.0-or-later
"""The kinds of hardware a household can hold, as their descriptions and answers name them."""

from __future__ import annotations

import enum
from dataclasses import dataclass


class Kind(enum.Enum):
    """What a device is for; decides which services it offers."""

    PLAYER = "player"
    SUB = "sub"
    BRIDGE = "bridge"
    COMPANION = "companion"


@dataclass(frozen=True)
class Model:
    """One product. `number` also forms the tag that a device puts into its SERVER header."""

    name: str
    number: str
    display: str
    zone_type: int
    kind: Kind = Kind.PLAYER
    manufacturer: str = "Sonos, Inc."

    @property
    def is_companion(self) -> bool:
        return self.kind is Kind.COMPANION


@dataclass(frozen=True)
class Firmware:
    """The software of a household: all of its devices carry the same."""

    version: str
    minimum: str
    legacy: str
    generation: int
    display: str
    #: Newer software wraps the groups of a topology in one more element.
    wraps_groups: bool


CURRENT = Firmware("85.0-64200", "84.0-00000", "58.0-00000", 2, "17.0", wraps_groups=True)
OLD = Firmware("31.8-24090", "29.0-00000", "24.0-00000", 1, "5.4", wraps_groups=False)

ONE = Model("Sonos One", "S18", "One", 18)
ONE_SL = Model("Sonos One SL", "S22", "One SL", 22)
PLAY1 = Model("Sonos Play:1", "S12", "Play:1", 12)
PLAY3 = Model("Sonos Play:3", "S3", "Play:3", 8)
PLAY5 = Model("Sonos Play:5", "S6", "Play:5", 6)
BEAM = Model("Sonos Beam", "S14", "Beam", 14)
SUB = Model("Sonos Sub", "SUB", "Sub", 11, Kind.SUB)
SUB_MINI = Model("Sonos Sub Mini", "S43", "Sub Mini", 43, Kind.SUB)
BOOST = Model("Sonos BOOST", "BR200", "BOOST", 15, Kind.BRIDGE)
BRIDGE = Model("Sonos BRIDGE", "ZB100", "BRIDGE", 4, Kind.BRIDGE)
PI_PLAYER = Model("Zofra Pi Player", "ZP1", "Pi Player", 0, Kind.COMPANION, "Zofra Zofra")

BY_NAME = {m.name: m for m in (ONE, ONE_SL, PLAY1, PLAY3, PLAY5, BEAM, SUB, SUB_MINI, BOOST, BRIDGE, PI_PLAYER)}
