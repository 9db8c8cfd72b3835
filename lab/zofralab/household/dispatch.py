# SPDX-License-Identifier: GPL-3.0-or-later
"""Which request is for what: descriptions, service documents, control, events. Everything else is not there."""

from __future__ import annotations

from . import descriptions, services as s
from .playerserver import FORBIDDEN, Answer, Hang, HttpRequest, Reset
from .soap import UpnpFault, answer as soap_answer, fault, read_call
from .state import Player
from .surroundings import Surroundings

_XML = [("CONTENT-TYPE", "text/xml")]
_SOAP = [("CONTENT-TYPE", 'text/xml; charset="utf-8"'), ("EXT", "")]
_HTML = [("CONTENT-TYPE", "text/html")]


def dispatch(house: Surroundings, player: Player, request: HttpRequest) -> Answer:
    """The answer of a player; raises Hang or Reset where it is told to."""
    if request.version == "HTTP/1.1" and "host" not in request.headers:
        return Answer(400)
    path = request.target.partition("?")[0]
    if path.startswith("/xml/") or path.startswith("/img/"):
        return _document(player, request, path)
    for prefix, service in descriptions.offered(player):
        if path == prefix + service.control:
            return _control(house, player, service, request)
        if path == prefix + service.event:
            return _event(house, player, service, request)
    return Answer(404, _HTML)


def _document(player: Player, request: HttpRequest, path: str) -> Answer:
    if request.method not in ("GET", "HEAD"):
        return Answer(405, [("Allow", "GET, HEAD"), *_HTML])
    if path == "/xml/device_description.xml":
        form = descriptions.HOSTILE.get(player.switches.description, descriptions.description)
        return Answer(200, _XML, form(player).encode())
    for _, service in descriptions.offered(player):
        if path == service.scpd:
            return Answer(200, _XML, service.scpd_document().encode())
    return Answer(404, _HTML)


def _control(house: Surroundings, player: Player, service: s.Service, request: HttpRequest) -> Answer:
    if player.switches.forbidden:
        return Answer(403, _HTML, FORBIDDEN)
    if request.method != "POST":
        return Answer(405, [("Allow", "POST"), *_HTML])
    if not request.headers.get("content-length", "").isdigit():
        return Answer(411, _HTML)
    if request.headers.get("content-type", "").partition(";")[0].strip().lower() != "text/xml":
        return Answer(415, _HTML)
    try:
        call = read_call(house, player, service, request.headers.get("soapaction", ""), request.body)
        ordered = _ordered_failure(player, call.action.name)
        if ordered is not None:
            return ordered
        assert call.action.handler is not None
        body = soap_answer(call, call.action.handler(call))
    except UpnpFault as refused:
        return Answer(500, _SOAP, fault(refused.code))
    if player.switches.action_status and call.action.name != "GetZoneGroupState":
        return Answer(player.switches.action_status)
    return Answer(200, _SOAP, body)


def _ordered_failure(player: Player, action: str) -> Answer | None:
    """What the switch `fail` says for this action; it is not carried out then."""
    order = player.switches.fail.get(action)
    if order is None:
        return None
    if order == "silent":
        raise Hang
    if order in ("close", "reset"):
        raise Reset(hard=order == "reset")
    if isinstance(order, str) and order.startswith("http:"):
        return Answer(int(order.removeprefix("http:")), _HTML)
    raise UpnpFault(int(order))


def _event(house: Surroundings, player: Player, service: s.Service, request: HttpRequest) -> Answer:
    if player.switches.forbidden:
        return Answer(403, _HTML, FORBIDDEN)
    if request.method == "SUBSCRIBE":
        return house.events.subscribe(player, service, request)
    if request.method == "UNSUBSCRIBE":
        return house.events.unsubscribe(request)
    return Answer(405, [("Allow", "SUBSCRIBE, UNSUBSCRIBE"), *_HTML])
