# SPDX-License-Identifier: GPL-3.0-or-later
"""A system log of a test's own: what a program says through syslog(3) arrives here, and nowhere else.

The C library sends to /dev/log. A program that is started through `wrapper` finds a /dev of its own there, in a mount
namespace of its own, whose `log` leads to a socket of this process. An ordinary user can do that too.
"""

from __future__ import annotations

import os
import re
import shlex
import socket
import threading
import time
from dataclasses import dataclass

from ..process import wait_until

_ENTRY = re.compile(rb"<(\d{1,3})>(?:\w{3} [ \d]\d \d\d:\d\d:\d\d )?(?:([^\[:]+)(?:\[\d+\])?: )?(.*)", re.S)

#: Arguments: a directory for the new /dev, the socket, and the command.
_NEW_DEV = """
set -e
new=$1; log=$2; shift 2
mount -t tmpfs -o mode=755 zofralab "$new"
for name in null zero full random urandom tty; do
    [ -e /dev/$name ] && : >"$new/$name" && mount --bind /dev/$name "$new/$name"
done
for name in shm pts snd dri; do
    [ -d /dev/$name ] && mkdir "$new/$name" && mount --rbind /dev/$name "$new/$name"
done
ln -s pts/ptmx "$new/ptmx"
ln -s /proc/self/fd "$new/fd"
ln -s /proc/self/fd/0 "$new/stdin"
ln -s /proc/self/fd/1 "$new/stdout"
ln -s /proc/self/fd/2 "$new/stderr"
ln -s "$log" "$new/log"
mount --rbind "$new" /dev
exec setpriv --pdeathsig KILL -- "$@"
"""


@dataclass(frozen=True)
class Entry:
    """One line: when it came (`time.monotonic()`), facility and severity, who, what."""

    at: float
    priority: int
    program: str
    text: str


class SystemLog:
    """Collects entries until closed."""

    def __init__(self, directory: str) -> None:
        self._directory = directory
        self._path = os.path.join(directory, "log")
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._socket.bind(self._path)
        self.entries: list[Entry] = []
        self._reader = threading.Thread(target=self._read, name="system log", daemon=True)
        self._reader.start()

    def wrapper(self, program: str) -> str:
        """The path of a script that starts `program` with this log as its system log, replacing itself by it."""
        new_dev = os.path.join(self._directory, "dev")
        os.makedirs(new_dev, exist_ok=True)
        user = [] if os.geteuid() == 0 else ["--user", "--map-current-user", "--keep-caps"]
        command = ["unshare", *user, "--mount", "--", "sh", "-c", _NEW_DEV, "sh", new_dev, self._path, program]
        path = os.path.join(self._directory, os.path.basename(program))
        with open(path, "w", encoding="utf-8") as script:
            script.write("#!/bin/sh\nexec " + " ".join(map(shlex.quote, command)) + ' "$@"\n')
        os.chmod(path, 0o755)
        return path

    def texts(self, since: float = 0.0) -> list[str]:
        """What was said, in order."""
        return [entry.text for entry in list(self.entries) if entry.at >= since]

    def wait_for(self, pattern: str, timeout: float = 30.0, since: float = 0.0) -> Entry:
        """The first entry whose whole text matches, waiting for it. Raises AssertionError with what there was."""

        def found() -> Entry | None:
            matching = (e for e in list(self.entries) if e.at >= since and re.fullmatch(pattern, e.text))
            return next(matching, None)

        try:
            entry: Entry = wait_until(found, timeout, f"a log entry {pattern!r}")
            return entry
        except TimeoutError as error:
            raise AssertionError(f"{error}; there were {self.texts(since)}") from None

    def hang(self) -> None:
        """From now on, and before anybody speaks, nobody reads, and the queue is full."""
        self.close()
        os.unlink(self._path)
        self._socket = socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM)
        self._socket.bind(self._path)
        with socket.socket(socket.AF_UNIX, socket.SOCK_DGRAM) as filler:
            filler.setblocking(False)
            try:
                for _ in range(100_000):
                    filler.sendto(b"<13>filler: x", self._path)
            except BlockingIOError:
                pass

    def close(self) -> None:
        self._socket.shutdown(socket.SHUT_RDWR)
        self._reader.join(2)
        self._socket.close()

    def _read(self) -> None:
        while data := self._socket.recv(65536):
            parts = _ENTRY.fullmatch(data.rstrip(b"\0\n"))
            if parts is not None:
                priority, program, text = parts.groups()
                entry = Entry(
                    time.monotonic(), int(priority), (program or b"").decode(), text.decode("utf-8", "replace")
                )
                self.entries.append(entry)
