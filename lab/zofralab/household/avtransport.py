# SPDX-License-Identifier: GPL-3.0-or-later
"""AVTransport: what a player plays, and whom it follows."""

from __future__ import annotations

from xml.sax.saxutils import escape

from . import services as s
from .soap import INVALID_ARGS, Call, UpnpFault
from .state import Player, Transport

TRANSITION_NOT_AVAILABLE = 701
ILLEGAL_SEEK_TARGET = 711
ILLEGAL_MIME_TYPE = 714
NOT_A_COORDINATOR = 800
CANNOT_JOIN = 1023

RADIO = "x-rincon-mp3radio:"
JOIN = "x-rincon:"
#: Kinds of address a player takes beside streams and other players.
_OTHER = ("x-rincon-queue:", "x-rincon-stream:", "x-sonos-htastream:", "http:", "https:", "aac:", "hls-radio:")

_ID = "InstanceID"


def _leader(call: Call) -> Player:
    """The player, when it is one that takes transport commands: no follower, no hidden half, no satellite."""
    if not call.player.leads or call.player.is_satellite:
        raise UpnpFault(NOT_A_COORDINATOR)
    return call.player


@s.AV_TRANSPORT.action("SetAVTransportURI", "InstanceID CurrentURI CurrentURIMetaData")
def _set_uri(call: Call) -> dict[str, str]:
    uri, metadata = call.arguments["CurrentURI"], call.arguments["CurrentURIMetaData"]
    if call.player.primary is not None:
        raise UpnpFault(NOT_A_COORDINATOR)
    if uri.startswith(JOIN):
        _join(call, uri.removeprefix(JOIN))
        return {}
    if not uri.startswith((RADIO, *_OTHER)):
        raise UpnpFault(ILLEGAL_MIME_TYPE)
    if not call.player.leads and call.player.household is not None:
        # An address of its own takes a follower out of its group.
        call.player.household.stand_alone(call.player)
    call.house.streams.stop(call.player)
    call.player.transport = Transport(uri, metadata)
    call.house.changed(call.player)
    return {}


def _join(call: Call, uuid: str) -> None:
    player, household = call.player, call.player.household
    if player.model.is_companion:
        raise UpnpFault(ILLEGAL_MIME_TYPE)
    target = household.by_uuid(uuid) if household else None
    if household is None or target is None or not target.online or not target.can_play or target is player:
        raise UpnpFault(CANNOT_JOIN)
    household.join(player, target.coordinator)
    player.transport = Transport(f"{JOIN}{target.coordinator.uuid}", call.arguments["CurrentURIMetaData"])
    call.house.streams.settle(household)
    call.house.changed(player)


@s.AV_TRANSPORT.action("Play", "InstanceID Speed")
def _play(call: Call) -> dict[str, str]:
    if call.arguments["Speed"].strip() != "1":
        raise UpnpFault(INVALID_ARGS)
    player = _leader(call)
    if not player.transport.uri or player.transport.uri.startswith("x-rincon-queue:"):
        raise UpnpFault(TRANSITION_NOT_AVAILABLE)
    call.house.streams.play(player)
    call.house.changed(player)
    return {}


@s.AV_TRANSPORT.action("Pause", _ID)
def _pause(call: Call) -> dict[str, str]:
    player = _leader(call)
    if player.transport.state not in ("PLAYING", "TRANSITIONING"):
        raise UpnpFault(TRANSITION_NOT_AVAILABLE)
    call.house.streams.stop(player)
    player.transport.state = "PAUSED_PLAYBACK"
    call.house.changed(player)
    return {}


@s.AV_TRANSPORT.action("Stop", _ID)
def _stop(call: Call) -> dict[str, str]:
    player = _leader(call)
    call.house.streams.stop(player)
    call.house.changed(player)
    return {}


@s.AV_TRANSPORT.action("BecomeCoordinatorOfStandaloneGroup", _ID, "DelegatedGroupCoordinatorID NewGroupID")
def _stand_alone(call: Call) -> dict[str, str]:
    player, household = call.player, call.player.household
    if player.primary is not None:
        raise UpnpFault(NOT_A_COORDINATOR)
    if player.model.is_companion or household is None:
        raise UpnpFault(CANNOT_JOIN)
    before = household.group_of(player)
    led = before is not None and before.coordinator is player
    group = household.stand_alone(player)
    delegated = before.coordinator.uuid if before is not None and before is not group and led else ""
    if before is not group:
        player.transport = Transport()
    call.house.streams.settle(household)
    call.house.changed(player)
    return {"DelegatedGroupCoordinatorID": delegated, "NewGroupID": group.id}


@s.AV_TRANSPORT.action("DelegateGroupCoordinationTo", "InstanceID NewCoordinator RejoinGroup")
def _delegate(call: Call) -> dict[str, str]:
    player, household = _leader(call), call.player.household
    group = player.group
    target = household.by_uuid(call.arguments["NewCoordinator"]) if household else None
    if household is None or group is None or target not in group.members or target.primary is not None:
        raise UpnpFault(CANNOT_JOIN)
    household.hand_over(group, target)
    if not call.flag("RejoinGroup"):
        household.stand_alone(player)
        player.transport = Transport()
    call.house.streams.settle(household)
    call.house.changed(player)
    return {}


