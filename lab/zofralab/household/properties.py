# SPDX-License-Identifier: GPL-3.0-or-later
"""The smaller services, as far as controllers ask for them before they play anything."""

from __future__ import annotations

import time

from . import services as s
from .soap import Call, UpnpFault

NO_SUCH_OBJECT = 701
NO_SUCH_VARIABLE = 800

_BROWSE_IN = "ObjectID BrowseFlag Filter StartingIndex RequestedCount SortCriteria"
_EMPTY_LIST = (
    '<DIDL-Lite xmlns:dc="http://purl.org/dc/elements/1.1/" xmlns:upnp="urn:schemas-upnp-org:metadata-1-0/upnp/" '
    'xmlns:r="urn:schemas-rinconnetworks-com:metadata-1-0/" '
    'xmlns="urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/"></DIDL-Lite>'
)


@s.DEVICE_PROPERTIES.action(
    "GetZoneAttributes", "", "CurrentZoneName CurrentIcon CurrentConfiguration CurrentTargetRoomName"
)
def _zone_attributes(call: Call) -> dict[str, str]:
    return {
        "CurrentZoneName": call.player.room,
        "CurrentIcon": "",
        "CurrentConfiguration": "1",
        "CurrentTargetRoomName": "",
    }


@s.DEVICE_PROPERTIES.action(
    "GetZoneInfo",
    "",
    "SerialNumber SoftwareVersion DisplaySoftwareVersion HardwareVersion IPAddress MACAddress CopyrightInfo "
    "ExtraInfo HTAudioIn Flags",
)
def _zone_info(call: Call) -> dict[str, str]:
    player = call.player
    return {
        "SerialNumber": f"{player.mac.replace(':', '-')}:0",
        "SoftwareVersion": player.firmware.version,
        "DisplaySoftwareVersion": player.firmware.display,
        "HardwareVersion": "1.24.1.19-1.2",
        "IPAddress": player.ip,
        "MACAddress": player.mac,
        "CopyrightInfo": "",
        "ExtraInfo": "",
        "HTAudioIn": "0",
        "Flags": "1",
    }


@s.DEVICE_PROPERTIES.action("GetHouseholdID", "", "CurrentHouseholdID")
def _household_id(call: Call) -> dict[str, str]:
    return {"CurrentHouseholdID": call.player.household.id if call.player.household else ""}


@s.DEVICE_PROPERTIES.action("GetInvisible", "", "CurrentInvisible")
def _invisible(call: Call) -> dict[str, str]:
    return {"CurrentInvisible": str(int(call.player.invisible))}


@s.DEVICE_PROPERTIES.action("GetLEDState", "", "CurrentLEDState")
def _led_state(call: Call) -> dict[str, str]:
    return {"CurrentLEDState": "On"}


@s.DEVICE_PROPERTIES.action("GetButtonLockState", "", "CurrentButtonLockState")
def _button_lock(call: Call) -> dict[str, str]:
    return {"CurrentButtonLockState": "Off"}


@s.SYSTEM_PROPERTIES.action("GetString", "VariableName", "StringValue")
def _get_string(call: Call) -> dict[str, str]:
    raise UpnpFault(NO_SUCH_VARIABLE)


@s.CONTENT_DIRECTORY.action("Browse", _BROWSE_IN, "Result NumberReturned TotalMatches UpdateID")
def _browse(call: Call) -> dict[str, str]:
    if not call.arguments["ObjectID"].startswith(("Q:", "SQ:", "FV:", "R:", "A:", "S:", "AI:")):
        raise UpnpFault(NO_SUCH_OBJECT)
    return {"Result": _EMPTY_LIST, "NumberReturned": "0", "TotalMatches": "0", "UpdateID": "1"}


@s.CONTENT_DIRECTORY.action("GetSystemUpdateID", "", "Id")
def _system_update(call: Call) -> dict[str, str]:
    return {"Id": "1"}


@s.ALARM_CLOCK.action(
    "GetTimeNow", "", "CurrentUTCTime CurrentLocalTime CurrentTimeZone CurrentTimeGeneration"
)
def _time_now(call: Call) -> dict[str, str]:
    clock = "%Y-%m-%d %H:%M:%S"
    return {
        "CurrentUTCTime": time.strftime(clock, time.gmtime()),
        "CurrentLocalTime": time.strftime(clock, time.localtime()),
        "CurrentTimeZone": "00000a00",
        "CurrentTimeGeneration": "1",
    }


@s.ALARM_CLOCK.action("ListAlarms", "", "CurrentAlarmList CurrentAlarmListVersion")
def _alarms(call: Call) -> dict[str, str]:
    return {"CurrentAlarmList": "<Alarms></Alarms>", "CurrentAlarmListVersion": f"{call.player.uuid}:1"}


@s.MUSIC_SERVICES.action(
    "ListAvailableServices",
    "",
    "AvailableServiceDescriptorList AvailableServiceTypeList AvailableServiceListVersion",
)
def _music_services(call: Call) -> dict[str, str]:
    return {
        "AvailableServiceDescriptorList": '<Services SchemaVersion="1"></Services>',
        "AvailableServiceTypeList": "",
        "AvailableServiceListVersion": f"{call.player.uuid}:1",
    }


for _connections in (s.RENDERER_CONNECTIONS, s.SERVER_CONNECTIONS):

    @_connections.action("GetProtocolInfo", "", "Source Sink")
    def _protocol_info(call: Call) -> dict[str, str]:
        return {"Source": "", "Sink": "x-rincon-mp3radio:*:*:*,x-rincon:*:*:*,http-get:*:audio/mpeg:*"}


s.GROUP_MANAGEMENT.known("AddMember", "MemberID BootSeq", "CurrentTransportSettings")
s.GROUP_MANAGEMENT.known("RemoveMember", "MemberID")
s.QPLAY.known("QPlayAuth", "Seed", "Code MID DID")
s.QUEUE.known("CreateQueue", "QueueOwnerID QueueOwnerContext QueuePolicy", "QueueID")
s.VIRTUAL_LINE_IN.known("Stop", "InstanceID")
