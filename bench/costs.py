# SPDX-License-Identifier: GPL-3.0-or-later
"""What the radio costs while it waits and while it plays, beside other players."""

import contextlib
import time

from measure import cost

SETTLED = 10  # seconds that a program gets to come to rest
HEARD = ("qmusic", "aac")


@contextlib.contextmanager
def _radio(stage, *options):
    with stage.status_bar() as bar, stage.radio() as radio:
        radio.start(*options, headless=False)
        bar.wait_for_item(10)
        yield radio.process


def _row(stage, name, started, seconds, target="", playing=False):
    """One program's row; the recorder is away meanwhile, for its small buffers wake every player more often."""
    with started as process:
        if process is None:
            stage.row(name, "not installed here", target)
            return
        if playing:
            try:
                stage.ears.wait_for(HEARD, 20)
            except AssertionError:
                stage.row(name, "not heard", target)
                return
        with stage.deaf():
            time.sleep(SETTLED)
            if process.poll() is not None:
                stage.row(name, f"ended by itself ({process.returncode})", target)
                return
            memory, cpu, woken = cost(process.pid, seconds)
        stage.row(name, f"{memory:.1f} MB, {cpu:.2f} %, {woken:.1f}/s", target, pss_mb=memory, cpu_percent=cpu,
                  wake_ups=woken)


def run(stage, seconds):
    """Every row."""
    stage.heading(f"Costs over {seconds:.0f} s: memory (PSS), processor, wake-ups of all threads")
    _row(stage, "idle: zofrazofra", _radio(stage), seconds, "<= 25 MB, 0.0 %, <= 1/s")
    for name in ("goodvibes", "strawberry"):
        _row(stage, f"idle: {name}", stage.other([name]), seconds)
    _row(stage, "playing: zofrazofra", _radio(stage, "--play", "qmusic"), seconds, "<= 60 MB, <= 1.0 %, <= 85/s", True)
    _row(stage, "playing: mpv", stage.other(stage.mpv()), seconds, playing=True)
    # These trust the system's authorities only, so they get the same stream in the clear.
    for name in ("goodvibes", "strawberry"):
        _row(stage, f"playing: {name} (no TLS)", stage.other([name, stage.address("http")]), seconds, playing=True)
