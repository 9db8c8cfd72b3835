# SPDX-License-Identifier: GPL-3.0-or-later
"""RenderingControl and GroupRenderingControl: how loud a player, or a group, is."""

from __future__ import annotations

from . import services as s
from .avtransport import NOT_A_COORDINATOR
from .soap import INVALID_ARGS, Call, UpnpFault
from .state import Player

_CHANNELS = ("Master", "LF", "RF")


def _channel(call: Call) -> None:
    if call.arguments["Channel"] not in _CHANNELS:
        raise UpnpFault(INVALID_ARGS)


@s.RENDERING.action("GetVolume", "InstanceID Channel", "CurrentVolume")
def _get_volume(call: Call) -> dict[str, str]:
    _channel(call)
    return {"CurrentVolume": str(call.player.volume)}


@s.RENDERING.action("SetVolume", "InstanceID Channel DesiredVolume")
def _set_volume(call: Call) -> dict[str, str]:
    _channel(call)
    call.player.volume = call.number("DesiredVolume", 0, 100)
    call.house.changed(call.player)
    return {}


@s.RENDERING.action("SetRelativeVolume", "InstanceID Channel Adjustment", "NewVolume")
def _set_relative_volume(call: Call) -> dict[str, str]:
    _channel(call)
    call.player.volume = max(0, min(100, call.player.volume + call.number("Adjustment", -100, 100)))
    call.house.changed(call.player)
    return {"NewVolume": str(call.player.volume)}


@s.RENDERING.action("GetMute", "InstanceID Channel", "CurrentMute")
def _get_mute(call: Call) -> dict[str, str]:
    _channel(call)
    return {"CurrentMute": str(int(call.player.mute))}


@s.RENDERING.action("SetMute", "InstanceID Channel DesiredMute")
def _set_mute(call: Call) -> dict[str, str]:
    _channel(call)
    call.player.mute = call.flag("DesiredMute")
    call.house.changed(call.player)
    return {}


@s.RENDERING.action("GetBass", "InstanceID", "CurrentBass")
def _get_bass(call: Call) -> dict[str, str]:
    return {"CurrentBass": str(call.player.bass)}


@s.RENDERING.action("SetBass", "InstanceID DesiredBass")
def _set_bass(call: Call) -> dict[str, str]:
    call.player.bass = call.number("DesiredBass", -10, 10)
    return {}


@s.RENDERING.action("GetTreble", "InstanceID", "CurrentTreble")
def _get_treble(call: Call) -> dict[str, str]:
    return {"CurrentTreble": str(call.player.treble)}


@s.RENDERING.action("SetTreble", "InstanceID DesiredTreble")
def _set_treble(call: Call) -> dict[str, str]:
    call.player.treble = call.number("DesiredTreble", -10, 10)
    return {}


@s.RENDERING.action("GetLoudness", "InstanceID Channel", "CurrentLoudness")
def _get_loudness(call: Call) -> dict[str, str]:
    _channel(call)
    return {"CurrentLoudness": str(int(call.player.loudness))}


@s.RENDERING.action("SetLoudness", "InstanceID Channel DesiredLoudness")
def _set_loudness(call: Call) -> dict[str, str]:
    _channel(call)
    call.player.loudness = call.flag("DesiredLoudness")
    return {}


def _heard_members(call: Call) -> list[Player]:
    group = call.player.group
    if group is None or group.coordinator is not call.player:
        raise UpnpFault(NOT_A_COORDINATOR)
    return [m for m in group.members if not m.invisible]


def _group_volume(members: list[Player]) -> int:
    return round(sum(m.volume for m in members) / len(members))


@s.GROUP_RENDERING.action("GetGroupVolume", "InstanceID", "CurrentVolume")
def _get_group_volume(call: Call) -> dict[str, str]:
    return {"CurrentVolume": str(_group_volume(_heard_members(call)))}


@s.GROUP_RENDERING.action("SetGroupVolume", "InstanceID DesiredVolume")
def _set_group_volume(call: Call) -> dict[str, str]:
    members = _heard_members(call)
    shift = call.number("DesiredVolume", 0, 100) - _group_volume(members)
    for member in members:
        member.volume = max(0, min(100, member.volume + shift))
        call.house.changed(member)
    return {}


@s.GROUP_RENDERING.action("SetRelativeGroupVolume", "InstanceID Adjustment", "NewVolume")
def _set_relative_group_volume(call: Call) -> dict[str, str]:
    members, shift = _heard_members(call), call.number("Adjustment", -100, 100)
    for member in members:
        member.volume = max(0, min(100, member.volume + shift))
        call.house.changed(member)
    return {"NewVolume": str(_group_volume(members))}


@s.GROUP_RENDERING.action("SnapshotGroupVolume", "InstanceID")
def _snapshot_group_volume(call: Call) -> dict[str, str]:
    _heard_members(call)
    return {}


@s.GROUP_RENDERING.action("GetGroupMute", "InstanceID", "CurrentMute")
def _get_group_mute(call: Call) -> dict[str, str]:
    return {"CurrentMute": str(int(all(m.mute for m in _heard_members(call))))}


@s.GROUP_RENDERING.action("SetGroupMute", "InstanceID DesiredMute")
def _set_group_mute(call: Call) -> dict[str, str]:
    members, mute = _heard_members(call), call.flag("DesiredMute")
    for member in members:
        member.mute = mute
        call.house.changed(member)
    return {}
