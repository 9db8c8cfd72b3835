# SPDX-License-Identifier: GPL-3.0-or-later
"""Switches travel as JSON, one object a line, over a unix socket.

To the house: {"service": "icecast", "command": "stop_mount", "args": {"station": "zofra", "codec": "aac"}}.
Back: {"ok": true, "result": ...} or {"ok": false, "error": "..."}. One at a time per connection.
"""

import asyncio
import inspect
import json
import socket
import threading
import traceback

LINE_LIMIT = 64 * 1024 * 1024


class ControlError(Exception):
    """The house refused a switch, or is gone."""


class ControlServer:
    """The house's end."""

    def __init__(self, path, dispatch, log):
        self._path = path
        self._dispatch = dispatch
        self._log = log
        self._server = None

    async def start(self):
        """Listen; the socket file appears when commands are taken."""
        self._server = await asyncio.start_unix_server(self._serve, self._path, limit=LINE_LIMIT)

    async def stop(self):
        """Close for new connections."""
        if self._server:
            self._server.close()

    async def _serve(self, reader, writer):
        try:
            while line := await reader.readline():
                writer.write(json.dumps(await self._answer(line)).encode() + b"\n")
                await writer.drain()
        except (ConnectionError, asyncio.LimitOverrunError, ValueError):
            pass
        finally:
            writer.close()

    async def _answer(self, line):
        try:
            request = json.loads(line)
            result = self._dispatch(request["service"], request["command"], request.get("args") or {})
            if inspect.isawaitable(result):
                result = await result
            return {"ok": True, "result": result}
        except Exception as error:  # whatever a switch does wrong belongs to whoever threw it
            self._log(f"control: {line[:400]!r}\n{traceback.format_exc()}")
            return {"ok": False, "error": f"{type(error).__name__}: {error}"}


class ControlClient:
    """The tests' and the command line's end. Any thread may use it; calls are one after another."""

    def __init__(self, path, timeout=60.0):
        self._lock = threading.Lock()
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_STREAM)
        self._socket.settimeout(timeout)
        try:
            self._socket.connect(path)
        except OSError as error:
            raise ControlError(f"no lab answers at {path}: {error}") from error
        self._file = self._socket.makefile("rb")

    def call(self, service, command, /, **args):
        """Throw one switch and return its answer."""
        request = json.dumps({"service": service, "command": command, "args": args}).encode() + b"\n"
        with self._lock:
            try:
                self._socket.sendall(request)
                line = self._file.readline()
            except OSError as error:
                raise ControlError(f"the lab does not answer {service}.{command}: {error}") from error
        if not line:
            raise ControlError(f"the lab has gone (at {service}.{command})")
        answer = json.loads(line)
        if not answer["ok"]:
            raise ControlError(answer["error"])
        return answer["result"]

    def close(self):
        """Hang up."""
        self._file.close()
        self._socket.close()


def parse_switch(text):
    """`icecast.stop_mount station=zofra codec=aac` as (service, command, args)."""
    head, *rest = text.split()
    service, dot, command = head.partition(".")
    if not dot or not service or not command:
        raise ValueError(f"a switch reads SERVICE.COMMAND key=value ..., not {text!r}")
    args = {}
    for word in rest:
        key, equals, value = word.partition("=")
        if not equals:
            raise ValueError(f"not key=value: {word!r}")
        try:
            args[key] = json.loads(value)
        except json.JSONDecodeError:
            args[key] = value
    return service, command, args
