# SPDX-License-Identifier: GPL-3.0-or-later
"""Port 1900 of a household: what players answer to searches, strangers' searches included."""

from __future__ import annotations

import asyncio
import contextlib
import random
import socket
import struct
from dataclasses import dataclass
from typing import Any, Coroutine, Iterable, Optional

from . import descriptions, services
from .playerserver import parse_head
from .recorder import Recorder
from .state import Player

GROUP = "239.255.255.250"
PORT = 1900
ROOT_DEVICE = "upnp:rootdevice"
_IP_PKTINFO = 8
_IP_MULTICAST_ALL = 49
_LONGEST_MX = 5


@dataclass(frozen=True)
class Search:
    """A well-formed search: what for, and within how many seconds to answer."""

    target: str
    within: int


def read_search(data: bytes, *, to_all: bool) -> Optional[Search]:
    """The search in a datagram; nothing when it is not one.

    As forgiving as real players, which answer searches that end in the middle of the last line or name the extension
    without its quotes. Whether a search keeps to the letter is for `is_well_formed`.
    """
    request = parse_head(data.rstrip(b"\r\n"))
    if request is None or (request.method, request.target, request.version) != ("M-SEARCH", "*", "HTTP/1.1"):
        return None
    headers = request.headers
    if headers.get("man", "").strip('"') != "ssdp:discover" or not headers.get("st"):
        return None
    wait = headers.get("mx", "")
    if to_all and not (wait.isdigit() and int(wait) >= 1):
        return None
    return Search(headers["st"], min(int(wait) if wait.isdigit() else 0, _LONGEST_MX))


def is_well_formed(data: bytes) -> bool:
    """Whether a search to all is written as the protocol wants it, to the last byte."""
    request = parse_head(data[:-4]) if data.endswith(b"\r\n\r\n") else None
    if request is None or read_search(data, to_all=True) is None:
        return False
    headers = request.headers
    has_bare_newline = b"\n" in data.replace(b"\r\n", b"")
    quoted = headers["man"] == '"ssdp:discover"'
    return quoted and headers.get("host") == f"{GROUP}:{PORT}" and not has_bare_newline


_MEMBER_OF = {id(x): "_MS" for x in services.SERVER} | {id(x): "_MR" for x in services.RENDERER}


def names(player: Player) -> list[tuple[str, str]]:
    """Everything a device can be searched as: pairs of target and unique service name."""
    base = f"uuid:{player.uuid}"
    found = [(ROOT_DEVICE, f"{base}::{ROOT_DEVICE}"), (base, base)]
    found.append((descriptions.ZONE_PLAYER, f"{base}::{descriptions.ZONE_PLAYER}"))
    if player.can_play and not player.model.is_companion:
        for kind, suffix in ((descriptions.MEDIA_SERVER, "MS"), (descriptions.MEDIA_RENDERER, "MR")):
            found += [(f"{base}_{suffix}", f"{base}_{suffix}"), (kind, f"{base}_{suffix}::{kind}")]
    for _, service in descriptions.offered(player):
        holder = _MEMBER_OF.get(id(service), "") if not player.model.is_companion else ""
        found.append((service.type, f"{base}{holder}::{service.type}"))
    return found


def reply(player: Player, target: str, usn: str, location: str = "") -> bytes:
    """The unicast answer, headers in the order and spelling of real players."""
    rows = [
        "HTTP/1.1 200 OK",
        "CACHE-CONTROL: max-age = 1800",
        "EXT:",
        f"LOCATION: {location or player.location}",
        f"SERVER: {player.server}",
        f"ST: {target}",
        f"USN: {usn}",
        *_own_headers(player),
    ]
    return ("\r\n".join(rows) + "\r\n\r\n").encode()


