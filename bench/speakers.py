# SPDX-License-Identifier: GPL-3.0-or-later
"""How long finding players takes, and what it costs."""

import statistics

from zofralab.household import measure


def run(stage, _seconds):
    """Every row."""
    stage.heading("Networked speakers")
    grouped, shown = [], []
    for _ in range(5):
        with stage.radio() as radio:
            stage.lab.household.others(mode="refused")
            figures = measure.found_and_grouped(stage.lab.household, radio)
            grouped.append(figures["grouped_s"])
            shown.append(figures["shown_s"])
    stage.row("32 players found and grouped", f"median {statistics.median(grouped):.2f}, worst {max(grouped):.2f} s",
              "2.55 s", grouped_s=grouped, floor="2.50 s of listening are fixed")
    stage.row("32 players shown as rooms", f"median {statistics.median(shown):.2f}, worst {max(shown):.2f} s", "",
              shown_s=shown)
    with stage.radio(with_log=True) as (radio, log):
        stage.lab.household.others(mode="refused")
        figures = measure.silent_subnet(stage.lab.household, radio, log)
        stage.row("silent /24 scanned", f"{figures['scan_s']:.2f} s, {figures['cpu_s']:.2f} s of processor",
                  "12.02 s", floor="12.00 s: 254 addresses, 32 at once, 1.5 s each", **figures)
