# SPDX-License-Identifier: GPL-3.0-or-later
"""A small HTTP/1.1 server over TLS that records requests letter by letter and answers as badly as told."""

import asyncio
import base64
import ssl
import time

from .faults import Certificates
from .gate import Gate, reset_connection
from .service import Service

HEAD_LIMIT = 64 * 1024


class HttpService(Service):
    """What the on-air and the scraper service share.

    How a request is answered is a dictionary; everything in it is optional:
        form= (what a healthy service may answer, see the subclass)
        song=[ARTIST, TITLE]                      another song than the programme's
        status= content_type= body= | base64=     another answer
        delay=SECONDS                             later
        hang=true | "headers" | "body"            never / never after the headers / never after half of the body
        huge=BYTES                                that many bytes of JSON text, without end in sight
        close=true | reset=true                   the connection ends / breaks instead of an answer
        short=true                                the connection ends in the middle of the body
        redirect=URL, or redirect=N               to there / N times to itself, then healthy
    """

    host = ()
    port = 0
    section_key = ""

    def __init__(self, world):
        super().__init__(world)
        self._gate = Gate(*self.host, {443: self.port})
        self._certificates = Certificates(world)
        self._context = None
        self._server = None
        self._answers = {}
        self._queue = []
        self._requests = []
        self._tasks = set()

    # What a subclass says.

    def station_of(self, target):
        """The raw value of the station that a request target is about, or None."""
        raise NotImplementedError

    def healthy(self, station, how, request):
        """(content type, body) in one of the forms that a healthy service has: how["form"], how["song"]."""
        raise NotImplementedError

    async def start(self):
        """Listen behind the gate."""
        self.world.cable.add_addresses([self._gate.address], "lo", 32)
        self.world.services["dns"].add(self._gate.name, self._gate.address)
        self._context = ssl.SSLContext(ssl.PROTOCOL_TLS_SERVER)
        self._load_certificate("good")
        self._server = await asyncio.start_server(self._serve, "127.0.0.1", self.port, ssl=self._context,
                                                  limit=HEAD_LIMIT)
        await self._gate.start()

    async def stop(self):
        """Close everything."""
        await self._gate.stop()
        if self._server:
            self._server.close()
        for task in list(self._tasks):
            task.cancel()

    async def reset(self):
        """Healthy; no requests recorded."""
        self._answers.clear()
        self._queue.clear()
        self._requests.clear()
        for task in list(self._tasks):
            task.cancel()
        self._load_certificate("good")
        await self._gate.reset()

    def endpoints(self):
        """The service's host."""
        return {"metadata": {self.section_key: self._gate.name}}

    def do_answer(self, station="*", **how):
        """How to answer from now on for a station, or for all; without anything else: healthily."""
        self._answers[station] = how

    def do_queue(self, answers):
        """How to answer the very next requests, one after the other, whatever they are about."""
        self._queue = list(answers)

    def do_requests(self):
        """What came in: [{at, target, station, head (letter by letter), answered}, ...]."""
        return self._requests

    def do_connections(self):
        """What came in at the gate."""
        return self._gate.connections

    async def do_gate(self, mode, cut=True):
        """How the network to it behaves."""
        await self._gate.set_mode(mode, cut)

    def do_certificate(self, kind):
        """Which certificate new connections meet."""
        self._load_certificate(kind)
        self._gate.cut()

    def _load_certificate(self, kind):
        issued = self._certificates.issue(kind, [self._gate.name])
        self._context.load_cert_chain(issued.certificate, issued.key)

    async def _serve(self, reader, writer):
        task = asyncio.current_task()
        self._tasks.add(task)
        try:
            while True:
                head = await reader.readuntil(b"\r\n\r\n")
                if not await self._answer(head, writer):
                    break
        except (OSError, asyncio.IncompleteReadError, asyncio.LimitOverrunError, asyncio.CancelledError):
            pass
        finally:
            self._tasks.discard(task)
            writer.close()

    async def _answer(self, head, writer):
        text = head.decode("latin-1")
        target = text.split(" ", 2)[1] if text.count(" ") >= 2 else ""
        station = self.station_of(target)
        record = {"at": time.monotonic(), "target": target, "station": station, "head": text, "answered": None}
        self._requests.append(record)
        how = self._queue.pop(0) if self._queue else self._answers.get(station, self._answers.get("*", {}))
        content_type, body, status, extra = self._choose(station, how, target, record)
        if how.get("delay"):
            await asyncio.sleep(how["delay"])
        if how.get("reset"):
            reset_connection(writer)
            return False
        if how.get("close"):
            return False
        if how.get("hang") is True:
            await asyncio.Event().wait()
        length = how.get("huge") or len(body) * (2 if how.get("short") else 1)
        writer.write(f"HTTP/1.1 {status} Lab\r\nContent-Type: {content_type}\r\nContent-Length: {length}\r\n{extra}"
                     "\r\n".encode("latin-1"))
        if how.get("hang") == "headers":
            await writer.drain()
            await asyncio.Event().wait()
        if how.get("hang") == "body":
            writer.write(body[:len(body) // 2])
            await writer.drain()
            await asyncio.Event().wait()
        if how.get("huge"):
            await self._send_huge(writer, how["huge"])
        else:
            writer.write(body)
        await writer.drain()
        record["answered"] = time.monotonic()
        return not how.get("short") and "connection: close" not in text.lower()

    def _choose(self, station, how, target, record):
        redirect = how.get("redirect")
        if isinstance(redirect, int) and not isinstance(redirect, bool):
            hop = int(target.rpartition("hop=")[2]) if "hop=" in target else 0
            redirect = None if hop >= redirect else f"{target.partition('&hop=')[0]}&hop={hop + 1}"
        if redirect:
            return "text/plain", b"", 302, f"Location: {redirect}\r\n"
        if "body" in how or "base64" in how:
            body = how["body"].encode() if "body" in how else base64.b64decode(how["base64"])
            return how.get("content_type", "application/json"), body, how.get("status", 200), ""
        if station is None:
            return "text/plain", b"Not found\n", 404, ""
        content_type, body = self.healthy(station, how, record)
        return how.get("content_type", content_type), body, how.get("status", 200), ""

    async def _send_huge(self, writer, size):
        chunk = b'{"filler":"' + b"x" * 65500 + b'"},\n'
        sent = 0
        while sent < size:
            writer.write(chunk[:size - sent])
            sent += len(chunk[:size - sent])
            await writer.drain()
