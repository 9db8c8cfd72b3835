# SPDX-License-Identifier: GPL-3.0-or-later
"""A screen nobody looks at."""

import contextlib
import os
import subprocess

from .process import DIE_WITH_PARENT, clean_environment, terminate

SOCKETS = "/tmp/.X11-unix"


class Display:
    """Xvfb on a number of its own choosing. Start it from the main thread."""

    def __init__(self, size="1280x800x24"):
        self._size = size
        self._process = None
        self._made_sockets = False
        self.name = None

    def start(self):
        """Start and wait until programs can be shown."""
        # Left to choose by itself, the server takes a number that is free in its own network namespace, and with it
        # the socket of a server in another one. Told a number, it respects the lock that all of them share.
        self._made_sockets = not os.path.exists(SOCKETS)
        first = 100 + os.getpid() % 400
        for number in range(first, first + 50):
            if not os.path.exists(f"/tmp/.X{number}-lock") and self._start_as(number):
                self.name = f":{number}"
                return self
        raise RuntimeError("Xvfb does not start")

    def _start_as(self, number):
        readable, writable = os.pipe()
        with os.fdopen(readable) as answer:
            try:
                self._process = subprocess.Popen(
                    [*DIE_WITH_PARENT, "Xvfb", f":{number}", "-displayfd", str(writable), "-screen", "0", self._size,
                     "-nolisten", "tcp", "-noreset", "-ac"], env=clean_environment(), pass_fds=[writable],
                    stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL,
                    start_new_session=True)
            finally:
                os.close(writable)
            if answer.readline().strip() == str(number):
                return True
        terminate(self._process)
        return False

    def stop(self):
        """End it."""
        if self._process:
            terminate(self._process)
        if self._made_sockets:
            # A machine that had no display has no such folder afterwards, unless somebody else uses it by now.
            with contextlib.suppress(OSError):
                os.rmdir(SOCKETS)
