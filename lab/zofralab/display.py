# SPDX-License-Identifier: GPL-3.0-or-later
"""A screen nobody looks at."""

import os
import subprocess

from .process import DIE_WITH_PARENT, clean_environment, terminate


class Display:
    """Xvfb on a number of its own choosing. Start it from the main thread."""

    def __init__(self, size="1280x800x24"):
        self._size = size
        self._process = None
        self.name = None

    def start(self):
        """Start and wait until programs can be shown."""
        read_end, write_end = os.pipe()
        try:
            self._process = subprocess.Popen(
                [*DIE_WITH_PARENT, "Xvfb", "-displayfd", str(write_end), "-screen", "0", self._size, "-nolisten", "tcp",
                 "-noreset", "-ac"], env=clean_environment(), pass_fds=[write_end], stdin=subprocess.DEVNULL,
                stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL, start_new_session=True)
            os.close(write_end)
            write_end = None
            with os.fdopen(read_end) as file:
                read_end = None
                number = file.readline().strip()
        finally:
            for end in (read_end, write_end):
                if end is not None:
                    os.close(end)
        if not number:
            raise RuntimeError("Xvfb does not start")
        self.name = ":" + number
        return self

    def stop(self):
        """End it."""
        if self._process:
            terminate(self._process)
