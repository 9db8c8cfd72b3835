#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs fuzz targets that are built in build/fuzz or build/fuzz-fast, and says what came of each: `./dev fuzz`.

    ./dev fuzz                          every target for half a minute
    ./dev fuzz --minutes 30             every target for half an hour
    ./dev fuzz --runs 10000000 topology some of them, until so many executions
    ./dev fuzz --keep                   afterwards, keep in fuzz/corpus what reaches code that nothing there reaches
    ./dev fuzz --fast --longest 512     many short inputs, in programs without sanitizers: what they assert and crashes still count

As many run beside each other as there are processors. What they find to be new is collected in that folder's corpus; a finding is
kept in its findings, and makes the end 1. Coverage is the share of the branches (edges) of our own code that is linked
into the target: parsers reach a small part of what the libraries hold, so compare a target with itself.
"""

import argparse
import os
import re
import subprocess
import sys
import time
from concurrent.futures import ThreadPoolExecutor

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
#: A process that has collected that much is not leaking yet, but is ended and begun anew where it stopped.
MEGABYTES = 1500


def targets():
    """{name: (longest input, dictionary or None)} of fuzz/targets."""
    found = {}
    with open(os.path.join(ROOT, "fuzz", "targets"), encoding="utf-8") as file:
        for line in file:
            if line.startswith("fuzz_"):
                name, longest, dictionary, *_ = line.split()
                found[name] = int(longest), None if dictionary == "-" else dictionary
    return found


def run(build, name, longest, dictionary, seconds, runs):
    """One target; returns its figures."""
    collected = os.path.join(build, "corpus", name)
    findings = os.path.join(build, "findings", "")
    for place in (collected, findings):
        os.makedirs(place, exist_ok=True)
    command = [os.path.join(build, "bin", name), f"-max_len={longest}", "-len_control=60", "-timeout=10",
               f"-rss_limit_mb={MEGABYTES}", "-print_final_stats=1", f"-artifact_prefix={findings}{name}-", "-reload=0",
               f"-use_value_profile={0 if build.endswith('-fast') else 1}"]
    if dictionary:
        command.append(f"-dict={os.path.join(ROOT, 'fuzz', 'dictionaries', dictionary)}")
    if seconds:
        command.append(f"-max_total_time={int(seconds)}")
    if runs:
        command.append(f"-runs={runs}")
    log = os.path.join(ROOT, "build", "logs", f"{name}.log")
    os.makedirs(os.path.dirname(log), exist_ok=True)
    began = time.monotonic()
    with open(log, "wb") as out:
        code = subprocess.run([*command, collected, os.path.join(ROOT, "fuzz", "corpus", name)], stdin=subprocess.DEVNULL,
                              stdout=out, stderr=out, check=False,
                              env={**os.environ, "LC_ALL": "C.UTF-8", "QT_QPA_PLATFORM": "offscreen"}).returncode
    with open(log, encoding="utf-8", errors="replace") as file:
        return {"name": name, "code": code, "seconds": time.monotonic() - began, "log": log, **figures(file.read())}


def figures(text):
    """Executions, edges reached and edges there are, from what libFuzzer says."""
    done = re.findall(r"^#(\d+)\s.*?cov: (\d+)", text, re.M)
    executed = re.search(r"stat::number_of_executed_units:\s+(\d+)", text)
    there = sum(int(count) for count in re.findall(r"Loaded \d+ modules\s+\((\d+) inline 8-bit counters\)", text))
    return {"executions": int(executed.group(1)) if executed else int(done[-1][0]) if done else 0,
            "edges": int(done[-1][1]) if done else 0, "there": there}


def keep(build, name):
    """Keep what reaches code that the kept corpus does not."""
    kept = os.path.join(ROOT, "fuzz", "corpus", name)
    before = len(os.listdir(kept))
    subprocess.run([os.path.join(build, "bin", name), "-merge=1", "-max_len=4096", kept,
                    os.path.join(build, "corpus", name)], stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL,
                   stderr=subprocess.DEVNULL, check=False)
    return len(os.listdir(kept)) - before


def main():
    """Entry point."""
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("targets", nargs="*", help="with or without fuzz_ before them (default: all)")
    parser.add_argument("--minutes", type=float, help="for each target")
    parser.add_argument("--runs", type=int, help="executions of each target")
    parser.add_argument("--jobs", type=int, default=os.cpu_count() or 1)
    parser.add_argument("--keep", action="store_true")
    parser.add_argument("--fast", action="store_true", help="the programs without sanitizers")
    parser.add_argument("--longest", type=int, default=1 << 30, help="bytes of an input, where that is less than the target's own")
    options = parser.parse_args()
    build = os.path.join(ROOT, "build", "fuzz-fast" if options.fast else "fuzz")
    known = targets()
    chosen = [name if name.startswith("fuzz_") else f"fuzz_{name}" for name in options.targets] or list(known)
    unknown = [name for name in chosen if name not in known]
    if unknown:
        parser.error(f"no target {unknown[0]}; there are {', '.join(known)}")
    seconds = (options.minutes or 0) * 60 or (0 if options.runs else 30)
    failed = []
    with ThreadPoolExecutor(max_workers=options.jobs) as pool:
        for one in pool.map(lambda name: run(build, name, min(known[name][0], options.longest), known[name][1], seconds,
                                             options.runs), chosen):
            share = 100 * one["edges"] / one["there"] if one["there"] else 0
            print(f"{one['name']:<22}{one['executions']:>12} executions{one['executions'] / max(one['seconds'], 0.1):>9.0f}/s"
                  f"{one['edges']:>7} of {one['there']} edges ({share:.0f} %)  {'ok' if one['code'] == 0 else 'FOUND'}", flush=True)
            if one["code"]:
                failed.append(one)
    if options.keep:
        for name in chosen:
            print(f"{name:<22}{keep(build, name)} inputs more kept")
    for one in failed:
        print(f"{one['name']} ended with {one['code']}: {one['log']}")
    return 1 if failed else 0


if __name__ == "__main__":
    sys.exit(main())
