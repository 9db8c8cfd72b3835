# SPDX-License-Identifier: GPL-3.0-or-later
"""How a player looks up a name: it asks the name server of its own network, as it was told by the router."""

from __future__ import annotations

import asyncio
import ipaddress
import secrets
import struct
from typing import Optional, cast

_TYPE_A = 1
_WAIT = 3.0


class LookupFailed(OSError):
    """A name that could not be looked up."""


def _question(identity: bytes, name: str) -> bytes:
    labels = b"".join(bytes([len(x)]) + x.encode("ascii") for x in name.rstrip(".").split("."))
    return identity + struct.pack(">HHHHH", 0x0100, 1, 0, 0, 0) + labels + b"\0" + struct.pack(">HH", _TYPE_A, 1)


def _skip_name(data: bytes, at: int) -> int:
    while data[at]:
        if data[at] & 0xC0:
            return at + 2
        at += 1 + data[at]
    return at + 1


def first_address(data: bytes) -> Optional[str]:
    """The first A record of an answer; nothing when it has none. Raises IndexError or struct.error when cut short."""
    questions, answers = struct.unpack(">HH", data[4:8])
    at = 12
    for _ in range(questions):
        at = _skip_name(data, at) + 4
    for _ in range(answers):
        at = _skip_name(data, at)
        kind, _, _, size = struct.unpack(">HHIH", data[at : at + 10])
        if kind == _TYPE_A and size == 4:
            return ".".join(str(b) for b in data[at + 10 : at + 14])
        at += 10 + size
    return None


class _Asker(asyncio.DatagramProtocol):
    def __init__(self, question: bytes, done: "asyncio.Future[bytes]") -> None:
        self._question = question
        self._done = done

    def connection_made(self, transport: asyncio.BaseTransport) -> None:
        cast(asyncio.DatagramTransport, transport).sendto(self._question)

    def datagram_received(self, data: bytes, addr: tuple[str, int]) -> None:
        if data[:2] == self._question[:2] and not self._done.done():
            self._done.set_result(data)

    def error_received(self, exc: Exception) -> None:
        if not self._done.done():
            self._done.set_exception(LookupFailed(str(exc)))


class Resolver:
    """Looks names up at one server. Without a server only dotted addresses are known."""

    def __init__(self, server: str = "") -> None:
        self._server = server

    async def address(self, host: str) -> str:
        """The IPv4 address. Raises OSError."""
        try:
            return str(ipaddress.IPv4Address(host))
        except ValueError:
            pass
        if not self._server:
            raise LookupFailed(f"no name server to ask for {host}")
        loop = asyncio.get_running_loop()
        done: "asyncio.Future[bytes]" = loop.create_future()
        question = _question(secrets.token_bytes(2), host)
        transport, _ = await loop.create_datagram_endpoint(
            lambda: _Asker(question, done), remote_addr=(self._server, 53)
        )
        try:
            found = first_address(await asyncio.wait_for(done, _WAIT))
        except (IndexError, struct.error, asyncio.TimeoutError) as error:
            raise LookupFailed(f"{host}: no usable answer from the name server") from error
        finally:
            transport.close()
        if found is None:
            raise LookupFailed(f"{host}: no such name")
        return found
