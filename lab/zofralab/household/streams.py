# SPDX-License-Identifier: GPL-3.0-or-later
"""What players do with a radio address: fetch it, count what comes, and throw it away."""

from __future__ import annotations

import asyncio
import contextlib
import ssl
import time
from typing import Awaitable, Callable, Optional, TypeVar
from urllib.parse import urljoin, urlsplit

from .avtransport import RADIO
from .names import Resolver
from .state import Household, Player

_CHUNK = 16 * 1024
_REDIRECTS = 5
_CONNECT = 5.0
_SILENCE = 10.0
_HEAD = 32 * 1024
_Value = TypeVar("_Value")


class StreamError(Exception):
    """The stream could not be opened."""


class NoSuchStream(StreamError):
    """The server answered, and it was no. Asking it in another way is of no use."""


class Streams:
    """One running fetch for each player that leads a playing group."""

    def __init__(
        self, changed: Callable[[Player], None], resolver: Resolver, tls: Optional[ssl.SSLContext] = None
    ) -> None:
        self._changed = changed
        self._resolver = resolver
        self._tls = tls
        self._running: dict[Player, asyncio.Task[None]] = {}
        self._since: dict[Player, float] = {}

    def play(self, player: Player) -> None:
        """Starts, or goes on. The state becomes PLAYING with the first bytes, STOPPED when none come."""
        if player in self._running:
            return
        player.transport.status = "OK"
        player.stream.bytes_now = 0
        urls = _addresses(player.transport.uri)
        if not urls:
            player.transport.state = "PLAYING"
            return
        player.transport.state = "TRANSITIONING"
        self._running[player] = asyncio.create_task(self._fetch(player, urls))

    def stop(self, player: Player) -> None:
        """Ends the fetch; nothing is counted afterwards."""
        task = self._running.pop(player, None)
        if task is not None:
            task.cancel()
        self._since.pop(player, None)
        player.transport.state = "STOPPED"

    def settle(self, household: Household) -> None:
        """After groups changed: leaders that play fetch, everyone else does not."""
        for player in household.players:
            if not player.leads and player in self._running:
                self._running.pop(player).cancel()
            elif player.leads and player.transport.state in ("PLAYING", "TRANSITIONING"):
                self.play(player)

    def drop(self, player: Player) -> None:
        """Power cut: as `stop`, and nothing is kept."""
        self.stop(player)
        player.transport = type(player.transport)()

    def clear(self) -> None:
        for player in list(self._running):
            self.stop(player)

    def elapsed(self, player: Player) -> str:
        """Time since the first bytes, as players write it."""
        seconds = int(time.monotonic() - self._since[player]) if player in self._since else 0
        return f"{seconds // 3600}:{seconds // 60 % 60:02d}:{seconds % 60:02d}"

    async def _fetch(self, player: Player, urls: list[str]) -> None:
        failures = []
        for url in urls:
            try:
                await self._follow(player, url)
                failures.append(f"{url}: ended")
            except NoSuchStream as error:
                failures.append(f"{url}: {error}")
                break
            except (OSError, StreamError, asyncio.TimeoutError, asyncio.IncompleteReadError) as error:
                failures.append(f"{url}: {error or type(error).__name__}")
            if player.transport.state == "PLAYING":
                break
        self._running.pop(player, None)
        self._since.pop(player, None)
        player.stream.error = "; ".join(failures)
        player.transport.state, player.transport.status = "STOPPED", "ERROR_OCCURRED"
        self._changed(player)

    async def _follow(self, player: Player, url: str) -> None:
        for _ in range(_REDIRECTS + 1):
            elsewhere = await self._read(player, url)
            if elsewhere is None:
                return
            url = urljoin(url, elsewhere)
        raise StreamError("too many redirects")

    async def _read(self, player: Player, url: str) -> Optional[str]:
        """Reads one address until it ends; the address to go to instead when it redirects."""
        reader, writer = await self._connect(url)
        try:
            writer.write(_request(player, url))
            status, headers = _parse_head(await _within(_SILENCE, reader.readuntil(b"\r\n\r\n")))
            if status in (301, 302, 303, 307, 308) and "location" in headers:
                return headers["location"]
            if status != 200:
                raise NoSuchStream(f"HTTP {status}")
            await self._count(player, url, headers.get("content-type", ""), reader)
            return None
        except asyncio.LimitOverrunError:
            raise StreamError("header too long") from None
        finally:
            writer.transport.abort()

    async def _connect(self, url: str) -> tuple[asyncio.StreamReader, asyncio.StreamWriter]:
        parts = urlsplit(url)
        if not parts.hostname or parts.scheme not in ("http", "https"):
            raise StreamError("not an address")
        secure = parts.scheme == "https"
        if secure and self._tls is None:
            raise StreamError("no authorities to check a certificate with")
        port = parts.port or (443 if secure else 80)
        address = await self._resolver.address(parts.hostname)
        opening = asyncio.open_connection(
            address,
            port,
            limit=_HEAD,
            ssl=self._tls if secure else None,
            server_hostname=parts.hostname if secure else None,
        )
        return await _within(_CONNECT, opening)

    async def _count(self, player: Player, url: str, content_type: str, reader: asyncio.StreamReader) -> None:
        count = player.stream
        count.url, count.content_type, count.error = url, content_type, ""
        count.bytes_now = 0
        count.opened += 1
        while data := await _within(_SILENCE, reader.read(_CHUNK)):
            count.bytes_now += len(data)
            count.bytes_total += len(data)
            if player.transport.state != "PLAYING":
                self._since[player] = time.monotonic()
                player.transport.state = "PLAYING"
                self._changed(player)


async def _within(seconds: float, work: Awaitable[_Value]) -> _Value:
    # Not asyncio.wait_for: that loses a cancellation which comes together with the result, and a player that was told
    # to stop would go on.
    async with asyncio.timeout(seconds):
        return await work


def _addresses(uri: str) -> list[str]:
    """Where a player looks for the stream: in the clear first."""
    if uri.startswith(RADIO):
        rest = uri.removeprefix(RADIO).removeprefix("//")
        return [f"http://{rest}", f"https://{rest}"]
    return [uri] if uri.startswith(("http:", "https:")) else []


def _request(player: Player, url: str) -> bytes:
    parts = urlsplit(url)
    target = (parts.path or "/") + (f"?{parts.query}" if parts.query else "")
    return (
        f"GET {target} HTTP/1.1\r\nHost: {parts.netloc.rpartition('@')[2]}\r\nUser-Agent: {player.server}\r\n"
        "Accept: */*\r\nConnection: close\r\n\r\n"
    ).encode()


def _parse_head(head: bytes) -> tuple[int, dict[str, str]]:
    lines = head.decode("latin-1").split("\r\n")
    words = lines[0].split(" ", 2)
    if len(words) < 2 or not (words[0].startswith("HTTP/1.") or words[0] == "ICY"):
        raise StreamError("no HTTP answer")
    status = 0
    with contextlib.suppress(ValueError):
        status = int(words[1])
    pairs = (line.partition(":") for line in lines[1:])
    return status, {name.strip().lower(): value.strip() for name, _, value in pairs if name}
