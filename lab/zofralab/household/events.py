# SPDX-License-Identifier: GPL-3.0-or-later
"""Event subscriptions: controllers that keep a mirror of a household ask to be told of changes."""

from __future__ import annotations

import asyncio
import itertools
import re
import time
from dataclasses import dataclass
from urllib.parse import urlsplit
from xml.sax.saxutils import escape

from . import services as s
from .playerserver import Answer, HttpRequest
from .state import Player
from .topology import zone_group_state

_CALLBACK = re.compile(r"<(http://[^>]+)>")
_LONGEST = 3600
_MOST = 500


@dataclass
class Subscription:
    """Who is told of what. `key` counts up with each notification, as the protocol wants it."""

    sid: str
    player: Player
    service: s.Service
    callback: str
    until: float
    key: int = 0


class Events:
    """Keeps subscriptions and tells them; a callback that cannot be reached is simply not told."""

    def __init__(self) -> None:
        self._subscriptions: dict[str, Subscription] = {}
        self._numbers = itertools.count(1)
        self._sending: set[asyncio.Task[None]] = set()

    def subscribe(self, player: Player, service: s.Service, request: HttpRequest) -> Answer:
        """Answers SUBSCRIBE, new or renewed: 400 for both forms at once, 412 for neither."""
        headers = request.headers
        sid, callback = headers.get("sid"), _CALLBACK.search(headers.get("callback", ""))
        if sid is not None and ("callback" in headers or "nt" in headers):
            return Answer(400)
        seconds = _seconds(headers.get("timeout", ""))
        if sid is not None:
            known = self._subscriptions.get(sid)
            if known is None or known.until < time.monotonic():
                return Answer(412)
            known.until = time.monotonic() + seconds
            return _granted(sid, seconds)
        if callback is None or headers.get("nt") != "upnp:event" or len(self._subscriptions) >= _MOST:
            return Answer(412)
        sid = f"uuid:{player.uuid}_sub{next(self._numbers):010d}"
        new = Subscription(sid, player, service, callback.group(1), time.monotonic() + seconds)
        self._subscriptions[sid] = new
        self._tell(new)
        return _granted(sid, seconds)

    def unsubscribe(self, request: HttpRequest) -> Answer:
        return Answer(412 if self._subscriptions.pop(request.headers.get("sid", ""), None) is None else 200)

    def changed(self, player: Player) -> None:
        """Tells everyone concerned: the player's own subscribers, and those who watch the topology of its household."""
        now = time.monotonic()
        self._subscriptions = {k: v for k, v in self._subscriptions.items() if v.until >= now}
        for one in self._subscriptions.values():
            same_house = one.player.household is player.household
            if one.player is player or (one.service is s.TOPOLOGY and same_house):
                self._tell(one)

    def clear(self) -> None:
        self._subscriptions.clear()
        for task in self._sending:
            task.cancel()

    def __len__(self) -> int:
        return len(self._subscriptions)

    def _tell(self, subscription: Subscription) -> None:
        # What is told is how things are now, not how they are when it is sent.
        sending = self._send(subscription, subscription.key, _property_set(subscription).encode())
        task = asyncio.get_running_loop().create_task(sending)
        subscription.key += 1
        self._sending.add(task)
        task.add_done_callback(self._sending.discard)

    async def _send(self, subscription: Subscription, key: int, body: bytes) -> None:
        # The answer to SUBSCRIBE has to be there before the first notification is.
        await asyncio.sleep(0.02)
        parts = urlsplit(subscription.callback)
        head = (
            f"NOTIFY {parts.path or '/'} HTTP/1.1\r\nHOST: {parts.netloc}\r\n"
            f"CONTENT-TYPE: text/xml\r\nCONTENT-LENGTH: {len(body)}\r\nNT: upnp:event\r\nNTS: upnp:propchange\r\n"
            f"SID: {subscription.sid}\r\nSEQ: {key}\r\nConnection: close\r\n\r\n"
        )
        try:
            opening = asyncio.open_connection(parts.hostname, parts.port or 80)
            reader, writer = await asyncio.wait_for(opening, 3)
            writer.write(head.encode() + body)
            await asyncio.wait_for(reader.read(4096), 3)
            writer.close()
        except (OSError, asyncio.TimeoutError):
            return


def _seconds(timeout: str) -> int:
    found = re.fullmatch(r"[Ss]econd-(\d{1,6})", timeout.strip())
    return min(_LONGEST, int(found.group(1))) if found else _LONGEST


def _granted(sid: str, seconds: int) -> Answer:
    return Answer(200, [("SID", sid), ("TIMEOUT", f"Second-{seconds}")])


def _property_set(subscription: Subscription) -> str:
    rows = "".join(
        f"<e:property><{name}>{escape(value, {chr(34): '&quot;'})}</{name}></e:property>"
        for name, value in _properties(subscription.player, subscription.service).items()
    )
    return f'<e:propertyset xmlns:e="urn:schemas-upnp-org:event-1-0">{rows}</e:propertyset>'


def _properties(player: Player, service: s.Service) -> dict[str, str]:
    if service is s.TOPOLOGY:
        return {"ZoneGroupState": zone_group_state(player)}
    if service is s.AV_TRANSPORT:
        leader = player.coordinator
        return _last_change(
            "AVT",
            f'<TransportState val="{leader.transport.state}"/><CurrentPlayMode val="NORMAL"/>'
            f'<AVTransportURI val="{_attribute(player.transport.uri)}"/>',
        )
    if service is s.RENDERING:
        return _last_change("RCS", _rendering(player))
    return {}


def _rendering(player: Player) -> str:
    # One value for each channel, as real players tell them: readers expect a list.
    rows = [("Volume", "Master", player.volume), ("Volume", "LF", 100), ("Volume", "RF", 100)]
    rows += [("Mute", "Master", int(player.mute)), ("Mute", "LF", 0), ("Mute", "RF", 0)]
    rows += [("Loudness", "Master", int(player.loudness))]
    channels = "".join(f'<{name} channel="{channel}" val="{value}"/>' for name, channel, value in rows)
    return f'{channels}<Bass val="{player.bass}"/><Treble val="{player.treble}"/>'


def _last_change(space: str, inner: str) -> dict[str, str]:
    name = f"urn:schemas-upnp-org:metadata-1-0/{space}/"
    return {"LastChange": f'<Event xmlns="{name}"><InstanceID val="0">{inner}</InstanceID></Event>'}


def _attribute(text: str) -> str:
    return escape(text, {'"': "&quot;"})
