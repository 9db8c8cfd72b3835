# SPDX-License-Identifier: GPL-3.0-or-later
"""What is left behind by much of the same: memory, threads and descriptors after thousands of repetitions, and after hours."""

import contextlib
import glob
import time

import long_run
import plot
from measure import cpu_seconds, wake_ups
from zofralab.household import measure
from zofralab.process import wait_until

RESCAN = ("Audio Output (…", "🔄 Search for Sonos and Zofra devices")
COUNTS = {"songs": 10_000, "stations": 1000, "menus": 1000, "panels": 500}
#: Hours, and how many times faster than a clock they pass for the program.
HOURS, SPEED = 8, 60
PLAYERS = 10
#: What is measured when nothing is named, and what else can be: the day takes eight hours.
USUAL = (*COUNTS, "hours", "searches")
PARTS = (*USUAL, "day")


def _show(stage, what, held, count, name, across="repetitions"):
    """A row and a plot; `across` is what `count` counts."""
    growth = long_run.grown(held)
    first, last = held[0], held[-1]
    each = "an hour" if across == "hours" else "each"
    stage.row(what, f"{growth['memory'] * 1024 / count:+.2f} B {each}, {first['memory']} -> {last['memory']} kB, threads "
              f"{first['threads']} -> {last['threads']}, files {first['descriptors']} -> {last['descriptors']}", "slope 0",
              bytes_each=growth["memory"] * 1024 / count, grown=growth, held=held)
    step = count / len(held)
    stage.draw(name, plot.lines(what, across, {
        "anonymous memory, kB": [(step * (i + 1), one["memory"]) for i, one in enumerate(held)],
        "threads": [(step * (i + 1), one["threads"]) for i, one in enumerate(held)],
        "descriptors": [(step * (i + 1), one["descriptors"]) for i, one in enumerate(held)]}))


def _repetitions(stage, share, what):
    """Songs, menus, panels or station changes."""
    count = max(long_run.SAMPLES, int(COUNTS[what] * share))
    with stage.status_bar() as bar, stage.radio() as radio:
        radio.write_settings()
        if what != "menus":
            radio.write_section("tray", mode="direct")
        radio.start(*(("--play", "qmusic") if what == "stations" else ()), headless=False)
        item = bar.wait_for_item()
        held = {
            "songs": lambda: long_run.songs(stage.lab, radio, item, count),
            "menus": lambda: long_run.menus(radio, item, count),
            "panels": lambda: long_run.panels(stage.peer, radio, stage.display, item, count),
            "stations": lambda: long_run.stations(stage.peer, radio, stage.ears, count),
        }[what]()
        name = {"songs": "live songs", "stations": "station changes while playing"}.get(what, f"{what} opened and closed")
        _show(stage, f"{count} {name}", held, count, f"long-{what}")


def _hours(stage, share):
    """Hours of waiting, with every poll and every search of them, for a program whose clocks run faster."""
    faketime = glob.glob("/usr/lib/*/faketime/libfaketimeMT.so.1")
    if not faketime:
        stage.row(f"{HOURS} hours", "not measured: libfaketime is not installed", "slope 0")
        return
    with stage.status_bar() as bar, stage.radio() as radio:
        stage.lab.household.others(mode="refused")
        radio.environment.update(LD_PRELOAD=faketime[0], FAKETIME=f"+0 x{SPEED}")
        radio.start(headless=False, discovery=True, wait=False)
        bar.wait_for_item()
        hours, held = HOURS * share, []
        rest = hours * 3600 / SPEED / long_run.SAMPLES
        time.sleep(long_run.WARM_SECONDS)
        for _ in range(long_run.SAMPLES):
            time.sleep(rest)
            stage.lab.livefeed.advance(station="zofra")
            held.append(long_run.hold(radio))
        asked, searched = len(stage.lab.onair.requests()), len(stage.lab.household.searches())
        _show(stage, f"{hours:g} simulated hours: {asked} polls, {searched} search datagrams", held, hours, "long-hours", "hours")


def _day(stage, hours):
    """Hours by the clock of playing, with a new song every third minute and a search for ten players every minute."""
    with stage.status_bar() as bar, stage.radio() as radio:
        stage.lab.household.others(mode="refused")
        stage.lab.household.scene(scene="many", count=PLAYERS)
        radio.start("--play", "zofra", headless=False, discovery=True)
        bar.wait_for_item()
        stage.ears.wait_for(("zofra", "aac"), 20)
        with stage.deaf():
            held, began = [], time.monotonic()
            cpu, woken = cpu_seconds(radio.pid), wake_ups(radio.pid)
            with contextlib.suppress(KeyboardInterrupt):  # who interrupts it sees what was held until then
                for minute in range(1, max(3, int(hours * 60)) + 1):
                    time.sleep(max(0.0, began + 60 * minute - time.monotonic()))
                    if minute % 3 == 0:
                        stage.lab.livefeed.song(station="zofra", artist=f"Artist {minute}", title=f"Title {minute}")
                    now = cpu_seconds(radio.pid), wake_ups(radio.pid)
                    held.append({**long_run.hold(radio), "cpu": 100 * (now[0] - cpu) / 60, "wake_ups": (now[1] - woken) / 60})
                    cpu, woken = now
        warm = held[1:]
        _show(stage, f"{len(held) / 60:.1f} hours of playing, from the second minute on", warm, len(held) / 60, "long-day", "hours")
        stage.draw("long-day-cost", plot.lines("What they cost", "hours", {
            "wake-ups a second": [((i + 2) / 60, one["wake_ups"]) for i, one in enumerate(warm)],
            "processor, %": [((i + 2) / 60, one["cpu"]) for i, one in enumerate(warm)]}))


def _discovery(stage, count):
    with stage.status_bar() as bar, stage.radio(with_log=True) as (radio, log):
        stage.lab.household.others(mode="refused")
        stage.lab.household.scene(scene="many", count=PLAYERS)
        radio.start(headless=False, discovery=True)
        menu = bar.wait_for_item().menu
        wait_until(lambda: not radio.status()["scanning"], 60, "the first run", 0.2)
        held = measure.repeated_runs(radio, log, lambda: menu.choose(*RESCAN), count)
        _show(stage, f"{count} discovery runs against {PLAYERS} players", held[len(held) // 3:], count - count // 3, "long-searches")


def run(stage, _seconds, runs=60, share=1.0, parts=PARTS):
    """Every row of these parts; `runs` searches for players, each of which takes about four seconds; `share` of everything
    else, the eight hours of playing included. Each part has a heading of its own, so that one can be measured and published without the others."""
    for part in parts:
        stage.heading(f"Endurance: {part}")
        if part == "hours":
            _hours(stage, share)
        elif part == "searches":
            _discovery(stage, runs)
        elif part == "day":
            _day(stage, HOURS * share)
        else:
            _repetitions(stage, share, part)
