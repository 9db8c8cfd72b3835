# SPDX-License-Identifier: GPL-3.0-or-later
"""The live feed: a SockJS server in node (livefeed.js), its gate, and its switches.

Switches (`station` is a raw value such as qmusic):
    livefeed.song station= artist= title= next_artist= next_title=    play this now (the on-air service follows)
    livefeed.advance station=              the next song of the list;  livefeed.rotate seconds=  all of them, for ever
    livefeed.two tracks=[[station, artist, title], ...]                 several tracks in one frame
    livefeed.raw text= | base64=           one web-socket message;      livefeed.bytes base64= times=  below web sockets
    livefeed.goodbye code= reason=         `c` frame and close;         livefeed.close code=;   livefeed.destroy
    livefeed.behave style=h|ping|none seconds= mute= withholdOpen= glue= backlog=
    livefeed.kill / restart;               livefeed.gate mode=open|refuse|hold;   livefeed.cut
    livefeed.certificate kind=             good, foreign, expired, wrong_name, self_signed
    livefeed.sessions                      everything clients sent, byte for byte, with times
"""

import asyncio
import json
import os
import shutil

from . import addresses
from .faults import Certificates
from .gate import Gate
from .process import DIE_WITH_PARENT, clean_environment
from .programme import Programme
from .service import Service
from .stations import LIVE, station as find_station

PORT = 9300
ANSWER_LIMIT = 64 * 1024 * 1024
SCRIPT = os.path.join(os.path.dirname(os.path.abspath(__file__)), "livefeed.js")


