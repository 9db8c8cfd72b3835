# SPDX-License-Identifier: GPL-3.0-or-later
"""The table of services and actions, and their service descriptions.

One table says which actions a service has, with their arguments; requests are checked against it, answers are
written from it, and the SCPD documents are generated from it.
"""

from __future__ import annotations

from dataclasses import dataclass, field
from typing import Any, Callable, Optional
from xml.sax.saxutils import escape

#: Takes a call (soap.Call) and gives the values of its answer.
Handler = Callable[[Any], "dict[str, str]"]


@dataclass(frozen=True)
class Action:
    """Names of the arguments in their order; without a handler an action is known but not simulated (fault 602)."""

    name: str
    inputs: tuple[str, ...] = ()
    outputs: tuple[str, ...] = ()
    handler: Optional[Handler] = None


@dataclass
class Service:
    """One service with the paths of a real player."""

    name: str
    folder: str = ""
    domain: str = "schemas-upnp-org"
    actions: dict[str, Action] = field(default_factory=dict)

    @property
    def type(self) -> str:
        return f"urn:{self.domain}:service:{self.name}:1"

    @property
    def service_id(self) -> str:
        return f"urn:{self.domain.removeprefix('schemas-')}:serviceId:{self.name}"

    @property
    def control(self) -> str:
        return f"{self.folder}/{self.name}/Control"

    @property
    def event(self) -> str:
        return f"{self.folder}/{self.name}/Event"

    @property
    def scpd(self) -> str:
        return f"/xml/{self.name}1.xml"

    def action(self, name: str, inputs: str = "", outputs: str = "") -> Callable[[Handler], Handler]:
        """Decorator: this function carries out that action. Arguments are names with spaces between."""

        def register(handler: Handler) -> Handler:
            self.actions[name] = Action(name, tuple(inputs.split()), tuple(outputs.split()), handler)
            return handler

        return register

    def known(self, name: str, inputs: str = "", outputs: str = "") -> None:
        """An action that is listed and answered with fault 602."""
        self.actions[name] = Action(name, tuple(inputs.split()), tuple(outputs.split()))

    def description(self, indent: str) -> str:
        """The <service> element of a device description."""
        rows = (
            ("serviceType", self.type),
            ("serviceId", self.service_id),
            ("controlURL", self.control),
            ("eventSubURL", self.event),
            ("SCPDURL", self.scpd),
        )
        inner = "".join(f"{indent}  <{tag}>{escape(text)}</{tag}>\n" for tag, text in rows)
        return f"{indent}<service>\n{inner}{indent}</service>\n"

    def scpd_document(self) -> str:
        """The SCPD: every action with its arguments; every argument has a string variable of its own."""
        names = sorted({arg for a in self.actions.values() for arg in a.inputs + a.outputs})
        actions = "".join(self._scpd_action(a) for a in self.actions.values())
        variables = "".join(
            f'<stateVariable sendEvents="no"><name>A_ARG_TYPE_{n}</name><dataType>string</dataType></stateVariable>'
            for n in names
        )
        return (
            '<?xml version="1.0" encoding="utf-8" ?>\n<scpd xmlns="urn:schemas-upnp-org:service-1-0">'
            "<specVersion><major>1</major><minor>0</minor></specVersion>"
            f"<serviceStateTable>{variables}</serviceStateTable><actionList>{actions}</actionList></scpd>"
        )

    @staticmethod
    def _scpd_action(action: Action) -> str:
        rows = [(n, "in") for n in action.inputs] + [(n, "out") for n in action.outputs]
        arguments = "".join(
            f"<argument><name>{n}</name><direction>{d}</direction>"
            f"<relatedStateVariable>A_ARG_TYPE_{n}</relatedStateVariable></argument>"
            for n, d in rows
        )
        return f"<action><name>{action.name}</name><argumentList>{arguments}</argumentList></action>"


AV_TRANSPORT = Service("AVTransport", "/MediaRenderer")
RENDERING = Service("RenderingControl", "/MediaRenderer")
GROUP_RENDERING = Service("GroupRenderingControl", "/MediaRenderer")
RENDERER_CONNECTIONS = Service("ConnectionManager", "/MediaRenderer")
QUEUE = Service("Queue", "/MediaRenderer", "schemas-sonos-com")
VIRTUAL_LINE_IN = Service("VirtualLineIn", "/MediaRenderer")
CONTENT_DIRECTORY = Service("ContentDirectory", "/MediaServer")
SERVER_CONNECTIONS = Service("ConnectionManager", "/MediaServer")
ALARM_CLOCK = Service("AlarmClock")
MUSIC_SERVICES = Service("MusicServices")
DEVICE_PROPERTIES = Service("DeviceProperties")
SYSTEM_PROPERTIES = Service("SystemProperties")
TOPOLOGY = Service("ZoneGroupTopology")
GROUP_MANAGEMENT = Service("GroupManagement")
QPLAY = Service("QPlay", "", "schemas-tencent-com")

#: The services of the device itself, of its media server and of its media renderer.
ROOT = [ALARM_CLOCK, MUSIC_SERVICES, DEVICE_PROPERTIES, SYSTEM_PROPERTIES, TOPOLOGY, GROUP_MANAGEMENT, QPLAY]
ROOT_OF_BRIDGE = [DEVICE_PROPERTIES, SYSTEM_PROPERTIES, TOPOLOGY, GROUP_MANAGEMENT]
SERVER = [CONTENT_DIRECTORY, SERVER_CONNECTIONS]
RENDERER = [RENDERING, RENDERER_CONNECTIONS, AV_TRANSPORT, QUEUE, GROUP_RENDERING, VIRTUAL_LINE_IN]

#: A companion offers less, and at paths of its own: a controller has to read them.
COMPANION_PREFIX = "/upnp"
COMPANION = [AV_TRANSPORT, RENDERING, TOPOLOGY]
