# SPDX-License-Identifier: GPL-3.0-or-later
"""What is left behind by much of the same: memory, threads and descriptors after thousands of repetitions."""

import time

from stage import slope
from zofralab.household import measure
from zofralab.process import wait_until

RESCAN = ("Audio Output (…", "🔄 Search for Sonos and Zofra devices")
STATIONS = ("qmusic", "joe", "zofra", "radio_contact")


def _held(radio):
    return {"memory": measure.own_memory(radio.pid), "threads": radio.threads(), "descriptors": radio.descriptors()}


def _show(stage, what, held, each):
    """The first third warms caches; the rest has to be flat."""
    rest = held[len(held) // 3:]
    grown = slope([one["memory"] for one in rest]) / each
    stage.row(what, f"{grown * 1024:+.1f} B each, {rest[0]['memory']} -> {rest[-1]['memory']} kB, threads "
              f"{rest[0]['threads']} -> {rest[-1]['threads']}, files {rest[0]['descriptors']} -> "
              f"{rest[-1]['descriptors']}", "slope 0", bytes_each=grown * 1024, held=held)


def _updates(stage, count=10_000, every=250):
    with stage.status_bar() as bar, stage.radio() as radio:
        radio.start(headless=False)
        item = bar.wait_for_item()
        wait_until(lambda: "–" in item.title, 10, "the first song")
        held = []
        for index in range(count):
            stage.lab.livefeed.song(station="zofra", artist=f"Artist {index}", title=f"Title {index}")
            if (index + 1) % every == 0:
                wait_until(lambda wanted=f"Title {index}": wanted in item.title, 30, "the last song")
                held.append(_held(radio))
        _show(stage, f"{count} live songs", held, every)


def _switches(stage, count=200, every=5):
    with stage.radio() as radio:
        radio.start("--play", STATIONS[0])
        held = []
        for index in range(count):
            station = STATIONS[(index + 1) % len(STATIONS)]
            since = time.monotonic()
            assert radio.ask("--play", station).returncode == 0
            stage.ears.wait_for((station, "aac"), 15, since=since, seconds=0.1)
            if (index + 1) % every == 0:
                held.append(_held(radio))
                stage.ears.forget()
        _show(stage, f"{count} station switches", held, every)


def _discovery(stage, count):
    with stage.status_bar() as bar, stage.radio(with_log=True) as (radio, log):
        stage.lab.household.others(mode="refused")
        stage.lab.household.scene(scene="many", count=8)
        radio.start(headless=False, discovery=True)
        menu = bar.wait_for_item().menu
        wait_until(lambda: not radio.status()["scanning"], 60, "the first run", 0.2)
        held = measure.repeated_runs(radio, log, lambda: menu.choose(*RESCAN), count)
        _show(stage, f"{count} discovery runs", held, 1)


def run(stage, _seconds, runs=60):
    """Every row; `runs` searches for players, each of which takes about four seconds."""
    stage.heading("Endurance")
    _updates(stage)
    _switches(stage)
    _discovery(stage, runs)
