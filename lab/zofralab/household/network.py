# SPDX-License-Identifier: GPL-3.0-or-later
"""The ways in which the rest of the home network does not answer, or all of it does."""

from __future__ import annotations

import asyncio
import ipaddress
import socket
from typing import Any, Optional

from .. import addresses
from ..netns import ip_batch
from .playerserver import PORT
from .recorder import Gauge

_HALVES = [str(half) for half in ipaddress.ip_network(addresses.HOME_NETWORK).subnets()]


class Detour:
    """Routes in the program's namespace that lead every address of the home network through the house.

    Without them nobody answers for an unused address, which is what a home network does: the program's kernel waits
    for a neighbour that never comes. With them the house gets every packet, and since it does not forward, drops what
    is not its own without a word; the table of neighbours, which all namespaces of a machine share, then holds one
    entry instead of 254.
    """

    def __init__(self, cable: Any) -> None:
        self._cable = cable
        self._up = False

    def open(self) -> None:
        if not self._up:
            for half in _HALVES:
                self._cable.in_program(
                    *f"ip route replace {half} via {addresses.ROUTER_ADDRESS}".split(),
                    *f"dev {addresses.PROGRAM_INTERFACE} onlink".split(),
                )
            self._up = True

    def close(self) -> None:
        if self._up:
            for half in _HALVES:
                # Gone already when the cable was pulled in between.
                self._cable.in_program(*f"ip route del {half}".split(), check=False)
            self._up = False


class Crowd:
    """Every address of the home network takes connections at port 1400, and says nothing, ever.

    That is how many probes are in flight is counted: each that is, is a connection held here. Real players keep their
    own, more specific, sockets.
    """

    def __init__(self, gauge: Gauge) -> None:
        self._gauge = gauge
        self._server: Optional[asyncio.Server] = None
        self._tasks: set[asyncio.Task[None]] = set()
        self.reached: set[str] = set()

    async def open(self) -> None:
        if self._server is not None:
            return
        # More specific than the routes below, so that answers still find the program.
        lines = [f"route replace {addresses.PROGRAM_ADDRESS}/32 dev {addresses.HOUSE_INTERFACE}"]
        ip_batch(lines + [f"route replace local {half} dev lo table main" for half in _HALVES])
        listener = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
        listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEPORT, 1)
        listener.bind(("", PORT))
        self._server = await asyncio.start_server(self._accept, sock=listener, backlog=256)

    async def close(self) -> None:
        if self._server is None:
            return
        self._server.close()
        self._server = None
        for task in list(self._tasks):
            task.cancel()
        if self._tasks:
            await asyncio.wait(self._tasks, timeout=2)
        self.reached.clear()
        ip_batch([f"route del local {half} dev lo table main" for half in _HALVES])
        ip_batch([f"route del {addresses.PROGRAM_ADDRESS}/32 dev {addresses.HOUSE_INTERFACE}"])

    async def _accept(self, reader: asyncio.StreamReader, writer: asyncio.StreamWriter) -> None:
        task = asyncio.current_task()
        assert task is not None
        self._tasks.add(task)
        self._gauge.enter()
        self.reached.add(writer.get_extra_info("sockname")[0])
        try:
            while await reader.read(4096):
                pass
        except OSError:
            pass
        except asyncio.CancelledError:
            writer.transport.abort()
        finally:
            self._gauge.leave()
            self._tasks.discard(task)
            writer.close()
