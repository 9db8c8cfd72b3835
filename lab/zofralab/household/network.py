# SPDX-License-Identifier: GPL-3.0-or-later
"""What the addresses of the home network do that are nobody's."""

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

#: "absent": nobody there, as at home: the program's kernel waits for a neighbour that never comes.
#: "dropped": packets get to the house and are dropped without a word.
#: "refused": connections are refused at once, which makes a scan quick.
#: "held": connections to port 1400 are taken, and nothing is ever said: so probes in flight can be counted.
MODES = ("absent", "dropped", "refused", "held")


class Others:
    """Sets the mode. Real players keep theirs, whatever it is.

    All modes but the first lead the whole subnet through the house, by routes in the program's namespace. The table of
    neighbours, which all namespaces of a machine share and which a few silent subnets fill, then holds one entry
    instead of 254.
    """

    def __init__(self, cable: Any, gauge: Gauge) -> None:
        self._cable = cable
        self._mode = "absent"
        self._crowd = _Crowd(gauge)

    @property
    def reached(self) -> int:
        """How many different addresses took a connection while held."""
        return len(self._crowd.reached)

    async def set_mode(self, mode: str) -> None:
        if mode not in MODES:
            raise ValueError(f"other addresses are {', '.join(MODES)}, not {mode!r}")
        before, self._mode = self._mode, mode
        if before == mode:
            return
        if before == "held":
            await self._crowd.close()
        self._lead_through_house(mode != "absent")
        self._own_all(mode in ("refused", "held"))
        if mode == "held":
            await self._crowd.open()

    def _lead_through_house(self, wanted: bool) -> None:
        for half in _HALVES:
            if wanted:
                route = f"replace {half} via {addresses.ROUTER_ADDRESS} dev {addresses.PROGRAM_INTERFACE} onlink"
            else:
                route = f"del {half}"
            # Gone already when the cable was pulled in between.
            self._cable.in_program("ip", "route", *route.split(), check=wanted)

    def _own_all(self, wanted: bool) -> None:
        """Whether every address is the house's own; where nobody listens the kernel then refuses."""
        verb = "replace" if wanted else "flush"
        # The route to the program itself has to be the most specific one, or its answers never leave the house.
        routes = [f"{addresses.PROGRAM_ADDRESS}/32 dev {addresses.HOUSE_INTERFACE}"]
        routes += [f"local {half} dev lo table main" for half in _HALVES]
        if not wanted:
            routes = [f"exact {addresses.PROGRAM_ADDRESS}/32"] + [f"exact {half} type local" for half in _HALVES]
        ip_batch([f"route {verb} {route}" for route in routes])


class _Crowd:
    """Listens for every address that is not a player's."""

    def __init__(self, gauge: Gauge) -> None:
        self._gauge = gauge
        self._server: Optional[asyncio.Server] = None
        self._tasks: set[asyncio.Task[None]] = set()
        self.reached: set[str] = set()

    async def open(self) -> None:
        self.reached.clear()
        listener = socket.socket(socket.AF_INET, socket.SOCK_STREAM)
        listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEADDR, 1)
        listener.setsockopt(socket.SOL_SOCKET, socket.SO_REUSEPORT, 1)
        listener.bind(("", PORT))
        self._server = await asyncio.start_server(self._accept, sock=listener, backlog=256)

    async def close(self) -> None:
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
