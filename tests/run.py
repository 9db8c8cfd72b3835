#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs the tests and ends with one line: `N passed, N failed`.

Every test program and pytest write a report; the counts come from there. A program that leaves none (it crashed or ran
out of time) counts as one failed test.
"""

import argparse
import json
import os
import pathlib
import subprocess
import sys
import time
import xml.etree.ElementTree as ElementTree
from concurrent.futures import ThreadPoolExecutor

from progress import Progress, run_pytest

ROOT = pathlib.Path(__file__).resolve().parent.parent
UNIT_TIMEOUT = 300
SYSTEM_TIMEOUT = 20 * 60
MEASURED_TIMEOUT = 10 * 60
#: System tests beside each other: they mostly wait.
JOBS = 4

# What the surroundings may set and the program must not inherit in a test.
UNWANTED = ("SSL_CERT_FILE", "SSL_CERT_DIR", "CURL_CA_BUNDLE", "DISPLAY", "WAYLAND_DISPLAY", "DBUS_SESSION_BUS_ADDRESS")


class Counts:
    """Passed, failed and skipped tests, and the names of those that failed."""

    def __init__(self):
        self.passed = self.failed = self.skipped = 0
        self.names = []

    def add_unit_report(self, path):
        # JSON, because names made from control characters are no XML.
        report = json.loads(path.read_text(encoding="utf-8", errors="replace"), strict=False)
        for case in (case for suite in report["testsuites"] for case in suite["testsuite"]):
            if case["status"] == "NOTRUN":
                continue
            if case.get("failures"):
                self.add_failure(f"{case['classname']}.{case['name']}")
            elif case["result"] == "SKIPPED":
                self.skipped += 1
            else:
                self.passed += 1

    def add_system_report(self, path):
        for case in ElementTree.parse(path).getroot().iter("testcase"):
            name = f"{case.get('classname')}.{case.get('name')}"
            if case.find("failure") is not None or case.find("error") is not None:
                self.add_failure(name)
            elif case.find("skipped") is not None:
                self.skipped += 1
            else:
                self.passed += 1

    def add_failure(self, name):
        self.failed += 1
        self.names.append(name)


def environment():
    env = {key: value for key, value in os.environ.items() if key not in UNWANTED}
    env.setdefault("LC_ALL", "C.UTF-8")
    env["QT_QPA_PLATFORM"] = "offscreen"
    return env


def run_unit(binary, reports, name):
    report = reports / f"{binary.name}.json"
    report.unlink(missing_ok=True)
    command = [str(binary), f"--gtest_output=json:{report}", "--gtest_brief=1"]
    if name:
        command.append(f"--gtest_filter=*{name}*")
    log = reports / f"{binary.name}.log"
    with open(log, "w", encoding="utf-8") as out:
        try:
            code = subprocess.run(command, stdout=out, stderr=subprocess.STDOUT, stdin=subprocess.DEVNULL,
                                  env=environment(), timeout=UNIT_TIMEOUT, check=False).returncode
        except subprocess.TimeoutExpired:
            code = "out of time"
    return binary, report, log, code


def unit_tests(build, reports, name, counts):
    binaries = sorted(path for path in (build / "bin").glob("*_test") if os.access(path, os.X_OK))
    if not binaries:
        counts.add_failure(f"no unit test programs in {build / 'bin'}")
    progress = Progress("Unit test programs")
    with ThreadPoolExecutor(max_workers=os.cpu_count() or 1) as pool:
        results = pool.map(lambda b: run_unit(b, reports, name), binaries)
        for done, (binary, report, log, code) in enumerate(results, 1):
            progress.update(done, len(binaries))
            before = counts.failed
            if report.exists():
                counts.add_unit_report(report)
            if code != 0 and counts.failed == before:
                counts.add_failure(f"{binary.name} ended with {code}")
            state = "ok" if counts.failed == before else "FAILED"
            progress.clear()
            print(f"{binary.name}: {state}", flush=True)
            if state != "ok":
                print(log.read_text(encoding="utf-8", errors="replace")[-6000:], flush=True)


def system_round(build, reports, name, counts, title, arguments, timeout):
    """One run of pytest over the system tests."""
    report = reports / f"system-{title}.xml"
    report.unlink(missing_ok=True)
    command = ["/usr/bin/python3", "-B", "-m", "pytest", "-v", "-p", "no:cacheprovider", f"--junitxml={report}",
               *arguments, str(ROOT / "tests" / "system")]
    if name:
        command += ["-k", name]
    env = {**environment(), "ZOFRA_BINARY": str(build / "bin" / "zofrazofra")}
    env.pop("QT_QPA_PLATFORM")
    log = reports / f"system-{title}.log"
    code = run_pytest(command, log, f"System tests, {title} (per cent)", timeout, env=env, cwd=ROOT)
    before = counts.failed
    if report.exists():
        counts.add_system_report(report)
    # 5: nothing matched the name, which is no failure when a name was given.
    if code not in (0, 5 if name else 0) and counts.failed == before:
        counts.add_failure(f"system tests ({title}) ended with {code}")
    said = log.read_text(encoding="utf-8", errors="replace").rstrip()
    print(said[-20000:] if counts.failed > before else said.splitlines()[-1].strip("= ") if said else "", flush=True)


def system_tests(build, reports, name, counts):
    """First the tests that only wait, several beside each other, then those that measure, alone."""
    system_round(build, reports, name, counts, "waiting",
                 ["-n", str(JOBS), "--dist", "loadgroup", "-m", "not measured"], SYSTEM_TIMEOUT)
    system_round(build, reports, name, counts, "measured", ["-m", "measured"], MEASURED_TIMEOUT)


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("which", choices=["unit", "system", "all"])
    parser.add_argument("--build", required=True, type=pathlib.Path)
    parser.add_argument("-k", dest="name")
    arguments = parser.parse_args()
    build = arguments.build.resolve()
    reports = build / "reports"
    reports.mkdir(parents=True, exist_ok=True)
    counts = Counts()
    started = time.monotonic()
    if arguments.which != "system":
        unit_tests(build, reports, arguments.name, counts)
    if arguments.which != "unit":
        system_tests(build, reports, arguments.name, counts)
    for failed in counts.names:
        print(f"failed: {failed}")
    print(f"{counts.skipped} skipped, {time.monotonic() - started:.0f} s")
    print(f"{counts.passed} passed, {counts.failed} failed")
    return 1 if counts.failed or not counts.passed else 0


if __name__ == "__main__":
    sys.exit(main())
