# SPDX-License-Identifier: GPL-3.0-or-later
"""How far a long job is: one line that moves in a terminal, a line every 20 s elsewhere."""

import re
import subprocess
import sys
import time


class Progress:
    """Says how much of `what` is done, and about when the rest will be."""

    def __init__(self, what, out=sys.stderr):
        self._what = what
        self._out = out
        self._moves = out.isatty()
        self._started = self._said = time.monotonic()

    def update(self, done, total):
        """`done` of `total` are done; says so if it is time to."""
        now = time.monotonic()
        if now - self._said < (1 if self._moves else 20):
            return
        self._said = now
        passed = now - self._started
        left = f", about {passed * (total - done) / done:.0f} s left" if done else ""
        text = f"{self._what}: {done} of {total}, {passed:.0f} s{left}"
        self._out.write(f"\r\033[K{text}" if self._moves else text + "\n")
        self._out.flush()

    def clear(self):
        """Take a moving line away, so that other output may follow."""
        if self._moves:
            self._out.write("\r\033[K")
            self._out.flush()


def run_pytest(command, log, title, timeout, **keywords):
    """Runs pytest with its output in `log`. Returns its exit status, or "out of time"."""
    progress = Progress(title)
    deadline = time.monotonic() + timeout
    with open(log, "w", encoding="utf-8") as out:
        process = subprocess.Popen(command, stdin=subprocess.DEVNULL, stdout=out, stderr=subprocess.STDOUT, **keywords)
    try:
        while True:
            try:
                return process.wait(1)
            except subprocess.TimeoutExpired:
                pass
            if time.monotonic() > deadline:
                return "out of time"
            per_cent = re.findall(r"\[ *(\d+)%\]", log.read_text(encoding="utf-8", errors="replace"))
            progress.update(int(per_cent[-1]) if per_cent else 0, 100)
    finally:
        if process.poll() is None:
            process.kill()
            process.wait()
        progress.clear()
