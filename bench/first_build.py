# SPDX-License-Identifier: GPL-3.0-or-later
"""The first build of the program: from nothing, without a compile cache, as somebody has it who has just cloned the tree."""

import os
import resource
import subprocess
import tempfile
import time

from stage import ROOT


def _taken(command):
    """Seconds by the clock and of processors that `command` took."""
    before, began = resource.getrusage(resource.RUSAGE_CHILDREN), time.monotonic()
    subprocess.run(command, cwd=ROOT, env={**os.environ, "CCACHE_DISABLE": "1"}, check=True, stdin=subprocess.DEVNULL,
                   stdout=subprocess.DEVNULL)
    after = resource.getrusage(resource.RUSAGE_CHILDREN)
    return time.monotonic() - began, after.ru_utime + after.ru_stime - before.ru_utime - before.ru_stime


def run(stage, _seconds):
    """Every row."""
    stage.heading("First build of the program, no compile cache")
    with tempfile.TemporaryDirectory() as folder:
        for what, command in (("configure", ["cmake", "--preset", "release", "-B", folder, "-DZOFRA_TESTS=OFF"]),
                              ("build", ["cmake", "--build", folder, f"-j{os.cpu_count()}", "--target", "zofrazofra"])):
            clock, processors = _taken(command)
            stage.row(what, f"{clock:.0f} s, {processors:.0f} s of processors", "<= 240 s" if what == "build" else "",
                      seconds=clock, processors=processors)
