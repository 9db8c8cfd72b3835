# SPDX-License-Identifier: GPL-3.0-or-later
"""The gateway's own description, at its own port: what an impostor's answer leads to."""

from __future__ import annotations

import asyncio
from typing import Optional

from .descriptions import ROUTER

_PORT = 5000


class RouterServer:
    """Answers every request with the description of a gateway."""

    def __init__(self, ip: str) -> None:
        self.ip = ip
        self.requests = 0
        self._server: Optional[asyncio.Server] = None

    async def open(self) -> None:
        self._server = await asyncio.start_server(self._serve, self.ip, _PORT)

    async def close(self) -> None:
        if self._server is not None:
            self._server.close()
            self._server = None

    async def _serve(self, reader: asyncio.StreamReader, writer: asyncio.StreamWriter) -> None:
        try:
            await asyncio.wait_for(reader.readuntil(b"\r\n\r\n"), 10)
            self.requests += 1
            body = ROUTER.encode()
            rows = ["HTTP/1.1 200 OK", "Content-Type: text/xml", f"Content-Length: {len(body)}", "Connection: close"]
            writer.write("\r\n".join([*rows, "", ""]).encode() + body)
            await writer.drain()
        except (OSError, asyncio.TimeoutError, asyncio.IncompleteReadError, asyncio.LimitOverrunError):
            pass
        finally:
            writer.close()
