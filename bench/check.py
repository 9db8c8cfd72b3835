# SPDX-License-Identifier: GPL-3.0-or-later
"""`./dev bench --check`: what is counted against bench/baseline.json; a tenth worse fails. `--baseline` writes that file."""

import json
import os
import time

import counts

BASELINE = os.path.join(os.path.dirname(os.path.abspath(__file__)), "baseline.json")
#: A tenth, and beside it what a figure moves by itself: polls that fall into one run and not into another.
SHARE = 0.10
SLACK = {"instructions": 0, "allocations": 20, "wake_ups": 1.0}


def worse(baseline, now):
    """[(what, figure, before, now)] of everything that is worse than it may be, or not there any more."""
    found = []
    for what, figures in baseline.items():
        for figure, before in figures.items():
            value = now.get(what, {}).get(figure)
            if value is None or value > before * (1 + SHARE) + SLACK[figure]:
                found.append((what, figure, before, value))
    return found


def show(stage, now, baseline):
    """Rows, with what they were."""
    for what, figures in now.items():
        for figure, value in figures.items():
            before = baseline.get(what, {}).get(figure)
            change = f"{100 * (value / before - 1):+.1f} %" if before else "new"
            stage.row(f"{what}: {figure}", f"{value:,.1f}" if value < 1000 else f"{value:,.0f}", change, count=value)


def load():
    """The committed figures, or none."""
    try:
        with open(BASELINE, encoding="utf-8") as file:
            return json.load(file)
    except FileNotFoundError:
        return {}


def check(stage):
    """Rows for everything counted; True when nothing is worse."""
    stage.heading("Counted, against bench/baseline.json")
    began, baseline = time.monotonic(), load()
    now = counts.all_of(stage)
    show(stage, now, baseline)
    found = worse(baseline, now)
    for what, figure, before, value in found:
        print(f"worse: {what}: {figure} {before:,.1f} -> {'not counted' if value is None else f'{value:,.1f}'}")
    if not baseline:
        print("there is no bench/baseline.json; ./dev bench --baseline writes it")
    print(f"{len(found)} figures worse than a tenth, {time.monotonic() - began:.0f} s")
    return bool(baseline) and not found


def write(stage):
    """The new baseline: the better of two runs, so that a figure which was disturbed does not hide a loss."""
    stage.heading("Counted, for bench/baseline.json")
    runs = [counts.all_of(stage) for _ in range(2)]
    best = {what: {figure: round(min(run[what][figure] for run in runs), 2) for figure in figures}
            for what, figures in runs[0].items()}
    show(stage, best, load())
    with open(BASELINE, "w", encoding="utf-8") as file:
        json.dump(best, file, indent=1, sort_keys=True)
        file.write("\n")
