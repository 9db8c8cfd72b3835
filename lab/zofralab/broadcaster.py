# SPDX-License-Identifier: GPL-3.0-or-later
"""The broadcaster: two icecast2 servers (one per codec), eighteen mounts, eighteen public addresses.

Switches (`station` and `codec` may be `*`):
    icecast.stop_mount / start_mount station= codec=            the mount is gone (404) / back
    icecast.pause_mount / resume_mount station= codec=          the studio sends nothing / goes on live
    icecast.wear station= codec= of_station= of_codec=          the mount carries another stream's tone from now on
    icecast.kill / restart / freeze / thaw codec=               the server crashes / is back / hangs / goes on
    icecast.gate station= codec= mode=open|refuse|hold          the network to this address (see gate.py)
    icecast.cut / finish station= codec=                        present connections: reset / end in order
    icecast.fault station= codec= kind= certificate= hops= scheme= status= bytes= rate=  (see faults.py)
    icecast.connections station= (also `edge`) codec=, icecast.requests station= codec=, icecast.listeners, icecast.pids
"""

import asyncio
import json
import os
import subprocess
import sys

from . import addresses
from .faults import Certificates, FaultServer
from .gate import Gate
from .icecast import Icecast
from .service import Service
from .stations import CODECS, INDEX, STATIONS, TONES, host, require_codec, station as find_station

PORTS = {"aac": (8100, 8101), "mp3": (8200, 8201)}


