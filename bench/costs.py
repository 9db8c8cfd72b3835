# SPDX-License-Identifier: GPL-3.0-or-later
"""What the radio costs while it waits and while it plays, beside other players."""

import contextlib
import time

from measure import cost
from stage import FLOOR, FLOOR_LINKED

SETTLED = 10  # seconds that a program gets to come to rest
HEARD = ("qmusic", "aac")
CACHE = ("--cache=yes", "--cache-secs=20", "--demuxer-max-bytes=4MiB", "--demuxer-max-back-bytes=0")


@contextlib.contextmanager
def _radio(stage, *options, headless=False):
    with stage.status_bar() as bar, stage.radio() as radio:
        radio.start(*options, headless=headless)
        if not headless:
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
            (own, shared), cpu, woken = cost(process.pid, seconds)
        stage.row(name, f"{own:.1f} MB (PSS {shared:.1f}), {cpu:.2f} %, {woken:.1f}/s", target, anonymous_mb=own,
                  pss_mb=shared, cpu_percent=cpu, wake_ups=woken)


def run(stage, seconds):
    """Every row."""
    stage.heading(f"Costs: anonymous memory, processor, wake-ups of all threads")
    _row(stage, "idle: a bare program on the bus", stage.other([FLOOR]), seconds)
    _row(stage, "idle: the radio's libraries, one secure connection", stage.other([FLOOR_LINKED, stage.on_air(), stage.lab.authority]), seconds)
    _row(stage, "idle: zofrazofra --headless", _radio(stage, headless=True), seconds, "<= 3.2 MB, 0.0 %, 0/s beside polls")
    _row(stage, "idle: zofrazofra, panel and menu prepared", _radio(stage), seconds)
    _row(stage, "idle: goodvibes", stage.other(["goodvibes"]), seconds)
    _row(stage, "playing: the bare engine (no TLS)", stage.other(stage.engine_floor()), seconds, playing=True)
    _row(stage, "playing: zofrazofra --headless", _radio(stage, "--play", "qmusic", headless=True), seconds,
         "<= 12 MB, <= 0.35 %, <= 15/s", True)
    _row(stage, "playing: zofrazofra, panel and menu prepared", _radio(stage, "--play", "qmusic"), seconds,
         playing=True)
    _row(stage, "playing: mpv", stage.other(stage.mpv()), seconds, playing=True)
    _row(stage, "playing: mpv, the radio's cache", stage.other([*stage.mpv(), *CACHE]), seconds, playing=True)
    # It trusts the system's authorities only, so it gets the same stream in the clear. (Strawberry, told the same, opens its
    # window and waits for a click: there is nothing of it to be measured.)
    _row(stage, "playing: goodvibes (no TLS)", stage.other(["goodvibes", stage.address("http")]), seconds, playing=True)
