# SPDX-License-Identifier: GPL-3.0-or-later
"""What `./dev bench --check` calls worse, and how it reads what callgrind counted."""

import json
import os
import sys

import pytest
from conftest import ROOT

sys.path.insert(0, os.path.join(ROOT, "bench"))

import check  # noqa: E402
import counts  # noqa: E402
import plot  # noqa: E402
import sizes  # noqa: E402

BEFORE = {"one song": {"instructions": 800_000, "allocations": 400}, "idle": {"wake_ups": 0.2}}


def now(**changed):
    """What was counted, with one figure changed: `now(one_song=("instructions", 900_000))`."""
    figures = json.loads(json.dumps(BEFORE))
    for what, (figure, value) in changed.items():
        figures[what.replace("_", " ")][figure] = value
    return figures


@pytest.mark.parametrize("what, figure, most", [("one_song", "instructions", 880_000), ("one_song", "allocations", 460),
                                                ("idle", "wake_ups", 1.22)])
def test_a_tenth_worse_fails_and_less_does_not(what, figure, most):
    assert check.worse(BEFORE, now(**{what: (figure, most)})) == []
    found = check.worse(BEFORE, now(**{what: (figure, most * 1.01)}))
    assert [(one, name) for one, name, _, _ in found] == [(what.replace("_", " "), figure)]


def test_what_is_not_counted_any_more_fails():
    assert check.worse(BEFORE, {"idle": {"wake_ups": 0.1}}) == [("one song", "instructions", 800_000, None),
                                                               ("one song", "allocations", 400, None)]


def test_the_kept_baseline_has_every_figure():
    assert {(what, figure) for what, figures in check.load().items() for figure in figures} == {
        *((what, figure) for what in ("start", "one song", "one menu", "one own menu", f"a search of {counts.PLAYERS} players")
          for figure in ("instructions", "allocations")), ("idle", "wake_ups"), ("playing", "wake_ups")}


def test_instructions_and_allocations_are_read_from_callgrinds_file(tmp_path):
    path = tmp_path / "callgrind.1"
    path.write_text("events: Ir\nfn=(1) main\n10 5\ncfn=(2) malloc\ncalls=3 10\n10 90\ncfn=(3) free\ncalls=9 10\n10 9\n"
                    "fn=(4) other\ncfn=(2)\ncalls=4 10\n10 9\ncfn=(5) realloc'2\ncalls=1 1\n1 1\ntotals: 12345\n")
    assert counts.read(path) == {"instructions": 12345, "allocations": 8}


def test_growth_in_proportion_has_the_exponent_one():
    assert round(sizes.exponent([(1, 7), (32, 320), (64, 640)]), 3) == 1
    assert round(sizes.exponent([(30, 900), (200, 40_000)]), 3) == 2


def test_a_plot_names_its_lines():
    svg = plot.lines("Songs", "songs", {"memory, kB": [(1, 5000), (2, 5010)], "threads": [(1, 7), (2, 7)]})
    assert svg.startswith("<svg") and "memory, kB (to 5,010)" in svg and svg.count("<path") == 3
