# SPDX-License-Identifier: GPL-3.0-or-later
"""A gate is the public address of one server: it passes bytes on, or behaves like a broken network.

Passing on happens below TLS: the certificate and every byte of the healthy answer are the real server's.
"""

import asyncio
import socket
import struct
import time

MODES = ("open", "refuse", "hold")
CHUNK = 16384


class Gate:
    """One name at one address, with one backend (a port of the loopback interface) per public port."""

    def __init__(self, name, address, backends):
        self.name = name
        self.address = address
        self.mode = "open"
        self.connections = []
        self._backends = dict(backends)
        self._overrides = {}
        self._servers = {}
        self._live = {}
        self._flow = asyncio.Event()
        self._flow.set()

    async def start(self):
        """Listen on every public port."""
        for port in self._backends:
            if port not in self._servers:
                self._servers[port] = await asyncio.start_server(
                    lambda reader, writer, port=port: self._serve(reader, writer, port), self.address, port,
                    reuse_address=True)

    async def stop(self):
        """Close everything."""
        self._stop_listening()
        self.cut()

    async def set_mode(self, mode, cut=True):
        """`open`; `refuse` connections (and reset the present ones, unless told not to); or `hold`: accept, but let no
        byte through in either direction, present connections included, until opened again."""
        if mode not in MODES:
            raise ValueError(f"mode {mode!r} is none of {', '.join(MODES)}")
        self.mode = mode
        if mode == "refuse":
            self._stop_listening()
            if cut:
                self.cut()
        else:
            await self.start()
        if mode == "hold":
            self._flow.clear()
        else:
            self._flow.set()

    def lead_to(self, port, backend_port):
        """New connections to this public port go to another backend; None restores the right one."""
        if backend_port is None:
            self._overrides.pop(port, None)
        else:
            self._overrides[port] = backend_port

    @property
    def ports(self):
        """The public ports."""
        return list(self._backends)

    async def reset(self):
        """Open, the right backend, no records. Present connections are cut."""
        self._overrides.clear()
        await self.set_mode("open")
        self.cut()
        self.connections = []

    def cut(self):
        """Reset every present connection, as a failing router does. Returns how many."""
        writers = [writer for pair in self._live.values() for writer in pair]
        for writer in writers:
            reset_connection(writer)
        return len(self._live)

    def finish(self):
        """End every present connection in good order (no TLS farewell). Returns how many."""
        for pair in self._live.values():
            for writer in pair:
                writer.close()
        return len(self._live)

    def _stop_listening(self):
        for server in self._servers.values():
            server.close()
        self._servers.clear()

    async def _serve(self, reader, writer, port):
        record = {"opened": time.monotonic(), "closed": None, "port": port, "sent": 0, "received": 0}
        self.connections.append(record)
        key = object()
        self._live[key] = [writer]
        try:
            writer.get_extra_info("socket").setsockopt(socket.IPPROTO_TCP, socket.TCP_NODELAY, 1)
            await self._flow.wait()
            backend = self._overrides.get(port, self._backends[port])
            try:
                back_reader, back_writer = await asyncio.open_connection("127.0.0.1", backend)
            except OSError:
                reset_connection(writer)
                return
            self._live[key].append(back_writer)
            await self._relay((reader, writer), (back_reader, back_writer), record)
        except OSError:
            pass
        finally:
            record["closed"] = time.monotonic()
            for one in self._live.pop(key):
                one.close()

    async def _relay(self, front, back, record):
        up = asyncio.create_task(self._pump(front[0], back[1], record, "received"))
        down = asyncio.create_task(self._pump(back[0], front[1], record, "sent"))
        # When the server has ended there is nothing left to say; when the listener has gone, the server may go on.
        await asyncio.wait({up, down}, return_when=asyncio.FIRST_COMPLETED)
        failed = any(task.done() and task.exception() for task in (up, down))
        for task in (up, down):
            task.cancel()
        await asyncio.gather(up, down, return_exceptions=True)
        if failed:
            reset_connection(front[1])
            reset_connection(back[1])

    async def _pump(self, reader, writer, record, counter):
        while data := await reader.read(CHUNK):
            if not self._flow.is_set():
                await self._flow.wait()
            writer.write(data)
            record[counter] += len(data)
            await writer.drain()


def reset_connection(writer):
    """Close with a reset instead of an orderly end."""
    try:
        writer.get_extra_info("socket").setsockopt(socket.SOL_SOCKET, socket.SO_LINGER, struct.pack("ii", 1, 0))
    except OSError:
        pass
    writer.transport.abort()
