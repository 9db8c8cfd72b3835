# SPDX-License-Identifier: GPL-3.0-or-later
"""Device descriptions: what a player says it is, and descriptions made to hurt whoever reads them."""

from __future__ import annotations

from xml.sax.saxutils import escape

from . import services as s
from .models import Kind
from .state import Player

_ROOT = '<?xml version="1.0" encoding="utf-8" ?>\n<root xmlns="urn:schemas-upnp-org:device-1-0">\n'
_SPEC = "  <specVersion>\n    <major>1</major>\n    <minor>0</minor>\n  </specVersion>\n"
ZONE_PLAYER = "urn:schemas-upnp-org:device:ZonePlayer:1"
MEDIA_SERVER = "urn:schemas-upnp-org:device:MediaServer:1"
MEDIA_RENDERER = "urn:schemas-upnp-org:device:MediaRenderer:1"


def description(player: Player) -> str:
    """The document of a behaving device."""
    if player.model.is_companion:
        return _companion(player)
    return _zone_player(player)


def offered(player: Player) -> list[tuple[str, s.Service]]:
    """The services that answer at this device, with the prefix of their paths."""
    if player.model.is_companion:
        listed = [x for x in s.COMPANION if x is not s.TOPOLOGY or player.has_topology]
        return [(s.COMPANION_PREFIX, x) for x in listed]
    if player.model.kind is Kind.BRIDGE:
        return [("", x) for x in s.ROOT_OF_BRIDGE]
    return [("", x) for x in s.ROOT + s.SERVER + s.RENDERER]


def _rows(rows: list[tuple[str, str]], indent: str) -> str:
    return "".join(f"{indent}<{tag}>{escape(text)}</{tag}>\n" for tag, text in rows)


def _icons(player: Player) -> str:
    url = f"/img/icon-{player.model.number}.png"
    return (
        "    <iconList>\n      <icon>\n        <id>0</id>\n        <mimetype>image/png</mimetype>\n"
        "        <width>48</width>\n        <height>48</height>\n        <depth>24</depth>\n"
        f"        <url>{url}</url>\n      </icon>\n    </iconList>\n"
    )


def _services(listed: list[s.Service], indent: str) -> str:
    inner = "".join(x.description(indent + "  ") for x in listed)
    return f"{indent}<serviceList>\n{inner}{indent}</serviceList>\n"


def _zone_player(player: Player) -> str:
    model, firmware = player.model, player.firmware
    bridge = model.kind is Kind.BRIDGE
    head = _rows(
        [
            ("deviceType", ZONE_PLAYER),
            ("friendlyName", f"{player.ip} - {model.name} - {player.uuid}"),
            ("manufacturer", model.manufacturer),
            ("manufacturerURL", "http://www.sonos.com"),
            ("modelNumber", model.number),
            ("modelDescription", model.name),
            ("modelName", model.name),
            ("modelURL", f"http://www.sonos.com/products/zoneplayers/{model.number}"),
            ("softwareVersion", firmware.version),
            ("swGen", str(firmware.generation)),
            ("hardwareVersion", "1.24.1.19-1.2"),
            ("serialNum", f"{player.mac.replace(':', '-')}:0"),
            ("MACAddress", player.mac),
            ("UDN", f"uuid:{player.uuid}"),
        ],
        "    ",
    )
    tail = _rows(
        [
            ("minCompatibleVersion", firmware.minimum),
            ("legacyCompatibleVersion", firmware.legacy),
            ("apiVersion", "1.46.0"),
            ("minApiVersion", "1.1.0"),
            ("displayVersion", firmware.display),
            ("extraVersion", ""),
            ("roomName", player.room),
            ("displayName", model.display),
            ("zoneType", str(model.zone_type)),
            ("feature1", "0x00000000"),
            ("feature2", "0x07c01b12"),
            ("feature3", "0x0f45cc8a"),
            ("seriesid", "A100"),
            ("variant", "2"),
            ("internalSpeakerSize", "-1" if bridge else "3"),
            ("memory", "1024"),
            ("flash", "1024"),
            ("ampOnTime", "35"),
            ("retailMode", "0"),
        ],
        "    ",
    )
    # Unreplaced marks of a template, as released software really carries them between its elements.
    stray = "    #DEACTIVATION_STATE_TAG_AND_VALUE#\n" if not firmware.wraps_groups else ""
    listed = s.ROOT_OF_BRIDGE if bridge else s.ROOT
    devices = "" if bridge else _media_server(player) + _media_renderer(player)
    return (
        f"{_ROOT}{_SPEC}  <device>\n{head}{_icons(player)}{tail}{stray}{_services(listed, '    ')}"
        f"    <deviceList>\n{devices}    </deviceList>\n  </device>\n</root>\n"
    )


