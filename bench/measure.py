# SPDX-License-Identifier: GPL-3.0-or-later
"""What a running program costs, read from /proc, whole process trees included."""

import os
import time


def tree(pid):
    """The process and its descendants."""
    children = {}
    for entry in os.listdir("/proc"):
        if entry.isdigit():
            try:
                with open(f"/proc/{entry}/stat", encoding="ascii", errors="replace") as stat:
                    parent = int(stat.read().rsplit(")", 1)[1].split()[1])
            except OSError:
                continue
            children.setdefault(parent, []).append(int(entry))
    found, todo = [], [pid]
    while todo:
        one = todo.pop()
        found.append(one)
        todo += children.get(one, [])
    return found


def memory_mb(pid):
    """(anonymous memory, proportional set size) of the tree, in MB: what is its own alone, and with it its share of the files
    that it has mapped and others may have as well."""
    totals = {"Anonymous:": 0, "Pss:": 0}
    for one in tree(pid):
        try:
            with open(f"/proc/{one}/smaps_rollup", encoding="ascii") as file:
                for line in file:
                    name, _, rest = line.partition(" ")
                    if name in totals:
                        totals[name] += int(rest.split()[0])
        except OSError:
            continue
    return totals["Anonymous:"] / 1024, totals["Pss:"] / 1024


def cpu_seconds(pid):
    """User and system time of the tree so far."""
    total = 0.0
    for one in tree(pid):
        try:
            # Nanoseconds, where /proc/PID/stat only has hundredths of a second.
            for task in os.listdir(f"/proc/{one}/task"):
                with open(f"/proc/{one}/task/{task}/schedstat", encoding="ascii") as file:
                    total += int(file.read().split()[0]) / 1e9
        except OSError:
            continue
    return total


def wake_ups(pid):
    """Voluntary context switches of all threads of the tree so far: how often they slept, and so were woken."""
    total = 0
    for one in tree(pid):
        try:
            for task in os.listdir(f"/proc/{one}/task"):
                with open(f"/proc/{one}/task/{task}/status", encoding="ascii", errors="replace") as file:
                    total += next(int(line.split()[1]) for line in file if line.startswith("voluntary"))
        except (OSError, StopIteration):
            continue
    return total


def threads_and_descriptors(pid):
    """How many threads and open descriptors the process has."""
    return len(os.listdir(f"/proc/{pid}/task")), len(os.listdir(f"/proc/{pid}/fd"))


def cost(pid, seconds):
    """((anonymous, PSS) in MB, CPU in percent of a core, wake-ups per second) over a stretch of time."""
    start, cpu, woken = time.monotonic(), cpu_seconds(pid), wake_ups(pid)
    time.sleep(seconds)
    elapsed = time.monotonic() - start
    return memory_mb(pid), 100 * (cpu_seconds(pid) - cpu) / elapsed, (wake_ups(pid) - woken) / elapsed