class Broadcaster(Service):
    """All stations on the air."""

    name = "icecast"

    def __init__(self, world):
        super().__init__(world)
        self._servers = {codec: Icecast(world, codec, *PORTS[codec]) for codec in CODECS}
        self._gates = {}
        self._feeder = None
        self._feeder_lock = asyncio.Lock()
        self._faults = {}
        self._certificates = Certificates(world)
        self._off_air = set()
        self._paused = set()
        self._worn = set()

    async def start(self):
        """Everything on the air, all gates open."""
        self._make_gates()
        names = [gate.name for gate in self._gates.values()]
        certificate = self.world.authority.issue(names + [gate.address for gate in self._gates.values()])
        for server in self._servers.values():
            server.write_config(certificate)
            await server.start()
        self._start_feeder()
        for raw, codec in TONES:
            await self._put_on_air(raw, codec)
        for gate in self._gates.values():
            await gate.start()

    async def stop(self):
        """Off the air; the processes end with the world."""
        await self._clear_faults()
        for gate in self._gates.values():
            await gate.stop()
        for server in self._servers.values():
            server.freeze(False)
            server.kill()
        if self._feeder and self._feeder.poll() is None:
            self._feeder.kill()
            self._feeder.wait()

    async def reset(self):
        """Every server running, every mount on the air with its own tone, every gate open."""
        await self._clear_faults()
        for codec, server in self._servers.items():
            server.freeze(False)
            if not server.running:
                await self.do_restart(codec)
        for raw, codec in sorted(self._off_air):
            await self._put_on_air(raw, codec)
        for raw, codec in sorted(self._paused):
            await self._feed("resume", raw, codec)
        for raw, codec in sorted(self._worn):
            await self._feed("wear", raw, codec, loop=[raw, codec])
        self._paused.clear()
        self._worn.clear()
        for gate in self._gates.values():
            await gate.reset()

    def endpoints(self):
        """The [streams] section."""
        return {"streams": {f"{s.raw}_{codec}": host(s.raw, codec) for s in STATIONS for codec in CODECS}}

    async def do_stop_mount(self, station, codec):
        """Take a mount off the air."""
        for key in _keys(station, codec):
            await self._feed("stop", *key)
            self._off_air.add(key)

    async def do_start_mount(self, station, codec):
        """Put it back."""
        for key in _keys(station, codec):
            await self._put_on_air(*key)

    async def do_pause_mount(self, station, codec):
        """Keep the mount, send no sound."""
        for key in _keys(station, codec):
            await self._feed("pause", *key)
            self._paused.add(key)

    async def do_resume_mount(self, station, codec):
        """Sound again, live."""
        for key in _keys(station, codec):
            await self._feed("resume", *key)
            self._paused.discard(key)

    async def do_wear(self, station, codec, of_station, of_codec):
        """Carry another stream's tone; its codec must be the mount's."""
        if codec != of_codec:
            raise ValueError("a mount cannot wear a tone of the other codec")
        for key in _keys(station, codec):
            await self._feed("wear", *key, loop=[find_station(of_station).raw, of_codec])
            self._worn.add(key)

    async def do_kill(self, codec="*"):
        """Crash the server: connections end, new ones are refused."""
        for one in _codecs(codec):
            self._servers[one].kill()
            self._off_air.update((s.raw, one) for s in STATIONS)
            for gate in self._gates_of("*", one):
                await gate.set_mode("refuse", cut=False)  # the present ones end as icecast's did

    async def do_restart(self, codec="*"):
        """Start a server again (ending it first where it runs), with all its mounts."""
        for one in _codecs(codec):
            self._servers[one].freeze(False)
            self._servers[one].kill()
            await self._servers[one].start()
            for raw in INDEX:
                await self._put_on_air(raw, one)
            for gate in self._gates_of("*", one):
                await gate.set_mode("open")

    def do_freeze(self, codec="*"):
        """The server hangs: connections are taken by the kernel, nothing is answered."""
        for one in _codecs(codec):
            self._servers[one].freeze(True)

    def do_thaw(self, codec="*"):
        """The server goes on."""
        for one in _codecs(codec):
            self._servers[one].freeze(False)

    async def do_gate(self, station, codec, mode, cut=True):
        """How the network to an address behaves."""
        for gate in self._gates_of(station, codec):
            await gate.set_mode(mode, cut)

    def do_cut(self, station, codec):
        """Reset the present connections; returns how many."""
        return sum(gate.cut() for gate in self._gates_of(station, codec))

    def do_finish(self, station, codec):
        """End the present connections in order; returns how many."""
        return sum(gate.finish() for gate in self._gates_of(station, codec))

    async def do_fault(self, station, codec, kind="healthy", certificate="good", cut=True, **options):
        """New connections to this address meet a fault of faults.py; present ones are reset."""
        for raw, one in _keys(station, codec):
            gate = self._gates[raw, one]
            await self._clear_faults((raw, one))
            context = self._certificates.context(certificate, [gate.name])
            server = FaultServer(context, kind, self._servers[one].plain_port, {**options, "codec": one})
            port = await server.start()
            self._faults[raw, one] = server
            for public in (443, 8443):
                gate.lead_to(public, port)
            if cut:
                gate.cut()

    def do_connections(self, station, codec):
        """What came in since the last reset: list of opened, closed (or null), port, sent, received."""
        return [record for gate in self._gates_of(station, codec) for record in gate.connections]

    def do_requests(self, station, codec):
        """Request heads that a fault has seen."""
        return [head for key in _keys(station, codec) if key in self._faults for head in self._faults[key].requests]

    async def do_listeners(self):
        """{codec: {path: count}} as icecast counts them."""
        return {codec: await server.listeners() for codec, server in self._servers.items()}

    def do_pids(self):
        """{name: pid} of what keeps the stations on the air."""
        return {"feeder": self._feeder.pid, "world": os.getpid(),
                **{f"icecast-{codec}": server.pid for codec, server in self._servers.items()}}

    def _make_gates(self):
        for item in STATIONS:
            for codec in CODECS:
                plain, tls = PORTS[codec]
                self._gates[item.raw, codec] = Gate(addresses.stream_name(item.raw, codec),
                                                    addresses.stream_address(INDEX[item.raw], codec),
                                                    {443: tls, 8443: tls, 80: plain})
        for codec, (name, address) in addresses.EDGE.items():
            plain, tls = PORTS[codec]
            self._gates["edge", codec] = Gate(name, address, {443: tls, 80: plain})
        self.world.cable.add_addresses([gate.address for gate in self._gates.values()], "lo", 32)
        for gate in self._gates.values():
            self.world.services["dns"].add(gate.name, gate.address)

    def _gates_of(self, station, codec):
        if station == "edge":  # where redirects lead
            return [self._gates[station, one] for one in _codecs(codec)]
        return [self._gates[key] for key in _keys(station, codec)]

    def _start_feeder(self):
        self._feeder = subprocess.Popen([sys.executable, "-m", "zofralab.feeder", self.world.cache_dir,
                                         str(os.getpid())], stdin=subprocess.PIPE, stdout=subprocess.PIPE)

    async def _put_on_air(self, raw, codec):
        await self._feed("start", raw, codec, port=self._servers[codec].plain_port, codec=codec,
                         path=find_station(raw).path(codec), loop=[raw, codec])
        self._off_air.discard((raw, codec))
        self._paused.discard((raw, codec))
        self._worn.discard((raw, codec))

    async def _feed(self, verb, raw, of_codec, **rest):
        request = json.dumps({"do": verb, "mount": f"{raw}.{of_codec}", **rest})
        async with self._feeder_lock:
            self._feeder.stdin.write(request.encode() + b"\n")
            self._feeder.stdin.flush()
            line = await asyncio.get_running_loop().run_in_executor(None, self._feeder.stdout.readline)
        answer = json.loads(line) if line else {"ok": False, "error": "the feeder has died"}
        if not answer["ok"]:
            raise RuntimeError(answer["error"])

    async def _clear_faults(self, *keys):
        for key in keys or list(self._faults):
            server = self._faults.pop(key, None)
            if server:
                await server.stop()
                for port in self._gates[key].ports:
                    self._gates[key].lead_to(port, None)


def _codecs(codec):
    return CODECS if codec == "*" else (require_codec(codec),)


def _keys(station, codec):
    raws = list(INDEX) if station == "*" else [find_station(station).raw]
    return [(raw, one) for raw in raws for one in _codecs(codec)]
