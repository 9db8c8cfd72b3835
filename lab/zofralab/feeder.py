# SPDX-License-Identifier: GPL-3.0-or-later
"""Sends every mount's frames to its icecast at the pace at which they would be heard.

A process of its own, started by the broadcaster, so that a busy moment elsewhere in the house is no gap in the
sound. Takes lines of JSON on standard input, answers each with one line:
    {"do": "start", "mount": NAME, "port": PORT, "path": "/zofra.aac", "codec": "aac", "loop": ["zofra", "aac"]}
    {"do": "stop" | "pause" | "resume", "mount": NAME}
    {"do": "wear", "mount": NAME, "loop": ["joe", "aac"]}
"""

import asyncio
import json
import sys
import time

from . import loops as loop_files
from .process import die_with_parent

#: As often as encoders send: a listener who comes waits for what the server gets next.
TICK = 0.05
CONTENT_TYPE = {"aac": "audio/aac", "mp3": "audio/mpeg"}
#: Frames that a fresh mount sends at once, so that its first listener gets a full burst.
HEAD_START = 3.0


class Mount:
    """One source connection and where in its loop it is."""

    def __init__(self, request, loops):
        self.port = request["port"]
        self.path = request["path"]
        self.codec = request["codec"]
        self.loop = loops[tuple(request["loop"])]
        self.paused = False
        self._writer = None
        self._reader = None
        self._sent_frames = 0
        self._started = 0.0
        self._next = 0

    async def connect(self):
        """Offer the stream to icecast; it is live when this returns."""
        self._reader, self._writer = await asyncio.open_connection("127.0.0.1", self.port)
        self._writer.write(f"PUT {self.path} HTTP/1.1\r\nHost: 127.0.0.1:{self.port}\r\n"
                           "Authorization: Basic c291cmNlOmxhYg==\r\nUser-Agent: zofralab\r\n"
                           f"Content-Type: {CONTENT_TYPE[self.codec]}\r\nIce-Public: 0\r\n"
                           f"Ice-Name: Zofra lab {self.path}\r\nExpect: 100-continue\r\n\r\n".encode())
        answer = await asyncio.wait_for(self._reader.readline(), 5)
        if b" 100 " not in answer and b" 200 " not in answer:
            raise ConnectionError(f"icecast refuses {self.path}: {answer!r}")
        self._started = time.monotonic() - HEAD_START
        self._sent_frames = 0
        self.send_due(time.monotonic())
        await self._writer.drain()

    @property
    def connected(self):
        """Whether there is a source connection, as far as can be told without writing."""
        return self._writer is not None and not self._writer.is_closing()

    def send_due(self, now):
        """Send the frames whose time has come."""
        frame_seconds = self.loop.seconds / len(self.loop.frames)
        due = int((now - self._started) / frame_seconds)
        if self.paused:
            self._sent_frames = due  # what is not sent in time is never sent: the stream is live
            return
        count = due - self._sent_frames
        if count <= 0 or not self.connected:
            return
        frames = self.loop.frames
        out = bytearray()
        for _ in range(min(count, 4 * len(frames))):
            out += frames[self._next % len(frames)]
            self._next += 1
        self._sent_frames = due
        if self._writer.transport.get_write_buffer_size() < 1 << 20:  # a stopped icecast takes nothing
            self._writer.write(bytes(out))

    async def close(self):
        """Take the stream off the air."""
        if self._writer:
            self._writer.close()
            self._writer = None


class Feeder:
    """All mounts, and the commands."""

    def __init__(self, loops):
        self._loops = loops
        self._mounts = {}

    async def answer(self, request):
        """Carry out one command."""
        name = request["mount"]
        mount = self._mounts.get(name)
        if request["do"] == "start":
            if mount:
                await mount.close()
            self._mounts.pop(name, None)
            mount = Mount(request, self._loops)
            await mount.connect()
            self._mounts[name] = mount
        elif mount is None:
            return {"ok": request["do"] == "stop", "error": f"{name} is not on the air"}
        elif request["do"] == "stop":
            await self._mounts.pop(name).close()
        elif request["do"] in ("pause", "resume"):
            mount.paused = request["do"] == "pause"
        elif request["do"] == "wear":
            mount.loop = self._loops[tuple(request["loop"])]
        else:
            return {"ok": False, "error": f"cannot {request['do']}"}
        return {"ok": True}

    async def pace(self):
        """The clock of the whole broadcaster."""
        while True:
            await asyncio.sleep(TICK)
            now = time.monotonic()
            for mount in self._mounts.values():
                mount.send_due(now)


async def main(cache_dir):
    """Serve commands until standard input ends."""
    feeder = Feeder(loop_files.load(cache_dir))
    reader = asyncio.StreamReader()
    await asyncio.get_running_loop().connect_read_pipe(lambda: asyncio.StreamReaderProtocol(reader), sys.stdin)
    pacing = asyncio.create_task(feeder.pace())
    while line := await reader.readline():
        try:
            answer = await feeder.answer(json.loads(line))
        except Exception as error:  # reported to whoever threw the switch
            answer = {"ok": False, "error": repr(error)}
        print(json.dumps(answer), flush=True)
    pacing.cancel()


if __name__ == "__main__":
    die_with_parent(int(sys.argv[2]))
    asyncio.run(main(sys.argv[1]))