def _embedded(player: Player, device_type: str, name: str, suffix: str, body: str) -> str:
    model = player.model
    rows = _rows(
        [
            ("deviceType", device_type),
            ("friendlyName", name),
            ("manufacturer", model.manufacturer),
            ("manufacturerURL", "http://www.sonos.com"),
            ("modelNumber", model.number),
            ("modelDescription", f"{model.name} Media"),
            ("modelName", model.name),
            ("UDN", f"uuid:{player.uuid}_{suffix}"),
        ],
        "        ",
    )
    return f"      <device>\n{rows}{body}      </device>\n"


def _media_server(player: Player) -> str:
    name = f"{player.ip} - {player.model.name} Media Server"
    return _embedded(player, MEDIA_SERVER, name, "MS", _services(s.SERVER, "        "))


def _media_renderer(player: Player) -> str:
    extension = (
        '        <X_Rhapsody-Extension xmlns="http://www.real.com/rhapsody/xmlns/upnp-1-0">\n'
        f"          <deviceID>urn:rhapsody-real-com:device-id-1-0:sonos_1:{player.uuid}</deviceID>\n"
        "        </X_Rhapsody-Extension>\n"
        '        <qq:X_QPlay_SoftwareCapability xmlns:qq="http://www.tencent.com">QPlay:2'
        "</qq:X_QPlay_SoftwareCapability>\n"
    )
    name = f"{player.room} - {player.model.name} Media Renderer"
    return _embedded(player, MEDIA_RENDERER, name, "MR", _services(s.RENDERER, "        ") + extension)


def _companion(player: Player) -> str:
    rows = _rows(
        [
            ("deviceType", ZONE_PLAYER),
            ("friendlyName", player.room),
            ("manufacturer", player.model.manufacturer),
            ("modelName", player.model.name),
            ("UDN", f"uuid:{player.uuid}"),
            ("roomName", player.room),
        ],
        "    ",
    )
    listed = "".join(
        x.description("      ").replace("URL>/", f"URL>{prefix}/") for prefix, x in offered(player)
    )
    return (
        f"{_ROOT}{_SPEC}  <device>\n{rows}    <serviceList>\n{listed}    </serviceList>\n  </device>\n</root>\n"
    )


def _with_doctype(player: Player) -> str:
    doctype = '<!DOCTYPE root [<!ENTITY big "' + "x" * 4000 + '">]>\n'
    body = description(player).split("\n", 1)[1]
    return '<?xml version="1.0"?>\n' + doctype + body.replace("</device>", "&big;" * 2000 + "</device>", 1)


def _huge(player: Player) -> str:
    return description(player).replace("</root>", "<pad>" + "x" * (4 << 20) + "</pad></root>")


def _deep(player: Player) -> str:
    return description(player).replace("</root>", "<d>" * 100_000 + "</d>" * 100_000 + "</root>")


def _wide(player: Player) -> str:
    attributes = " ".join(f'a{i}="1"' for i in range(20_000))
    return description(player).replace("</root>", f"<w {attributes}/></root>")


def _cut(player: Player) -> str:
    text = description(player)
    return text[: len(text) // 2]


#: Names of the hostile forms for the switch `description`.
HOSTILE = {"doctype": _with_doctype, "huge": _huge, "deep": _deep, "wide": _wide, "cut": _cut}

ROUTER = (
    _ROOT + _SPEC + "  <device>\n"
    "    <deviceType>urn:schemas-upnp-org:device:InternetGatewayDevice:1</deviceType>\n"
    "    <friendlyName>Home gateway</friendlyName>\n    <manufacturer>Gateway Works</manufacturer>\n"
    "    <modelName>GW-7</modelName>\n    <UDN>uuid:7d0c2b1e-1d2f-4a53-9a5e-0277000000fe</UDN>\n"
    "    <serviceList>\n      <service>\n"
    "        <serviceType>urn:schemas-upnp-org:service:Layer3Forwarding:1</serviceType>\n"
    "        <serviceId>urn:upnp-org:serviceId:L3Forwarding1</serviceId>\n"
    "        <controlURL>/ctl/L3F</controlURL>\n        <eventSubURL>/evt/L3F</eventSubURL>\n"
    "        <SCPDURL>/L3F.xml</SCPDURL>\n      </service>\n    </serviceList>\n  </device>\n</root>\n"
)
