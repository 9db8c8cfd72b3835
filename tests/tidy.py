#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs clang-tidy over the program's sources, as many at a time as there are processors.

    tidy.py BUILD [FILE...]

BUILD holds compile_commands.json; without files it is all of them. Each finding is printed once, however many files
include the header that it is in, and the last line counts them. Exits with 1 when there is one, or when clang-tidy
could not do its work.
"""

import concurrent.futures
import os
import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
FOLDERS = ("stations", "playback", "speakers", "metadata", "platform", "app")
FINDING = re.compile(r"^\S.*?:\d+:\d+: (?:warning|error): .*\[[\w.,+-]+\]$")
# What it says of every file: how many warnings in the headers of others it has kept to itself.
CHATTER = re.compile(r"^\d+ (?:warnings?|errors?)(?: and \d+ errors?)? generated\.$|^Suppressed |^Use -header-filter")


def sources():
    listed = subprocess.run(["git", "ls-files", "--", *(f"{folder}/*.cpp" for folder in FOLDERS)],
                            cwd=ROOT, capture_output=True, text=True, check=True)
    return listed.stdout.split()


def check(build, name):
    """The findings in one file, each with the lines that explain it; and why it could not be checked, if so."""
    done = subprocess.run(["clang-tidy", "-p", build, "--quiet", name], cwd=ROOT, capture_output=True, text=True,
                          check=False)
    findings = []
    for line in done.stdout.replace(f"{ROOT}/", "").splitlines():
        if FINDING.match(line):
            findings.append([line])
        elif findings:
            findings[-1].append(line)
    if done.returncode == 0 or findings:
        return findings, None
    said = [line for line in (done.stdout + done.stderr).splitlines() if not CHATTER.match(line)]
    return [], f"{name}: clang-tidy ended with {done.returncode}\n" + "\n".join(said)


def main():
    if len(sys.argv) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    build = str(pathlib.Path(sys.argv[1]).resolve())
    names = sys.argv[2:] or sources()
    if not names:
        print("clang-tidy: there is nothing to check")
        return 1
    # The largest first, so that none is left for the end.
    names.sort(key=lambda name: -(ROOT / name).stat().st_size)
    seen, faulty, failed = set(), 0, 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for done, (findings, failure) in enumerate(pool.map(lambda name: check(build, name), names), 1):
            faulty += bool(findings)
            for finding in findings:
                if finding[0] not in seen:
                    seen.add(finding[0])
                    print("\n".join(finding), flush=True)
            if failure:
                failed += 1
                print(failure, flush=True)
            if sys.stderr.isatty():
                print(f"clang-tidy: {done} of {len(names)}", end="\r", file=sys.stderr, flush=True)
    print(f"clang-tidy: {len(seen)} finding{'' if len(seen) == 1 else 's'} in {faulty} of {len(names)} files"
          + (f", {failed} could not be checked" if failed else ""))
    return 1 if seen or failed else 0


if __name__ == "__main__":
    sys.exit(main())
