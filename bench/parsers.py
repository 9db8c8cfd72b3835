# SPDX-License-Identifier: GPL-3.0-or-later
"""The parsers, per byte, beside libraries that do the same work; built by ./dev bench with Google Benchmark."""

import json
import os
import subprocess

from stage import ROOT

PROGRAM = os.path.join(ROOT, "build", "release", "bin", "parser_bench")
REPETITIONS = 5


def run(stage, _seconds):
    """Every row: the median of several repetitions in turn, and their spread."""
    stage.heading("Parsers (medians of 5, all of them in turn)")
    if not os.access(PROGRAM, os.X_OK):
        stage.row("parsers", f"not measured: no {os.path.relpath(PROGRAM, ROOT)}", "")
        return
    done = subprocess.run([PROGRAM, "--benchmark_format=json", f"--benchmark_repetitions={REPETITIONS}",
                           "--benchmark_enable_random_interleaving=true", "--benchmark_min_time=0.1"],
                          capture_output=True, text=True, check=True)
    rows = {}
    for one in json.loads(done.stdout)["benchmarks"]:
        rows.setdefault(one["run_name"], {})[one.get("aggregate_name", "run")] = one
    least = None
    for name, found in rows.items():
        if "BigO" in found:
            growth = found["BigO"]["big_o"]
            stage.row(f"{name}: growth with the number", f"{growth} (fit {100 * found['RMS']['rms']:.0f} % off)", "<= N lgN")
            continue
        median, spread = found["median"], 100 * found["cv"]["cpu_time"]
        rate = median.get("bytes_per_second")
        if name == "treeByExpat":
            least = rate
        stage.row(name, f"{median['cpu_time'] / 1e3:.1f} us" + (f", {1e9 / rate:.1f} ns a byte" if rate else "") +
                  f", spread {spread:.0f} %", "", nanoseconds=median["cpu_time"], per_second=rate)
    if least and "tree" in rows:
        stage.row("tree, against a walk by expat", f"{least / rows['tree']['median']['bytes_per_second']:.1f} times as long", "")
