# SPDX-License-Identifier: GPL-3.0-or-later
"""Requests to control a player: what is read out of an envelope, and how answers and faults are written."""

from __future__ import annotations

import re
import xml.etree.ElementTree as ElementTree
from dataclasses import dataclass, field
from typing import Mapping
from xml.sax.saxutils import escape

from .services import Action, Service
from .state import Player
from .surroundings import Surroundings

_ENVELOPE = "http://schemas.xmlsoap.org/soap/envelope/"
_ACTION_HEADER = re.compile(r'^"([^"#]+)#([^"#]+)"$')

INVALID_ACTION = 401
INVALID_ARGS = 402
NOT_IMPLEMENTED = 602
INVALID_INSTANCE = 718


class UpnpFault(Exception):
    """An action that was understood and refused; becomes HTTP 500 with the code in a fault."""

    def __init__(self, code: int) -> None:
        super().__init__(f"UPnP error {code}")
        self.code = code


@dataclass
class Call:
    """One action to carry out."""

    house: Surroundings
    player: Player
    service: Service
    action: Action
    arguments: dict[str, str] = field(default_factory=dict)

    def number(self, name: str, low: int, high: int) -> int:
        """An integer argument within bounds; fault 402 otherwise."""
        text = self.arguments[name].strip()
        if not re.fullmatch(r"[+-]?\d{1,9}", text) or not low <= int(text) <= high:
            raise UpnpFault(INVALID_ARGS)
        return int(text)

    def flag(self, name: str) -> bool:
        """A boolean argument as UPnP spells them; fault 402 otherwise."""
        text = self.arguments[name].strip().lower()
        if text not in ("0", "1", "true", "false", "yes", "no"):
            raise UpnpFault(INVALID_ARGS)
        return text in ("1", "true", "yes")


def read_call(house: Surroundings, player: Player, service: Service, soapaction: str, body: bytes) -> Call:
    """Checks header, envelope and arguments against the table of services. Raises UpnpFault."""
    named = _ACTION_HEADER.match(soapaction.strip())
    if named is None or named.group(1) != service.type:
        raise UpnpFault(INVALID_ACTION)
    element = _action_element(body)
    if element.tag != f"{{{service.type}}}{named.group(2)}":
        raise UpnpFault(INVALID_ACTION)
    action = service.actions.get(named.group(2))
    if action is None:
        raise UpnpFault(INVALID_ACTION)
    if action.handler is None:
        raise UpnpFault(NOT_IMPLEMENTED)
    arguments = {child.tag.rpartition("}")[2]: child.text or "" for child in element}
    if any(name not in arguments for name in action.inputs):
        raise UpnpFault(INVALID_ARGS)
    if "InstanceID" in action.inputs and arguments["InstanceID"].strip() != "0":
        raise UpnpFault(INVALID_INSTANCE)
    return Call(house, player, service, action, arguments)


def peek_action(soapaction: str) -> str:
    """The name of the action for the log; "" when the header names none."""
    named = _ACTION_HEADER.match(soapaction.strip())
    return named.group(2) if named else ""


def peek_arguments(body: bytes) -> dict[str, str]:
    """The arguments for the log; empty when the body is not an envelope."""
    try:
        return {c.tag.rpartition("}")[2]: c.text or "" for c in _action_element(body)}
    except UpnpFault:
        return {}


def _action_element(body: bytes) -> ElementTree.Element:
    if b"<!DOCTYPE" in body:
        raise UpnpFault(INVALID_ACTION)
    try:
        root = ElementTree.fromstring(body)
    except ElementTree.ParseError:
        raise UpnpFault(INVALID_ACTION) from None
    inner = root.find(f"{{{_ENVELOPE}}}Body")
    if root.tag != f"{{{_ENVELOPE}}}Envelope" or inner is None or len(inner) != 1:
        raise UpnpFault(INVALID_ACTION)
    return inner[0]


def _wrap(body: str) -> bytes:
    return (
        f'<s:Envelope xmlns:s="{_ENVELOPE}" s:encodingStyle="http://schemas.xmlsoap.org/soap/encoding/">'
        f"<s:Body>{body}</s:Body></s:Envelope>"
    ).encode()


def answer(call: Call, values: Mapping[str, str]) -> bytes:
    """The envelope of a success, arguments in the order of the table."""
    rows = "".join(f"<{name}>{escape(values[name], _QUOTES)}</{name}>" for name in call.action.outputs)
    name = f"u:{call.action.name}Response"
    return _wrap(f'<{name} xmlns:u="{call.service.type}">{rows}</{name}>')


def fault(code: int) -> bytes:
    """The envelope of a refusal."""
    return _wrap(
        "<s:Fault><faultcode>s:Client</faultcode><faultstring>UPnPError</faultstring><detail>"
        f'<UPnPError xmlns="urn:schemas-upnp-org:control-1-0"><errorCode>{code}</errorCode></UPnPError>'
        "</detail></s:Fault>"
    )


_QUOTES = {'"': "&quot;"}
