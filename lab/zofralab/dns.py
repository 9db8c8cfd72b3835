# SPDX-License-Identifier: GPL-3.0-or-later
"""The house's name server: A records of the lab's names, and nothing of the world's.

Switches: `dns.answer name=... mode=ok|nxdomain|servfail|silent` for one name, `*` for all;
`dns.delay seconds=...`; `dns.queries` lists what was asked.
"""

import asyncio
import struct
import time

from . import addresses
from .service import Service

TYPE_A = 1
RCODES = {"ok": 0, "servfail": 2, "nxdomain": 3}


def read_question(datagram):
    """(id, name, type, question bytes) of a query, or None for anything odd."""
    if len(datagram) < 17 or datagram[2] & 0x80 or struct.unpack(">H", datagram[4:6])[0] != 1:
        return None
    labels, position = [], 12
    while position < len(datagram) and datagram[position]:
        length = datagram[position]
        if length > 63 or position + 1 + length >= len(datagram):
            return None
        labels.append(datagram[position + 1:position + 1 + length].decode("ascii", "replace"))
        position += 1 + length
    if position + 5 > len(datagram):
        return None
    kind = struct.unpack(">H", datagram[position + 1:position + 3])[0]
    return datagram[:2], ".".join(labels).lower(), kind, datagram[12:position + 5]


def answer(question, rcode, address):
    """One answer with at most one A record, which may not be cached."""
    identity, _, kind, raw = question
    records = b""
    if rcode == 0 and kind == TYPE_A and address:
        records = b"\xc0\x0c" + struct.pack(">HHIH", TYPE_A, 1, 0, 4) + bytes(map(int, address.split(".")))
    return identity + struct.pack(">HHHHH", 0x8580 | rcode, 1, 1 if records else 0, 0, 0) + raw + records


class NameServer(Service):
    """Names are added by the services that own them, with `add`."""

    name = "dns"

    def __init__(self, world):
        super().__init__(world)
        self._names = {}
        self._modes = {}
        self._delay = 0.0
        self._queries = []
        self._transport = None

    def add(self, name, address):
        """Let this name mean this address (given to the house when it is one of the service network's)."""
        self._names[name.lower()] = address

    async def start(self):
        """Listen on port 53 of the name server's own address."""
        self.world.cable.add_addresses([addresses.DNS_ADDRESS], "lo", 32)
        loop = asyncio.get_running_loop()
        self._transport, _ = await loop.create_datagram_endpoint(
            lambda: _Protocol(self), local_addr=(addresses.DNS_ADDRESS, 53))

    async def stop(self):
        """Close the socket."""
        if self._transport:
            self._transport.close()

    async def reset(self):
        """Answer everything properly again."""
        self._modes.clear()
        self._delay = 0.0
        self._queries.clear()

    def do_answer(self, name="*", mode="ok"):
        """How to answer for a name (or for all, `*`) from now on."""
        if mode not in RCODES and mode != "silent":
            raise ValueError(f"mode {mode!r} is none of ok, nxdomain, servfail, silent")
        self._modes[name.lower()] = mode

    def do_delay(self, seconds):
        """Answer that much later from now on."""
        self._delay = float(seconds)

    def do_queries(self):
        """What was asked: [[monotonic time, name, record type], ...]."""
        return self._queries

    def received(self, datagram, sender):
        """One datagram."""
        question = read_question(datagram)
        if question is None:
            return
        name = question[1]
        self._queries.append([time.monotonic(), name, question[2]])
        mode = self._modes.get(name, self._modes.get("*", "ok"))
        if mode == "silent":
            return
        rcode = RCODES[mode] if mode != "ok" or name in self._names else RCODES["nxdomain"]
        reply = answer(question, rcode, self._names.get(name))
        asyncio.get_running_loop().call_later(self._delay, self._send, reply, sender)

    def _send(self, reply, sender):
        if not self._transport.is_closing():
            self._transport.sendto(reply, sender)


class _Protocol(asyncio.DatagramProtocol):
    def __init__(self, server):
        self._server = server

    def datagram_received(self, data, addr):
        self._server.received(data, addr)