def _own_headers(player: Player) -> list[str]:
    if player.model.is_companion or player.household is None:
        return []
    rows = [f"X-RINCON-HOUSEHOLD: {player.household.id}", f"X-RINCON-BOOTSEQ: {player.boot_seq}"]
    if player.firmware.wraps_groups:
        rows.append(f"BOOTID.UPNP.ORG: {player.boot_seq}")
    rows += ["X-RINCON-WIFIMODE: 0", f"X-RINCON-VARIANT: {2 if player.firmware.wraps_groups else 0}"]
    if player.firmware.wraps_groups:
        rows.append(f"HOUSEHOLD.SMARTSPEAKER.AUDIO: {player.household.id}")
    return rows


def notification(player: Player, target: str, usn: str) -> bytes:
    """The announcement of a device that has come."""
    rows = [
        "NOTIFY * HTTP/1.1",
        f"HOST: {GROUP}:{PORT}",
        "CACHE-CONTROL: max-age = 1800",
        f"LOCATION: {player.location}",
        f"NT: {target}",
        "NTS: ssdp:alive",
        f"SERVER: {player.server}",
        f"USN: {usn}",
        *_own_headers(player),
    ]
    return ("\r\n".join(rows) + "\r\n\r\n").encode()


@dataclass
class Router:
    """A gateway with an opinion on SSDP. It answers every well-formed search, each time with several datagrams."""

    ip: str
    #: "stranger": its own root device whatever was asked for; "impostor": claims to be a player and is none;
    #: "relay": repeats the players' answers from its own address; "noise": datagrams that are no answers.
    mode: str = "stranger"

    @property
    def location(self) -> str:
        return f"http://{self.ip}:5000/rootDesc.xml"

    def replies(self, search: Search, players: Iterable[Player]) -> list[bytes]:
        usn = "uuid:7d0c2b1e-1d2f-4a53-9a5e-0277000000fe"
        if self.mode == "relay":
            return [reply(p, t, u) for p in players for t, u in names(p) if _matches(search.target, t)]
        if self.mode == "noise":
            return [b"", b"\x00\xff" * 700, b"HTTP/1.1 200 OK\r\n\r\n", b"HTTP/1.1 200 ok\r\nST: x\r\n\r\n"]
        target = search.target if self.mode == "impostor" else ROOT_DEVICE
        rows = [
            "HTTP/1.1 200 OK",
            "CACHE-CONTROL: max-age=120",
            f"ST: {target}",
            f"USN: {usn}::{target}",
            "EXT:",
            "SERVER: Gateway/1.0 UPnP/1.1 GW-7/2.1",
            f"LOCATION: {self.location}",
        ]
        return [("\r\n".join(rows) + "\r\n\r\n").encode()]


def _matches(wanted: str, offered: str) -> bool:
    return wanted in (offered, "ssdp:all")


