# SPDX-License-Identifier: GPL-3.0-or-later
"""ZoneGroupTopology: who plays with whom, told a little differently by every player asked."""

from __future__ import annotations

from xml.sax.saxutils import quoteattr

from . import services as s
from .models import Kind
from .soap import Call, UpnpFault
from .state import Group, Household, Player


def zone_group_state(asked: Player) -> str:
    """The inner document. The group of the player asked comes first; within a group the coordinator comes last."""
    household = asked.household
    if household is None:
        return "<ZoneGroupState><ZoneGroups></ZoneGroups></ZoneGroupState>"
    groups = "".join(_group(g) for g in _ordered(household, asked))
    inner = f"<ZoneGroups>{groups}</ZoneGroups>"
    if not household.firmware.wraps_groups:
        return inner
    return f"<ZoneGroupState>{inner}{_vanished(household)}</ZoneGroupState>"


def _ordered(household: Household, asked: Player) -> list[Group]:
    groups = household.groups
    own = asked.group
    start = groups.index(own) if own in groups else 0
    return groups[start:] + groups[:start]


def _present(group: Group) -> list[Player]:
    members = [m for m in group.members if not m.listed_as_vanished]
    return [m for m in members if m is not group.coordinator] + [m for m in members if m is group.coordinator]


def _group(group: Group) -> str:
    members = "".join(_member(m) for m in _present(group))
    if not members:
        return ""
    return f'<ZoneGroup Coordinator="{group.coordinator.uuid}" ID="{group.id}">{members}</ZoneGroup>'


def _vanished(household: Household) -> str:
    gone = [p for p in household.players if p.listed_as_vanished]
    devices = "".join(
        f'<Device UUID="{p.uuid}" ZoneName={quoteattr(p.room)} Reason="powered off"/>' for p in gone
    )
    return f"<VanishedDevices>{devices}</VanishedDevices>"


def _attributes(player: Player) -> str:
    firmware = player.firmware
    rows = [("UUID", player.uuid), ("Location", player.location), ("ZoneName", player.room)]
    rows += [("Icon", ""), ("Configuration", "1")]
    if player.invisible:
        rows.append(("Invisible", "1"))
    if player.model.kind is Kind.BRIDGE:
        rows.append(("IsZoneBridge", "1"))
    rows += [("SoftwareVersion", firmware.version)]
    if firmware.wraps_groups:
        rows.append(("SWGen", str(firmware.generation)))
    rows += [("MinCompatibleVersion", firmware.minimum), ("LegacyCompatibleVersion", firmware.legacy)]
    if player.channel_map:
        rows.append(("ChannelMapSet", player.channel_map))
    if player.theatre_map:
        rows.append(("HTSatChanMapSet", player.theatre_map))
    rows += [("BootSeq", str(player.boot_seq)), ("WirelessMode", "0"), ("ChannelFreq", "2437")]
    rows += [("BehindWifiExtender", "0"), ("WifiEnabled", "1"), ("Orientation", "0")]
    if firmware.wraps_groups:
        rows += [("RoomCalibrationState", "4"), ("SecureRegState", "3"), ("VoiceConfigState", "0")]
        rows += [("MicEnabled", "0"), ("AirPlayEnabled", "1"), ("IdleState", "1"), ("MoreInfo", "")]
    return " ".join(f"{name}={quoteattr(value, {chr(34): '&quot;'})}" for name, value in rows)


def _member(player: Player) -> str:
    if not player.satellites:
        return f"<ZoneGroupMember {_attributes(player)}/>"
    inner = "".join(f"<Satellite {_attributes(x)}/>" for x in player.satellites if not x.listed_as_vanished)
    return f"<ZoneGroupMember {_attributes(player)}>{inner}</ZoneGroupMember>"


def _doctype(asked: Player) -> str:
    return '<!DOCTYPE x [<!ENTITY a "b">]>' + zone_group_state(asked)


def _deep(asked: Player) -> str:
    return zone_group_state(asked).replace("<ZoneGroups>", "<ZoneGroups>" + "<d>" * 50_000 + "</d>" * 50_000, 1)


def _cut(asked: Player) -> str:
    text = zone_group_state(asked)
    return text[: len(text) * 2 // 3]


def _nobody(asked: Player) -> str:
    return "<ZoneGroupState><ZoneGroups></ZoneGroups></ZoneGroupState>"


def _huge(asked: Player) -> str:
    return zone_group_state(asked) + " " * (4 << 20)


#: Names of the hostile forms for the switch `topology`.
HOSTILE = {"doctype": _doctype, "deep": _deep, "cut": _cut, "nobody": _nobody, "huge": _huge}


@s.TOPOLOGY.action("GetZoneGroupState", "", "ZoneGroupState")
def _get_zone_group_state(call: Call) -> dict[str, str]:
    if call.player.switches.topology_too_large:
        raise UpnpFault(501)
    form = HOSTILE.get(call.player.switches.topology, zone_group_state)
    return {"ZoneGroupState": form(call.player)}


@s.TOPOLOGY.action(
    "GetZoneGroupAttributes",
    "",
    "CurrentZoneGroupName CurrentZoneGroupID CurrentZonePlayerUUIDsInGroup CurrentMuseHouseholdId",
)
def _get_zone_group_attributes(call: Call) -> dict[str, str]:
    group = call.player.group
    if group is None or group.coordinator is not call.player:
        return {k: "" for k in call.action.outputs}
    return {
        "CurrentZoneGroupName": call.player.room,
        "CurrentZoneGroupID": group.id,
        "CurrentZonePlayerUUIDsInGroup": ",".join(m.uuid for m in group.members),
        "CurrentMuseHouseholdId": call.player.household.id if call.player.household else "",
    }


s.TOPOLOGY.known("CheckForUpdate", "UpdateType CachedOnly Version", "UpdateItem")
s.TOPOLOGY.known("RegisterMobileDevice", "MobileDeviceName MobileDeviceUDN MobileIPAndPort")
