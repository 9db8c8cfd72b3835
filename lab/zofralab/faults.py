# SPDX-License-Identifier: GPL-3.0-or-later
"""What a gate can lead to instead of the real server: TLS with a wrong certificate, and wrong HTTP answers."""

import asyncio
import os
import ssl

from . import addresses
from .ca import Authority

HTML = b"<!DOCTYPE html><html><head><title>Hotel Wi-Fi</title></head><body><p>Please log in.</p></body></html>"
KINDS = ("healthy", "silent", "html", "status", "redirect", "loop", "empty", "garbage", "flood", "short", "trickle")
CERTIFICATES = ("good", "foreign", "expired", "wrong_name", "self_signed")


class Certificates:
    """Certificates by what is wrong with them, made when first asked for."""

    def __init__(self, world):
        self._world = world
        self._issued = {}

    def context(self, kind, names):
        """A server context; `kind` is one of CERTIFICATES."""
        issued = self.issue(kind, names)
        context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        context.load_cert_chain(issued.certificate, issued.key)
        return context

    def issue(self, kind, names):
        """The certificate files; `kind` is one of CERTIFICATES."""
        if kind not in CERTIFICATES:
            raise ValueError(f"certificate {kind!r} is none of {', '.join(CERTIFICATES)}")
        key = kind, tuple(names)
        if key not in self._issued:
            self._issued[key] = self._make(kind, names)
        return self._issued[key]

    def _make(self, kind, names):
        if kind == "good":
            return self._world.authority.issue(names)
        if kind == "wrong_name":
            return self._world.authority.issue(["somebody-else.test"])
        if kind == "expired":
            return self._world.authority.issue(names, "20200101000000Z", "20200201000000Z")
        authority = Authority(os.path.join(self._world.run_dir, f"{kind}-{names[0]}"), "Foreign authority")
        return authority.issue(names) if kind == "foreign" else authority.issue_own(names)


class FaultServer:
    """A TLS server on the loopback interface that answers as told."""

    def __init__(self, context, kind, plain_backend, options):
        if kind not in KINDS:
            raise ValueError(f"fault {kind!r} is none of {', '.join(KINDS)}")
        self._context = context
        self._kind = kind
        self._plain_backend = plain_backend
        self._options = options
        self._server = None
        self._tasks = set()
        self.requests = []

    async def start(self):
        """Listen; returns the port."""
        self._server = await asyncio.start_server(self._serve, "127.0.0.1", 0, ssl=self._context)
        return self._server.sockets[0].getsockname()[1]

    async def stop(self):
        """Close, present connections included."""
        self._server.close()
        for task in list(self._tasks):
            task.cancel()

    async def _serve(self, reader, writer):
        task = asyncio.current_task()
        self._tasks.add(task)
        try:
            head = await reader.readuntil(b"\r\n\r\n")
            self.requests.append(head.decode("latin-1"))
            await getattr(self, "_" + self._kind)(head, reader, writer)
        except (OSError, asyncio.IncompleteReadError, asyncio.LimitOverrunError, asyncio.CancelledError):
            pass
        finally:
            self._tasks.discard(task)
            writer.close()

    async def _healthy(self, head, reader, writer):
        back_reader, back_writer = await asyncio.open_connection("127.0.0.1", self._plain_backend)
        try:
            back_writer.write(head)
            while data := await back_reader.read(16384):
                writer.write(data)
                await writer.drain()
        finally:
            back_writer.close()

    async def _silent(self, _head, reader, _writer):
        await reader.read(-1)  # until the other side gives up

    async def _html(self, _head, _reader, writer):
        await self._send(writer, 200, "text/html; charset=utf-8", HTML)

    async def _status(self, _head, _reader, writer):
        await self._send(writer, self._options.get("status", 503), "text/plain", b"Not today\n")

    async def _empty(self, _head, _reader, _writer):
        """Close without a word."""

    async def _short(self, head, _reader, writer):
        """Some real sound, then the end, every time."""
        back_reader, back_writer = await asyncio.open_connection("127.0.0.1", self._plain_backend)
        try:
            back_writer.write(head)
            left = self._options.get("bytes", 100_000)
            while left > 0 and (data := await back_reader.read(min(left, 16384))):
                writer.write(data)
                await writer.drain()
                left -= len(data)
        finally:
            back_writer.close()

    async def _trickle(self, head, _reader, writer):
        """Some real sound, then ever less than is played: `rate` bytes a second."""
        back_reader, back_writer = await asyncio.open_connection("127.0.0.1", self._plain_backend)
        try:
            back_writer.write(head)
            writer.write(await back_reader.readexactly(self._options.get("bytes", 60_000)))
            while data := await back_reader.read(max(1, self._options.get("rate", 1000) // 4)):
                writer.write(data)
                await writer.drain()
                await asyncio.sleep(0.25)
        finally:
            back_writer.close()

    async def _garbage(self, _head, _reader, writer):
        writer.write(b"HTTP/1.0 200 OK\r\nContent-Type: audio/aac\r\n\r\n")
        while True:
            writer.write(os.urandom(4096))
            await writer.drain()
            await asyncio.sleep(0.25)

    async def _flood(self, head, _reader, writer):
        """What is no sound, as fast as it is taken: `what` is `nonsense` or the kind of a frame in a tag that claims 2^28
        bytes; after `bytes` of real sound."""
        back_reader, back_writer = await asyncio.open_connection("127.0.0.1", self._plain_backend)
        try:
            back_writer.write(head)
            writer.write(await back_reader.readuntil(b"\r\n\r\n"))
            for _ in range(self._options.get("bytes", 0) // 4096):
                writer.write(await back_reader.readexactly(4096))
        finally:
            back_writer.close()
        what = self._options.get("what", "nonsense")
        if what != "nonsense":
            frame, begin = {"text": (b"TXXX", b"\x03"), "picture": (b"APIC", b"\0image/png\0\x03\0"),
                            "unknown": (b"XYZW", b"")}[what]
            writer.write(b"ID3\x04\0\0" + b"\x7f" * 4 + frame + b"\x7f\x7f\x7f\x75\0\0" + begin)
        while True:
            writer.write(b"x" * 65536)
            await writer.drain()

    async def _redirect(self, head, _reader, writer):
        """`hops` redirects to ourselves, the last one to where the stream really is (`scheme` http or https)."""
        target = head.split(b" ", 2)[1].decode("latin-1")
        path, _, query = target.partition("?")
        hop = int(query.removeprefix("hop=") or 0) + 1
        if hop < self._options.get("hops", 1):
            location = f"{path}?hop={hop}"
        else:
            edge = addresses.EDGE[self._options["codec"]][0]
            location = f"{self._options.get('scheme', 'https')}://{edge}{path}"
        await self._send(writer, 302, "text/plain", b"", f"Location: {location}\r\n")

    async def _loop(self, head, _reader, writer):
        await self._send(writer, 302, "text/plain", b"", f"Location: {head.split(b' ', 2)[1].decode('latin-1')}\r\n")

    async def _send(self, writer, status, content_type, body, extra=""):
        writer.write(f"HTTP/1.1 {status} Lab\r\nContent-Type: {content_type}\r\nContent-Length: {len(body)}\r\n"
                     f"{extra}Connection: close\r\n\r\n".encode() + body)
        await writer.drain()
