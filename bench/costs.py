# SPDX-License-Identifier: GPL-3.0-or-later
"""What the radio costs while it waits and while it plays, beside other players."""

import contextlib
import statistics
import time

from measure import cost
from stage import FLOOR, FLOOR_LINKED

SETTLED = 10  # seconds that a program gets to come to rest
ROUNDS = 3
HEARD = ("qmusic", "aac")
CACHE = ("--cache=yes", "--cache-secs=20", "--demuxer-max-bytes=4MiB", "--demuxer-max-back-bytes=0")


@contextlib.contextmanager
def _radio(stage, *options, headless=False):
    with stage.status_bar() as bar, stage.radio() as radio:
        radio.start(*options, headless=headless)
        if not headless:
            bar.wait_for_item(10)
        yield radio.process


def _measured(stage, started, seconds, playing):
    """(anonymous, PSS, processor, wake-ups), or why not. The recorder is away meanwhile, for its small buffers wake every
    player more often."""
    with started as process:
        if process is None:
            return "not installed here"
        if playing:
            try:
                stage.ears.wait_for(HEARD, 20)
            except AssertionError:
                return "not heard"
        with stage.deaf():
            time.sleep(SETTLED)
            if process.poll() is not None:
                return f"ended by itself ({process.returncode})"
            (own, shared), cpu, woken = cost(process.pid, seconds)
        return own, shared, cpu, woken


def _programs(stage):
    """{name: (how it is started, whether it plays)}. Goodvibes trusts the system's authorities only, so it gets the same stream
    in the clear, as the bare engine does. (Strawberry, told the same, opens its window and waits for a click: there is nothing of
    it to be measured.)"""
    def radio(*options, headless=True):
        return lambda: _radio(stage, *options, headless=headless)

    def other(*command):
        return lambda: stage.other(list(command))
    return {
        "idle: a bare program on the bus": (other(FLOOR), False),
        "idle: the radio's libraries, one secure connection": (other(FLOOR_LINKED, stage.on_air(), stage.lab.authority), False),
        "idle: goodvibes": (other("goodvibes"), False),
        "idle: zofrazofra --headless": (radio(), False),
        "idle: zofrazofra, panel and menu prepared": (radio(headless=False), False),
        "playing: the bare engine (no TLS)": (other(*stage.engine_floor()), True),
        "playing: mpv": (other(*stage.mpv()), True),
        "playing: mpv, the radio's cache": (other(*stage.mpv(), *CACHE), True),
        "playing: goodvibes (no TLS)": (other("goodvibes", stage.address("http")), True),
        "playing: zofrazofra --headless": (radio("--play", "qmusic"), True),
        "playing: zofrazofra, panel and menu prepared": (radio("--play", "qmusic", headless=False), True),
    }


#: What the figures of a program stand beside: (goal, floor, peers).
BESIDE = {
    "idle: zofrazofra --headless": ("<= 3.2 MB, 0.0 %, 0/s beside polls", "idle: the radio's libraries, one secure connection",
                                    ("idle: goodvibes",)),
    "playing: zofrazofra --headless": ("<= 12 MB, <= 0.35 %, <= 15/s", "playing: the bare engine (no TLS)",
                                       ("playing: mpv", "playing: mpv, the radio's cache", "playing: goodvibes (no TLS)")),
}


def _medians(samples):
    return tuple(statistics.median(column) for column in zip(*samples))


def _said(own, shared, cpu, woken):
    return f"{own:.1f} MB, {cpu:.2f} %, {woken:.1f}/s"


def _against(mine, peers):
    """How many times as much as the best of them in each figure."""
    ratios = [mine[figure] / best if (best := min(peer[figure] for peer in peers)) > 0 else None for figure in (0, 2, 3)]
    return "memory, processor, wake-ups " + ", ".join("-" if ratio is None else f"x {ratio:.2f}" for ratio in ratios)


def run(stage, seconds, rounds=ROUNDS):
    """Every row: medians and spread of some rounds, in each of which every program has its turn."""
    stage.heading(f"Costs: anonymous memory, processor, wake-ups of all threads ({rounds} rounds)")
    programs = _programs(stage)
    samples = {name: [] for name in programs}
    failed = {}
    for _ in range(rounds):
        for name, (start, playing) in programs.items():
            measured = _measured(stage, start(), seconds, playing)
            if isinstance(measured, str):
                failed[name] = measured
            else:
                samples[name].append(measured)
    medians = {name: _medians(found) for name, found in samples.items() if found}
    for name in programs:
        if name not in medians:
            stage.row(name, failed[name], "")
            continue
        own, shared, cpu, woken = medians[name]
        goal, floor, peers = BESIDE.get(name, ("", "", ()))
        peers = [medians[peer] for peer in peers if peer in medians]
        least, most = (tuple(pick(column) for column in zip(*samples[name])) for pick in (min, max))
        stage.row(name, f"{_said(*medians[name])} ({least[0]:.1f}-{most[0]:.1f} MB, {least[2]:.2f}-{most[2]:.2f} %, "
                  f"{least[3]:.1f}-{most[3]:.1f}/s; PSS {shared:.1f})", goal, floor=_said(*medians[floor]) if floor in medians else "",
                  peer=_against(medians[name], peers) if peers else "", anonymous_mb=own, pss_mb=shared, cpu_percent=cpu,
                  wake_ups=woken, samples=samples[name])
