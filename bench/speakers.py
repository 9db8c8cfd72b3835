# SPDX-License-Identifier: GPL-3.0-or-later
"""How long finding players takes, and what it costs."""

import os
import statistics
import subprocess

from stage import ROOT
from zofralab.addresses import PROGRAM_INTERFACE
from zofralab.household import measure

GSSDP = os.path.join(ROOT, "tests", "system", "household_gssdp.py")
TARGET = "urn:schemas-upnp-org:device:ZonePlayer:1"
PLAYERS = 32


def _heard(stage):
    """Seconds until another library of the same protocol has heard of all players; it asks them nothing more."""
    stage.lab.reset()
    stage.lab.household.scene(scene="many", count=PLAYERS)
    with stage.other(["/usr/bin/python3", GSSDP, "count", PROGRAM_INTERFACE, TARGET, str(PLAYERS), "10"],
                     stdout=subprocess.PIPE) as process:
        return float(process.stdout.readline())


def run(stage, _seconds):
    """Every row."""
    stage.heading("Networked speakers")
    grouped, shown = [], []
    for _ in range(5):
        with stage.radio() as radio:
            stage.lab.household.others(mode="refused")
            figures = measure.found_and_grouped(stage.lab.household, radio, PLAYERS)
            grouped.append(figures["grouped_s"])
            shown.append(figures["shown_s"])
    heard = [_heard(stage) for _ in range(5)]
    stage.row(f"{PLAYERS} players found and grouped", f"median {statistics.median(grouped):.2f}, worst {max(grouped):.2f} s",
              "2.55 s", grouped_s=grouped, floor="2.50 s of listening are fixed",
              peer=f"GSSDP, which only hears of them, {statistics.median(heard):.2f} s")
    stage.row(f"{PLAYERS} players shown as rooms", f"median {statistics.median(shown):.2f}, worst {max(shown):.2f} s", "",
              shown_s=shown)
    with stage.radio(with_log=True) as (radio, log):
        stage.lab.household.others(mode="refused")
        figures = measure.silent_subnet(stage.lab.household, radio, log)
        stage.row("silent /24 scanned", f"{figures['scan_s']:.2f} s, {figures['cpu_s']:.2f} s of processor",
                  "12.02 s", floor="12.00 s: 254 addresses, 32 at once, 1.5 s each", **figures)