class Responder:
    """Hears searches that are multicast, broadcast or sent to one player, and answers each within its MX."""

    def __init__(self, interface: str, recorder: Recorder, seed: int) -> None:
        self._interface = interface
        self._recorder = recorder
        self._random = random.Random(seed)
        self._shared: Optional[socket.socket] = None
        self._own: dict[str, socket.socket] = {}
        self._players: dict[str, Player] = {}
        self._tasks: set[asyncio.Task[None]] = set()
        self.router: Optional[Router] = None
        self.silenced = False

    def open(self) -> None:
        """Joins the multicast group on the interface; needs no route."""
        shared = self._socket("")
        index = socket.if_nametoindex(self._interface)
        membership = struct.pack("4s4si", socket.inet_aton(GROUP), b"\0\0\0\0", index)
        shared.setsockopt(socket.IPPROTO_IP, socket.IP_ADD_MEMBERSHIP, membership)
        shared.setsockopt(socket.IPPROTO_IP, _IP_MULTICAST_ALL, 0)
        self._shared = shared
        asyncio.get_running_loop().add_reader(shared, self._readable, shared)

    def close(self) -> None:
        for ip in list(self._own):
            self._forget(ip)
        if self._shared is not None:
            asyncio.get_running_loop().remove_reader(self._shared)
            self._shared.close()
            self._shared = None
        for task in self._tasks:
            task.cancel()

    def add(self, player: Player) -> None:
        """The player answers from now on, from port 1900 of its own address, and says that it is there."""
        self._remember(player.ip)
        self._players[player.ip] = player
        if player.switches.ssdp != "silent" and not self.silenced:
            self._announce(player)

    def remove(self, player: Player) -> None:
        self._players.pop(player.ip, None)
        self._forget(player.ip)

    def set_router(self, router: Optional[Router]) -> None:
        if self.router is not None:
            self._forget(self.router.ip)
        self.router = router
        if router is not None:
            self._remember(router.ip)

    def _remember(self, ip: str) -> None:
        if ip in self._own:
            return
        own = self._socket(ip)
        index = socket.if_nametoindex(self._interface)
        choice = struct.pack("4s4si", socket.inet_aton(GROUP), socket.inet_aton(ip), index)
        own.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_IF, choice)
        own.setsockopt(socket.IPPROTO_IP, socket.IP_MULTICAST_LOOP, 0)
        self._own[ip] = own
        asyncio.get_running_loop().add_reader(own, self._readable, own)

    def _forget(self, ip: str) -> None:
        own = self._own.pop(ip, None)
        if own is not None:
            asyncio.get_running_loop().remove_reader(own)
            own.close()

    def _socket(self, ip: str) -> socket.socket:
        made = socket.socket(socket.AF_INET, socket.SOCK_DGRAM)
        made.setblocking(False)
        made.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        made.setsockopt(socket.IPPROTO_IP, _IP_PKTINFO, 1)
        made.bind((ip, PORT))
        return made

    def _readable(self, source: socket.socket) -> None:
        for _ in range(64):
            try:
                data, extra, _, peer = source.recvmsg(4096, 256)
            except OSError:
                return
            to = next((socket.inet_ntoa(d[8:12]) for _, kind, d in extra if kind == _IP_PKTINFO), "")
            self._received(data, peer, to)

    def _received(self, data: bytes, peer: tuple[str, int], to: str) -> None:
        if data.startswith(b"NOTIFY "):
            return
        kind = "multicast" if to == GROUP else "unicast" if to in self._own else "broadcast"
        entry = self._recorder.search(f"{peer[0]}:{peer[1]}", to, kind, data)
        entry.well_formed = is_well_formed(data)
        search = read_search(data, to_all=kind != "unicast")
        if search is None:
            return
        asked = [p for p in self._players.values() if kind != "unicast" or p.ip == to]
        answers: list[tuple[str, list[bytes]]] = []
        for player in asked:
            answers.append((player.ip, self._answers(player, search)))
        if self.router is not None and kind != "unicast":
            answers.append((self.router.ip, self.router.replies(search, self._players.values())))
        for ip, datagrams in answers:
            entry.answers += len(datagrams)
            if datagrams:
                self._later(ip, datagrams, peer, search.within)

    def _answers(self, player: Player, search: Search) -> list[bytes]:
        mode = player.switches.ssdp
        if self.silenced or mode == "silent" or player.switches.silent:
            return []
        times = int(mode) if mode.isdigit() else 1
        return [reply(player, t, u) for t, u in names(player) if _matches(search.target, t)] * times

    def _later(self, ip: str, datagrams: list[bytes], peer: tuple[str, int], within: int) -> None:
        wait = self._random.uniform(0, within * 0.9)
        self._start(self._send(ip, datagrams, peer, wait))

    def _announce(self, player: Player) -> None:
        datagrams = [notification(player, t, u) for t, u in names(player)]
        self._start(self._send(player.ip, datagrams, (GROUP, PORT), 0.05))

    def _start(self, work: Coroutine[Any, Any, None]) -> None:
        task = asyncio.get_running_loop().create_task(work)
        self._tasks.add(task)
        task.add_done_callback(self._tasks.discard)

    async def _send(self, ip: str, datagrams: list[bytes], peer: tuple[str, int], wait: float) -> None:
        await asyncio.sleep(wait)
        for data in datagrams:
            own = self._own.get(ip)
            if own is None:
                return
            with contextlib.suppress(OSError):
                own.sendto(data, peer)
