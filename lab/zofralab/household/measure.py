# SPDX-License-Identifier: GPL-3.0-or-later
"""How long a program takes to find players, and what that costs it; measured from outside.

`house` are the switches of the household, `log` is a `systemlog.SystemLog` that the program writes to, `radio` a
program that is not started yet (`start`, `status`, `pid`, `lines`, `threads`, `descriptors` as in the system tests).
All times are `time.monotonic()`, which the house and the log share.
"""

from __future__ import annotations

import time
from typing import Any, Callable

from ..process import cpu_seconds, wait_until
from .systemlog import SystemLog

_BEGUN = r"\[Sonos\] .*: \d+ Sendeversuche, .*"
_SEARCHED = r"\[Sonos\] SSDP-Beschreibungen: .*"
_NOBODY = r"\[Sonos\] Keine erreichbaren Netzwerk-Player gefunden\."


def found_and_grouped(house: Any, radio: Any, count: int = 32) -> dict[str, float]:
    """Seconds from the first search datagram of a start until the last topology answer, and until the program names
    the rooms on standard output. Addresses that are nobody's refuse, so that the scan of a first run takes no time.
    """
    house.scene(scene="many", count=count)
    house.others(mode="refused")
    radio.start(discovery=True)

    def named() -> Any:
        return next((line for line in list(radio.lines) if line.text.startswith(f"rooms: {count} (")), None)

    shown = wait_until(named, 30, f"{count} rooms")
    begun = min(search["monotonic"] for search in house.searches())
    grouped = max(request["answered"] for request in house.requests(action="GetZoneGroupState"))
    counters = house.counters()
    return {
        "players": count,
        "grouped_s": grouped - begun,
        "shown_s": shown.at - begun,
        "requests": counters["requests"],
        "connections_at_once": counters["most_at_once"],
    }


def silent_subnet(house: Any, radio: Any, log: SystemLog) -> dict[str, float]:
    """Seconds and processor seconds of a scan of a /24 in which nobody says anything, without the search before it."""
    house.scene(scene="empty")
    house.others(mode="dropped")
    radio.start(discovery=True)
    begun = log.wait_for(_SEARCHED, 20)
    before = cpu_seconds(radio.pid)
    ended = log.wait_for(_NOBODY, 60)
    return {"scan_s": ended.at - begun.at, "cpu_s": cpu_seconds(radio.pid) - before}


def repeated_runs(radio: Any, log: SystemLog, again: Callable[[], None], count: int) -> list[dict[str, int]]:
    """What the running program holds after each of so many runs, each begun by `again` when the last has ended."""
    held = []
    since = time.monotonic()

    def ended() -> bool:
        nonlocal since
        since = time.monotonic()
        return not radio.status()["scanning"]
    for _ in range(count):
        again()
        # Or one that begins by itself the moment before, which lets nobody begin another: looked for from the last look on.
        log.wait_for(_BEGUN, 20, since)
        wait_until(ended, 60, "the end of a run", 0.1)
        held.append({"memory": own_memory(radio.pid), "threads": radio.threads(), "descriptors": radio.descriptors()})
    return held


def own_memory(pid: int) -> int:
    """Kilobytes that are this process's alone and that it has written to: what grows when something leaks.

    The proportional set size would change with every other program that shares its libraries.
    """
    with open(f"/proc/{pid}/smaps_rollup", encoding="ascii") as rollup:
        rows = dict(line.split(":", 1) for line in rollup if ":" in line)
    return int(rows["Private_Dirty"].split()[0])
