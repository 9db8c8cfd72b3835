# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests of the household share: a lab with nothing but players, and a stranger to meet them with."""

import os
import sys
import xml.etree.ElementTree as ElementTree
from xml.sax.saxutils import escape

import pytest

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
sys.path.insert(0, os.path.join(ROOT, "lab"))

from agent_process import AgentProcess  # noqa: E402
from zofralab.lab import Lab  # noqa: E402
from zofralab.process import wait_until  # noqa: E402

ZONE_PLAYER = "urn:schemas-upnp-org:device:ZonePlayer:1"
AV_TRANSPORT = "urn:schemas-upnp-org:service:AVTransport:1"
RENDERING = "urn:schemas-upnp-org:service:RenderingControl:1"
TOPOLOGY = "urn:schemas-upnp-org:service:ZoneGroupTopology:1"
PATHS = {
    AV_TRANSPORT: "/MediaRenderer/AVTransport/Control",
    RENDERING: "/MediaRenderer/RenderingControl/Control",
    TOPOLOGY: "/ZoneGroupTopology/Control",
}
SEARCH = (
    "M-SEARCH * HTTP/1.1\r\nHOST: 239.255.255.250:1900\r\nMAN: \"ssdp:discover\"\r\nMX: 1\r\n"
    f"ST: {ZONE_PLAYER}\r\n\r\n"
)
MULTICAST, BROADCAST = "239.255.255.250", "10.77.0.255"


# What may be given to the stranger without names.
POSITIONAL = {"exchange": ("host", "port", "data"), "search": ("data", "to", "seconds"),
              "hold": ("host", "port", "count", "seconds")}


def make_stranger(lab):
    """Somebody in the program's namespace who does what household_agent.py can."""
    return AgentProcess(lab, "household_agent.py", POSITIONAL)


class Answer:
    """An HTTP answer taken apart."""

    def __init__(self, exchanged):
        self.end, self.seconds = exchanged["end"], exchanged["seconds"]
        self.raw = exchanged["data"]
        head, _, self.body = self.raw.partition("\r\n\r\n")
        self.lines = head.split("\r\n")
        words = self.lines[0].split(" ")
        self.status = int(words[1]) if len(words) > 1 and words[1].isdigit() else 0
        self.headers = {k.lower(): v.strip() for k, _, v in (x.partition(":") for x in self.lines[1:])}

    @property
    def fault(self):
        """The UPnP error code, or None."""
        found = [e.text for e in ElementTree.fromstring(self.body).iter() if e.tag.endswith("}errorCode")]
        return int(found[0]) if found else None

    @property
    def values(self):
        """The arguments of an answer to an action."""
        body = ElementTree.fromstring(self.body)[0]
        return {e.tag: e.text or "" for e in body[0]}


def envelope(service, action, **arguments):
    """A request to control, as controllers write them."""
    inner = "".join(f"<{k}>{escape(str(v))}</{k}>" for k, v in arguments.items())
    return (
        '<?xml version="1.0" encoding="utf-8"?>\n<s:Envelope xmlns:s="http://schemas.xmlsoap.org/soap/envelope/">\n'
        f'  <s:Body>\n    <u:{action} xmlns:u="{service}">{inner}</u:{action}>\n  </s:Body>\n</s:Envelope>'
    )


def post(path, body, **headers):
    """The bytes of a POST; header names with _ for -; None leaves one out."""
    rows = {"Host": "x", "Content-Type": 'text/xml; charset="utf-8"', "Content-Length": len(body.encode())}
    rows.update({k.replace("_", "-"): v for k, v in headers.items()})
    lines = [f"{k}: {v}" for k, v in rows.items() if v is not None]
    return f"POST {path} HTTP/1.1\r\n" + "\r\n".join(lines) + "\r\n\r\n" + body


class Visitor:
    """A controller of few words: gets documents and sends actions."""

    def __init__(self, stranger):
        self._stranger = stranger

    def get(self, ip, path="/xml/device_description.xml", timeout=5.0):
        """A plain GET."""
        return self.send(ip, f"GET {path} HTTP/1.1\r\nHost: {ip}:1400\r\n\r\n", timeout)

    def send(self, ip, data, timeout=5.0):
        """Any bytes."""
        return Answer(self._stranger.exchange(ip, 1400, data, timeout=timeout))

    def act(self, ip, action, service=AV_TRANSPORT, path=None, **arguments):
        """An action on instance 0, where the service has instances."""
        if service != TOPOLOGY:
            arguments = {"InstanceID": 0, **arguments}
        body = envelope(service, action, **arguments)
        return self.send(ip, post(path or PATHS[service], body, SOAPACTION=f'"{service}#{action}"'))

    def topology(self, ip):
        """The inner topology document, as text."""
        answer = self.act(ip, "GetZoneGroupState", TOPOLOGY)
        assert answer.status == 200, answer.raw
        return answer.values["ZoneGroupState"]


@pytest.fixture(scope="module")
def household_lab():
    """A lab with players and nothing else."""
    with Lab(["household"]) as lab:
        yield lab


@pytest.fixture(scope="module")
def household_stranger(household_lab):
    """Someone in the program's namespace, on the air with noise."""
    stranger = make_stranger(household_lab)
    stranger.radio(port=8000)
    yield stranger
    stranger.close()


@pytest.fixture
def house(household_lab):
    """The switches of the household, as new."""
    household_lab.reset()
    return household_lab.household


@pytest.fixture
def visitor(household_stranger):
    """A controller."""
    return Visitor(household_stranger)


def eventually(condition, what, timeout=5.0):
    """Waits for the other side of a network; fails when it does not come."""
    return wait_until(condition, timeout, what)
