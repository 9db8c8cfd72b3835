# SPDX-License-Identifier: GPL-3.0-or-later
"""The HTTP side of one player at port 1400, with everything that can go wrong there."""

from __future__ import annotations

import asyncio
import contextlib
import os
import socket
import struct
import time
from dataclasses import dataclass, field
from http import HTTPStatus
from typing import Optional

from .recorder import Request
from .soap import peek_action, peek_arguments
from .state import Player
from .surroundings import Surroundings

PORT = 1400
_MAX_HEAD = 64 * 1024
_MAX_BODY = 1 << 20
_IDLE = 30.0
FORBIDDEN = (
    b"<html><head><title>403 Forbidden</title></head>\r\n<body><h1>403 Forbidden</h1>\r\n"
    b"<p>UPnP control is disabled on this device.</p></body></html>\r\n"
)


@dataclass
class HttpRequest:
    """A request as it came, and its parts. Header names are in lower case."""

    method: str
    target: str
    version: str
    headers: dict[str, str]
    body: bytes = b""


@dataclass
class Answer:
    """What goes back; headers in the order they are written."""

    status: int
    headers: list[tuple[str, str]] = field(default_factory=list)
    body: bytes = b""


class Hang(Exception):
    """This request is never answered."""


class Reset(Exception):
    """This connection is torn down: with a RST when `hard`, otherwise closed without an answer."""

    def __init__(self, hard: bool) -> None:
        super().__init__()
        self.hard = hard


def parse_head(head: bytes) -> Optional[HttpRequest]:
    """The request line and headers; nothing when they are malformed."""
    lines = head.decode("latin-1").split("\r\n")
    words = lines[0].split(" ")
    if len(words) != 3 or not words[2].startswith("HTTP/1.") or not words[1]:
        return None
    headers: dict[str, str] = {}
    for line in lines[1:]:
        name, colon, value = line.partition(":")
        if line and (not colon or not name or name != name.strip()):
            return None
        if line:
            headers[name.lower()] = value.strip()
    return HttpRequest(words[0], words[1], words[2], headers)


class PlayerServer:
    """Listens on the player's address. One request a connection, which is closed after the answer."""

    def __init__(self, house: Surroundings, player: Player) -> None:
        self._house = house
        self._player = player
        self._server: Optional[asyncio.Server] = None
        self._tasks: set[asyncio.Task[None]] = set()

    async def open(self) -> None:
        self._server = await asyncio.start_server(
            # The port is shared with whoever stands in for all other addresses.
            self._accept, self._player.ip, PORT, limit=_MAX_HEAD, backlog=64, reuse_port=True
        )

    async def close(self) -> None:
        """Stops listening and tears down what is open."""
        if self._server is not None:
            self._server.close()
            self._server = None
        for task in list(self._tasks):
            task.cancel()
        if self._tasks:
            await asyncio.wait(self._tasks, timeout=2)

    async def _accept(self, reader: asyncio.StreamReader, writer: asyncio.StreamWriter) -> None:
        task = asyncio.current_task()
        assert task is not None
        self._tasks.add(task)
        gauges = (self._house.recorder.connections, self._house.recorder.gauge(self._player.uuid))
        for gauge in gauges:
            gauge.enter()
        try:
            await self._serve(reader, writer)
        except (OSError, asyncio.TimeoutError, asyncio.IncompleteReadError, asyncio.LimitOverrunError):
            pass
        except asyncio.CancelledError:
            writer.transport.abort()
        finally:
            self._tasks.discard(task)
            for gauge in gauges:
                gauge.leave()
            writer.close()

    async def _serve(self, reader: asyncio.StreamReader, writer: asyncio.StreamWriter) -> None:
        async with asyncio.timeout(_IDLE):
            head = await reader.readuntil(b"\r\n\r\n")
        peer = "%s:%s" % writer.get_extra_info("peername")[:2]
        entry = self._house.recorder.request(self._player.uuid, self._player.ip, peer, head)
        request = parse_head(head)
        if request is not None:
            entry.method, entry.target = request.method, request.target
            await self._read_body(request, entry, reader, writer)
        try:
            answer = await self._answer(request, entry.action)
        except Hang:
            await self._hold(reader)
            return
        except Reset as reset:
            if reset.hard:
                linger_not = struct.pack("ii", 1, 0)
                writer.get_extra_info("socket").setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, linger_not)
                writer.transport.abort()
            return
        entry.status, entry.answered = answer.status, time.monotonic()
        await self._write(answer, request, writer)

    async def _read_body(
        self, request: HttpRequest, entry: Request, reader: asyncio.StreamReader, writer: asyncio.StreamWriter
    ) -> None:
        length = request.headers.get("content-length", "0")
        size = int(length) if length.isdigit() else 0
        if 0 < size <= _MAX_BODY:
            if request.headers.get("expect", "").lower() == "100-continue":
                writer.write(b"HTTP/1.1 100 Continue\r\n\r\n")
            async with asyncio.timeout(_IDLE):
                request.body = await reader.readexactly(size)
        entry.body = request.body.decode("latin-1")
        entry.action = peek_action(request.headers.get("soapaction", ""))
        if entry.action:
            entry.arguments = peek_arguments(request.body)

    async def _answer(self, request: Optional[HttpRequest], action: str) -> Answer:
        switches = self._player.switches
        wait = self._house.latency + switches.delay + switches.late.get(action, 0)
        if wait > 0:
            await asyncio.sleep(wait)
        if switches.silent:
            raise Hang
        if request is None:
            return Answer(400)
        if switches.status:
            return Answer(switches.status)
        return self._house.dispatch(self._player, request)

    async def _hold(self, reader: asyncio.StreamReader) -> None:
        """Says nothing until the other side gives up."""
        while await reader.read(4096):
            pass

    async def _write(self, answer: Answer, request: Optional[HttpRequest], writer: asyncio.StreamWriter) -> None:
        switches = self._player.switches
        data = self._render(answer, request)
        if switches.garbage:
            data = os.urandom(512)
        if switches.close_after >= 0:
            data = data[: switches.close_after]
        if switches.trickle > 0:
            await self._trickle(data, writer, switches.trickle)
        else:
            writer.write(data)
        while switches.endless and not writer.transport.is_closing():
            writer.write(b" " * 16384)
            await writer.drain()
        await writer.drain()
        with contextlib.suppress(OSError):
            writer.write_eof()

    async def _trickle(self, data: bytes, writer: asyncio.StreamWriter, pause: float) -> None:
        for byte in data:
            writer.write(bytes([byte]))
            await writer.drain()
            await asyncio.sleep(pause)

    def _render(self, answer: Answer, request: Optional[HttpRequest]) -> bytes:
        phrase = HTTPStatus(answer.status).phrase if answer.status in HTTPStatus._value2member_map_ else "Unknown"
        rows = [f"HTTP/1.1 {answer.status} {phrase}"]
        if not self._player.switches.endless and answer.status != 204:
            rows.append(f"CONTENT-LENGTH: {len(answer.body)}")
        rows += [f"{name}: {value}" for name, value in answer.headers]
        rows += [f"Server: {self._player.server}", "Connection: close", "", ""]
        body = b"" if request is not None and request.method == "HEAD" else answer.body
        return "\r\n".join(rows).encode("latin-1") + body