@s.AV_TRANSPORT.action("GetTransportInfo", _ID, "CurrentTransportState CurrentTransportStatus CurrentSpeed")
def _transport_info(call: Call) -> dict[str, str]:
    leader = call.player.coordinator
    return {
        "CurrentTransportState": leader.transport.state,
        "CurrentTransportStatus": leader.transport.status,
        "CurrentSpeed": "1",
    }


@s.AV_TRANSPORT.action(
    "GetMediaInfo",
    _ID,
    "NrTracks MediaDuration CurrentURI CurrentURIMetaData NextURI NextURIMetaData PlayMedium RecordMedium WriteStatus",
)
def _media_info(call: Call) -> dict[str, str]:
    transport = call.player.transport
    uri, metadata = transport.uri, transport.metadata
    if call.player.coordinator is not call.player:
        uri, metadata = f"{JOIN}{call.player.coordinator.uuid}", ""
    return {
        "NrTracks": "1" if uri else "0",
        "MediaDuration": "NOT_IMPLEMENTED",
        "CurrentURI": uri,
        "CurrentURIMetaData": metadata,
        "NextURI": "",
        "NextURIMetaData": "",
        "PlayMedium": "NETWORK" if uri else "NONE",
        "RecordMedium": "NOT_IMPLEMENTED",
        "WriteStatus": "NOT_IMPLEMENTED",
    }


@s.AV_TRANSPORT.action(
    "GetPositionInfo", _ID, "Track TrackDuration TrackMetaData TrackURI RelTime AbsTime RelCount AbsCount"
)
def _position_info(call: Call) -> dict[str, str]:
    leader = call.player.coordinator
    uri = leader.transport.uri if leader is call.player else f"{JOIN}{leader.uuid}"
    return {
        "Track": "1" if uri else "0",
        "TrackDuration": "0:00:00",
        "TrackMetaData": _track(uri) if uri else "",
        "TrackURI": uri,
        "RelTime": call.house.streams.elapsed(leader),
        "AbsTime": "NOT_IMPLEMENTED",
        "RelCount": "2147483647",
        "AbsCount": "2147483647",
    }


def _track(uri: str) -> str:
    """What a player says of the stream itself; the title an owner gave is in GetMediaInfo."""
    spaces = (
        'xmlns:dc="http://purl.org/dc/elements/1.1/" xmlns:upnp="urn:schemas-upnp-org:metadata-1-0/upnp/" '
        'xmlns:r="urn:schemas-rinconnetworks-com:metadata-1-0/" xmlns="urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/"'
    )
    kind, title = escape(uri.partition(":")[0]), escape(uri.rpartition("/")[2])
    return (
        f'<DIDL-Lite {spaces}><item id="-1" parentID="-1" restricted="true">'
        f'<res protocolInfo="{kind}:*:*:*">{escape(uri)}</res><r:streamContent></r:streamContent>'
        f"<dc:title>{title}</dc:title><upnp:class>object.item</upnp:class></item></DIDL-Lite>"
    )


@s.AV_TRANSPORT.action("GetTransportSettings", _ID, "PlayMode RecQualityMode")
def _transport_settings(call: Call) -> dict[str, str]:
    return {"PlayMode": "NORMAL", "RecQualityMode": "NOT_IMPLEMENTED"}


@s.AV_TRANSPORT.action("GetDeviceCapabilities", _ID, "PlayMedia RecMedia RecQualityModes")
def _capabilities(call: Call) -> dict[str, str]:
    return {
        "PlayMedia": "NONE, NETWORK",
        "RecMedia": "NOT_IMPLEMENTED",
        "RecQualityModes": "NOT_IMPLEMENTED",
    }


@s.AV_TRANSPORT.action("GetCurrentTransportActions", _ID, "Actions")
def _actions(call: Call) -> dict[str, str]:
    leader = call.player.coordinator
    return {"Actions": "Set, Stop, Pause, Play" if leader.transport.uri else "Set, Play"}


@s.AV_TRANSPORT.action("GetCrossfadeMode", _ID, "CrossfadeMode")
def _crossfade(call: Call) -> dict[str, str]:
    return {"CrossfadeMode": "0"}


@s.AV_TRANSPORT.action(
    "GetRemainingSleepTimerDuration", _ID, "RemainingSleepTimerDuration CurrentSleepTimerGeneration"
)
def _sleep_timer(call: Call) -> dict[str, str]:
    return {"RemainingSleepTimerDuration": "", "CurrentSleepTimerGeneration": "0"}


@s.AV_TRANSPORT.action("Next", _ID)
@s.AV_TRANSPORT.action("Previous", _ID)
def _other_track(call: Call) -> dict[str, str]:
    _leader(call)
    raise UpnpFault(ILLEGAL_SEEK_TARGET)


@s.AV_TRANSPORT.action("Seek", "InstanceID Unit Target")
def _seek(call: Call) -> dict[str, str]:
    _leader(call)
    raise UpnpFault(ILLEGAL_SEEK_TARGET)


s.AV_TRANSPORT.known("SetNextAVTransportURI", "InstanceID NextURI NextURIMetaData")
s.AV_TRANSPORT.known("SetPlayMode", "InstanceID NewPlayMode")
s.AV_TRANSPORT.known("SetCrossfadeMode", "InstanceID CrossfadeMode")
s.AV_TRANSPORT.known("ConfigureSleepTimer", "InstanceID NewSleepTimerDuration")
s.AV_TRANSPORT.known("RemoveAllTracksFromQueue", _ID)
