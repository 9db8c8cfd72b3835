#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Chaos: a seeded list of faults around one running radio, and what must hold after each.

    tests/chaos/run.py --seed 1 --faults 1000 --report one.jsonl
    tests/chaos/run.py --replay one.jsonl --from 310 --to 330      some of it again
    tests/chaos/run.py --seed 1 --faults 40 --list                 only say what would be done

Every line of the report is one step with what came of it. Ends with 1 when anything did not hold; after a violation the radio
is started anew, so that one fault does not hide the next.
"""

import argparse
import json
import os
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
ROOT = os.path.dirname(os.path.dirname(HERE))
sys.dont_write_bytecode = True
os.environ["PATH"] += ":/usr/sbin:/sbin"
sys.path[:0] = [HERE, os.path.join(ROOT, "lab"), os.path.join(ROOT, "tests", "system")]

from plan import plan, read  # noqa: E402


def play(steps, binary, report=None, seconds=None):
    """Carry out steps; returns (steps done, violations, the judge). Ends early, between two steps, after `seconds`."""
    from faults import Faults  # pylint: disable=import-outside-toplevel
    from judge import Judge, Violation  # pylint: disable=import-outside-toplevel
    from surroundings import Surroundings  # pylint: disable=import-outside-toplevel
    from zofralab.control import ControlError  # pylint: disable=import-outside-toplevel
    violations, done, void = [], 0, 0
    until = time.monotonic() + seconds if seconds else None
    with Surroundings(binary) as around:
        faults, judge = Faults(around), Judge(around)
        for step in steps:
            if until and time.monotonic() > until:
                break
            began, result = time.monotonic(), "held"
            try:
                if step["fault"] == "health":
                    around.mend()
                    judge.after_health()
                    around.ears.forget()
                else:
                    faults.apply(step)
                    if step["fault"] == "killed":
                        judge.forget_work()
                    time.sleep(step["then"])
                    judge.after_fault()
                    done += 1
            except ControlError as error:
                if step["fault"] == "health" or "RuntimeError" not in str(error):
                    raise  # a lab that is gone or cannot be put right shows nothing
                # It refuses what makes no sense beside an earlier fault: to pause what is off the air.
                result = f"void: {error}"
                void += 1
            except Exception as error:  # what a step throws is a finding as well: no answer, no name, no item
                result = f"{type(error).__name__}: {error}"
                violations.append({**step, "result": result})
                print(f"{step['n']} {step['fault']} {step['with']}: {result}", flush=True)
                if not isinstance(error, Violation) or around.radio.process.poll() is not None:
                    print(around.radio.transcript()[-2000:], flush=True)
                _begin_anew(around, judge)
            if report:
                report.write(json.dumps({**step, "result": result, "took": round(time.monotonic() - began, 2),
                                         **({"held": judge.held[-1]} if step["fault"] == "health" and judge.held else {})}
                                        ) + "\n")
                report.flush()
        if void > (done + void) / 10:
            raise RuntimeError(f"{void} faults of {done + void} could not be brought about")
        return done, violations, judge


def _begin_anew(around, judge):
    around.radio.stop()
    around.mend()
    around.start()
    around.wants_to_play = False
    judge.forget_work()


def main():
    """Entry point."""
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--seed", type=int, default=1)
    parser.add_argument("--faults", type=int, default=1000)
    parser.add_argument("--seconds", type=float, help="end after that long")
    parser.add_argument("--replay", metavar="FILE", help="a report, or a list made from one")
    parser.add_argument("--from", dest="first", type=int, default=1)
    parser.add_argument("--to", dest="last", type=int, default=10**9)
    parser.add_argument("--report", metavar="FILE")
    parser.add_argument("--list", action="store_true")
    parser.add_argument("--binary", default=os.environ.get(
        "ZOFRA_BINARY", os.path.join(ROOT, "build", "release", "bin", "zofrazofra")))
    options = parser.parse_args()
    steps = read(options.replay) if options.replay else plan(options.seed, options.faults)
    steps = [step for step in steps if options.first <= step["n"] <= options.last]
    if options.list:
        for step in steps:
            print(json.dumps(step))
        return 0
    report = open(options.report, "w", encoding="utf-8") if options.report else None
    done, violations, judge = play(steps, os.path.abspath(options.binary), report, options.seconds)
    print(f"worst: {judge.worst}")
    print(f"{done} faults, {len(violations)} violations")
    return 1 if violations or not done else 0


if __name__ == "__main__":
    sys.exit(main())
