# SPDX-License-Identifier: GPL-3.0-or-later
"""A client of the live feed that is not ours (Debian's python3-websockets): AUTHORITY URL JOIN.

Joins on every open frame; prints every message, and at the end the close code, with the time, as lines of JSON.
"""

import asyncio
import json
import ssl
import sys
import time

import websockets


async def main(authority, url, join):
    """Follow until the server closes; a broken connection ends without a last line."""
    context = ssl.create_default_context(cafile=authority)
    async with websockets.connect(url, ssl=context, ping_interval=None) as socket:
        try:
            while True:
                message = await socket.recv()
                print(json.dumps([time.monotonic(), message]), flush=True)
                if message == "o":
                    await socket.send(json.dumps([json.dumps(join)]))
        except websockets.ConnectionClosed as closed:
            if closed.rcvd is not None:
                print(json.dumps([time.monotonic(), closed.rcvd.code]), flush=True)


if __name__ == "__main__":
    asyncio.run(main(sys.argv[1], sys.argv[2], json.loads(sys.argv[3])))
