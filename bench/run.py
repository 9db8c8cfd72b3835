#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Measures the budgets in the lab, side by side with other players, in one run: `./dev bench`.

Nothing here passes or fails, but for --check. Goal, best peer and floor stand beside each figure; docs/performance.md says what
the figures are.
"""

import argparse
import os
import sys

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.dont_write_bytecode = True
sys.path[:0] = [os.path.join(ROOT, name) for name in ("bench", "lab", "tests/system")]

import check  # noqa: E402
import costs  # noqa: E402
import endurance  # noqa: E402
import faults  # noqa: E402
import first_build  # noqa: E402
import latency  # noqa: E402
import parsers  # noqa: E402
import publish  # noqa: E402
import sizes  # noqa: E402
import speakers  # noqa: E402
from stage import Stage  # noqa: E402

CHAPTERS = {"latency": latency, "costs": costs, "speakers": speakers, "faults": faults, "parsers": parsers,
            "sizes": sizes, "build": first_build, "endurance": endurance}


def main():
    """Entry point."""
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("chapters", nargs="*", metavar="CHAPTER", help=f"of {', '.join(CHAPTERS)} (default: all)")
    parser.add_argument("--seconds", type=float, default=20.0, help="how long each cost is measured")
    parser.add_argument("--runs", type=int, default=60, help="searches for players in the endurance chapter")
    parser.add_argument("--share", type=float, default=1.0, help="of the repetitions of the endurance chapter")
    parser.add_argument("--only", action="append", choices=endurance.PARTS, help="this part of the endurance chapter")
    parser.add_argument("--publish", action="store_true", help="write the figures into docs/performance.md")
    parser.add_argument("--json", metavar="FILE", help="also write every figure there")
    parser.add_argument("--check", action="store_true", help="only count, and fail where something is a tenth worse")
    parser.add_argument("--baseline", action="store_true", help="only count, and keep that as what --check compares with")
    options = parser.parse_args()
    unknown = [name for name in options.chapters if name not in CHAPTERS]
    if unknown:
        parser.error(f"no chapter {unknown[0]!r}; there are {', '.join(CHAPTERS)}")
    load = os.getloadavg()[0]
    print(f"{os.cpu_count()} processors, load {load:.1f}" + (": figures of a crowded machine" if load > 1.5 else ""))
    with Stage() as stage:
        if options.check:
            return 0 if check.check(stage) else 1
        if options.baseline:
            return check.write(stage)
        for name in options.chapters or CHAPTERS:
            if name == "endurance":
                endurance.run(stage, options.seconds, options.runs, options.share, options.only or endurance.USUAL)
            else:
                CHAPTERS[name].run(stage, options.seconds)
        if options.json:
            stage.keep(options.json)
        if options.publish:
            publish.publish(stage.chapters, stage.pictures, load)
    return 0


if __name__ == "__main__":
    sys.exit(main())