class LiveFeed(Service):
    """Songs as they begin, to everybody who joined."""

    name = "livefeed"

    def __init__(self, world):
        super().__init__(world)
        self.programme = Programme()
        self._gate = Gate(*addresses.LIVE_SOCKET, {443: PORT})
        self._certificates = Certificates(world)
        self._certificate = None
        self._node = None
        self._lock = asyncio.Lock()
        self._rotation = None

    async def start(self):
        """Start node and open the gate."""
        self.world.cable.add_addresses([self._gate.address], "lo", 32)
        self.world.services["dns"].add(self._gate.name, self._gate.address)
        self._certificate = self.world.authority.issue([self._gate.name, self._gate.address])
        await self._start_node()
        await self._gate.start()

    async def stop(self):
        """Close the gate; node ends with the world."""
        self._stop_rotation()
        await self._gate.stop()
        await self._kill_node()

    async def reset(self):
        """Healthy, every station at its first song, nobody connected."""
        self._stop_rotation()
        self.programme.reset()
        if self._node is None:
            await self._start_node()
        await self._use_certificate(self._certificate)
        await self._tell("reset", songs={s.live_id: self._event(s.raw) for s in LIVE})
        await self._gate.reset()

    def endpoints(self):
        """The live socket's host."""
        return {"metadata": {"live_socket": self._gate.name}}

    async def do_song(self, station, artist, title, next_artist=None, next_title=None):
        """Play this now. Answers when the frame was sent, and to how many."""
        self.programme.set(station, artist, title, next_artist, next_title)
        return await self._announce(station)

    async def do_advance(self, station):
        """The next song of the list."""
        self.programme.advance(station)
        return await self._announce(station)

    def do_rotate(self, seconds):
        """All stations go on to their next song every so many seconds; 0 stops it."""
        self._stop_rotation()
        if seconds:
            self._rotation = asyncio.create_task(self._rotate(seconds))

    async def do_two(self, tracks):
        """Several tracks in one frame: [[station, artist, title], ...]. The programme does not change."""
        events = [[find_station(raw).live_id, {"title": title, "artist": {"name": artist}}]
                  for raw, artist, title in tracks]
        return await self._tell("songs", events=events)

    async def do_raw(self, text=None, base64=None):
        """One web-socket message to every session: text, or bytes."""
        return await self._tell("raw", text=text, base64=base64)

    async def do_bytes(self, base64, times=1):
        """Bytes as they are, below the web socket."""
        return await self._tell("bytes", base64=base64, times=times)

    async def do_goodbye(self, code=3000, reason="Go away!"):
        """A `c` frame, then the close."""
        return await self._tell("goodbye", code=code, reason=reason)

    async def do_close(self, code=1000, reason=""):
        """Close without a `c` frame."""
        return await self._tell("close", code=code, reason=reason)

    async def do_destroy(self):
        """Break the connections."""
        return await self._tell("destroy")

    async def do_behave(self, **changes):
        """Heartbeat style and the other habits listed above."""
        if changes.get("style", "h") not in ("h", "ping", "none"):
            raise ValueError("style is h, ping or none")
        await self._tell("behave", **changes)

    async def do_sessions(self):
        """Every session since the last reset, in order."""
        return await self._tell("sessions")

    async def do_kill(self):
        """The server is gone: connections end, new ones are refused."""
        await self._kill_node()
        await self._gate.set_mode("refuse", cut=False)

    async def do_restart(self):
        """The server restarts; its records begin anew."""
        await self._kill_node()
        await self._start_node()
        await self._gate.set_mode("open")

    async def do_gate(self, mode, cut=True):
        """How the network to it behaves."""
        await self._gate.set_mode(mode, cut)

    def do_cut(self):
        """Reset the present connections."""
        return self._gate.cut()

    def do_connections(self):
        """What came in at the gate, TLS failures included."""
        return self._gate.connections

    async def do_certificate(self, kind):
        """Which certificate new connections meet."""
        issued = self._certificate if kind == "good" else self._certificates.issue(kind, [self._gate.name])
        await self._use_certificate(issued)
        self._gate.cut()

    async def _announce(self, raw):
        live_id = find_station(raw).live_id
        if not live_id:
            return {"at": None, "sent": 0}
        return await self._tell("song", station=live_id, event=self._event(raw))

    def _event(self, raw):
        song, following = self.programme.song(raw), self.programme.next(raw)
        event = {"duration": 201, "title": song.title, "spotify_url": None, "sub_artists": [], "tags": [],
                 "artist": {"name": song.artist, "id": 1}}
        if following:
            event["next"] = {"title": following[1], "artist": {"name": following[0], "id": 2}, "sub_artists": []}
        return event

    async def _rotate(self, seconds):
        while True:
            await asyncio.sleep(seconds)
            for raw in self.programme.stations():
                self.programme.advance(raw)
                await self._announce(raw)

    def _stop_rotation(self):
        if self._rotation:
            self._rotation.cancel()
            self._rotation = None

    async def _use_certificate(self, issued):
        await self._tell("certificate", certificate=issued.certificate, key=issued.key)

    async def _start_node(self):
        node = shutil.which("node") or shutil.which("nodejs")
        if node is None:
            raise RuntimeError("node is not installed")
        config = json.dumps({"port": PORT, "certificate": self._certificate.certificate, "key": self._certificate.key})
        env = {**clean_environment(), "NODE_PATH": "/usr/share/nodejs", "NODE_NO_WARNINGS": "1"}
        self._node = await asyncio.create_subprocess_exec(
            *DIE_WITH_PARENT, node, SCRIPT, config, stdin=asyncio.subprocess.PIPE, stdout=asyncio.subprocess.PIPE,
            env=env, limit=ANSWER_LIMIT, start_new_session=True)
        if not await self._node.stdout.readline():
            raise RuntimeError("the live feed does not start; is node-sockjs installed?")
        await self._tell("reset", songs={s.live_id: self._event(s.raw) for s in LIVE})

    async def _kill_node(self):
        if self._node:
            if self._node.returncode is None:
                self._node.kill()
                await self._node.wait()
            self._node = None

    async def _tell(self, command, **args):
        if self._node is None:
            raise RuntimeError("the live feed is down")
        async with self._lock:
            self._node.stdin.write(json.dumps({"do": command, **args}).encode() + b"\n")
            line = await self._node.stdout.readline()
        answer = json.loads(line) if line else {"ok": False, "error": "the live feed has died"}
        if not answer["ok"]:
            raise RuntimeError(answer["error"])
        return answer.get("result")
