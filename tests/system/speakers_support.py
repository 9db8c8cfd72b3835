# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests of the speakers share: the program with its system log caught, and requests as they are to be."""

import re
from xml.sax.saxutils import escape

import pytest

from zofralab.household.systemlog import SystemLog

KITCHEN, DINING, OFFICE, BEAM = "10.77.0.15", "10.77.0.16", "10.77.0.17", "10.77.0.11"
OLD_BEDROOM, OLD_KITCHEN, COMPANION = "10.77.0.20", "10.77.0.21", "10.77.0.22"
#: Players of the scene "twelve" that take commands: neither hidden nor subs.
CONTROLLABLE = {BEAM, KITCHEN, DINING, OFFICE, OLD_BEDROOM, OLD_KITCHEN, COMPANION}
ALL_TWELVE = [f"10.77.0.{n}" for n in range(11, 23)]
SEARCH = (b"M-SEARCH * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nMAN: \"ssdp:discover\"\r\nMX: 1\r\n"
          b"ST: urn:schemas-upnp-org:device:ZonePlayer:1\r\n\r\n")
METADATA = (
    '&lt;DIDL-Lite xmlns:dc="http://purl.org/dc/elements/1.1/" xmlns:upnp="urn:schemas-upnp-org:metadata-1-0/upnp/" '
    'xmlns:r="urn:schemas-rinconnetworks-com:metadata-1-0/" xmlns="urn:schemas-upnp-org:metadata-1-0/DIDL-Lite/"&gt;'
    '&lt;item id="-1" parentID="-1" restricted="true"&gt;&lt;dc:title&gt;Zofra Radio&lt;/dc:title&gt;'
    "&lt;upnp:class&gt;object.item.audioItem.audioBroadcast&lt;/upnp:class&gt;&lt;/item&gt;&lt;/DIDL-Lite&gt;"
)
CONTROL = {"AVTransport": "/MediaRenderer/AVTransport/Control",
           "RenderingControl": "/MediaRenderer/RenderingControl/Control",
           "ZoneGroupTopology": "/ZoneGroupTopology/Control"}
RESCAN = ("Audio Output (…", "🔄 Search for Sonos and Zofra devices")


def stream_uri(station, path):
    """What the players are given for a station of the lab."""
    return f"x-rincon-mp3radio://{station.replace('_', '-')}-mp3.streams.zofra.test{path}"


def expected_body(service, action, arguments=""):
    """The envelope, to the last byte."""
    return (
        '<?xml version="1.0" encoding="utf-8"?>\n<s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/">\n'
        f'  <s:Body>\n    <u:{action} xmlns:u="urn:schemas-upnp-org:service:{service}:1">{arguments}</u:{action}>\n'
        "  </s:Body>\n</s:Envelope>"
    )


def uri_arguments(uri):
    """The arguments of SetAVTransportURI."""
    return (f"<InstanceID>0</InstanceID>\n<CurrentURI>{escape(uri)}</CurrentURI>\n"
            f"<CurrentURIMetaData>{METADATA}</CurrentURIMetaData>")


def assert_request(request, service, action, arguments, prefix=""):
    """One recorded request is what it has to be: line, headers as they are spelt, and body byte for byte."""
    lines = request["head"].split("\r\n")
    assert lines[0] == f"POST {prefix}{CONTROL[service]} HTTP/1.1"
    assert 'Content-Type: text/xml; charset="utf-8"' in lines
    assert f'SOAPACTION: "urn:schemas-upnp-org:service:{service}:1#{action}"' in lines
    names = [line.partition(":")[0].lower() for line in lines[1:] if line]
    assert len(names) == len(set(names)), "a header is there twice"
    assert "transfer-encoding" not in names and "expect" not in names
    assert request["body"].encode("latin-1").decode() == expected_body(service, action, arguments)


@pytest.fixture
def system_log(tmp_path):
    """The program's system log."""
    directory = tmp_path / "syslog"
    directory.mkdir()
    log = SystemLog(str(directory))
    yield log
    log.close()


@pytest.fixture
def binary(binary, system_log):
    """The program, with its system log led to the test."""
    return system_log.wrapper(binary)


@pytest.fixture
def house(lab):
    """The household. Addresses that are nobody's refuse, which keeps scans short."""
    lab.household.others(mode="refused")
    return lab.household


class Rooms:
    """What the program shows, and how a run of discovery is waited for."""

    def __init__(self, radio, system_log):
        self.radio = radio
        self.log = system_log

    def wait_scanned(self, timeout=60.0, since=0.0):
        """Waits for the end of a run that began after `since`; returns the status then."""
        self.log.wait_for(r"\[Sonos\] .*Sendeversuche.*", timeout, since)
        return self.radio.wait_status(timeout, scanning=False)

    def titles(self, status=None):
        """The titles in their order."""
        return [room["title"] for room in (status or self.radio.status())["rooms"]]

    def id_of(self, house, ip):
        """The room that a player leads."""
        return house.player(player=ip)["uuid"]


@pytest.fixture
def rooms(radio, system_log):
    """The rooms of `radio`."""
    return Rooms(radio, system_log)


def tell(radio, *options):
    """Hands options to the running program, which has to take them."""
    done = radio.ask(*options)
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")


def logged(system_log, pattern, since=0.0):
    """Log entries that match, as texts."""
    return [text for text in system_log.texts(since) if re.fullmatch(pattern, text)]


def acts(house, action, **where):
    """Recorded actions as (address, arguments)."""
    return [(r["ip"], r["arguments"]) for r in house.requests(action=action, **where)]
