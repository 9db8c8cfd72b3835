#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Runs clang-tidy over the program's sources, as many at a time as there are processors.

    tidy.py BUILD [FILE...]

BUILD is a build folder that is up to date; without files it is all of them. Each finding is printed once, however many
files include the header that it is in, and the last line counts them. Exits with 1 when there is one, or when
clang-tidy could not do its work.

A file that was found clean is not looked at again while nothing has changed that the verdict rests on: the file, all
that it includes, its command line, the configuration and clang-tidy itself.
"""

import concurrent.futures
import functools
import hashlib
import json
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

OBJECT = re.compile(r" -o (\S+\.o) ")


def output_of(*command):
    return subprocess.run(command, cwd=ROOT, capture_output=True, text=True, check=True).stdout


def sources():
    return output_of("git", "ls-files", "--", *(f"{folder}/*.cpp" for folder in FOLDERS)).split()


@functools.lru_cache(maxsize=None)
def digest(path):
    return hashlib.sha256(path.read_bytes()).hexdigest()


class Clean:
    """Remembers, in the build folder, under which circumstances a file was found clean."""

    def __init__(self, build):
        self.build = build
        self.folder = build / "clean"
        self.folder.mkdir(exist_ok=True)
        self.common = output_of("clang-tidy", "--version") + digest(ROOT / ".clang-tidy")
        self.commands = {entry["file"]: entry["command"] for entry in
                         json.loads((build / "compile_commands.json").read_text(encoding="utf-8"))}
        self.includes = self.read_includes()
        self.used = set()

    def read_includes(self):
        """What each object was made from, as the last build noted it."""
        found, current = {}, None
        for line in output_of("ninja", "-C", str(self.build), "-t", "deps").splitlines():
            if line.startswith("    "):
                if current is not None:
                    current.append(line.strip())
            elif line:
                name, _, state = line.partition(": #deps")
                current = found.setdefault(name, []) if state.endswith("(VALID)") else None
        return found

    def key(self, name):
        """Nothing when it is not known what the file includes."""
        command = self.commands.get(str(ROOT / name), "")
        made = OBJECT.search(command)
        paths = self.includes.get(made.group(1)) if made else None
        if not paths:
            return None
        try:
            parts = [self.common, command, *(f"{path} {digest(self.build / path)}" for path in paths)]
        except OSError:
            return None
        return hashlib.sha256("\n".join(parts).encode()).hexdigest()

    def knows(self, key):
        self.used.add(key)
        return key is not None and (self.folder / key).exists()

    def remember(self, key):
        if key is not None:
            (self.folder / key).touch()

    def forget_others(self):
        for path in self.folder.iterdir():
            if path.name not in self.used:
                path.unlink()


def check(clean, name):
    """The findings in one file, each with the lines that explain it; and why it could not be checked, if so."""
    key = clean.key(name)
    if clean.knows(key):
        return [], None
    done = subprocess.run(["clang-tidy", "-p", str(clean.build), "--quiet", name], cwd=ROOT, capture_output=True,
                          text=True, check=False)
    findings = []
    for line in done.stdout.replace(f"{ROOT}/", "").splitlines():
        if FINDING.match(line):
            findings.append([line])
        elif findings:
            findings[-1].append(line)
    if done.returncode == 0 and not findings:
        clean.remember(key)
    if done.returncode == 0 or findings:
        return findings, None
    said = [line for line in (done.stdout + done.stderr).splitlines() if not CHATTER.match(line)]
    return [], f"{name}: clang-tidy ended with {done.returncode}\n" + "\n".join(said)


def main():
    if len(sys.argv) < 2:
        print(__doc__, file=sys.stderr)
        return 2
    clean = Clean(pathlib.Path(sys.argv[1]).resolve())
    names = sys.argv[2:] or sources()
    if not names:
        print("clang-tidy: there is nothing to check")
        return 1
    # The largest first, so that none is left for the end.
    names.sort(key=lambda name: -(ROOT / name).stat().st_size)
    seen, faulty, failed = set(), 0, 0
    with concurrent.futures.ThreadPoolExecutor(os.cpu_count()) as pool:
        for done, (findings, failure) in enumerate(pool.map(lambda name: check(clean, name), names), 1):
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
    if not sys.argv[2:]:
        clean.forget_others()
    print(f"clang-tidy: {len(seen)} finding{'' if len(seen) == 1 else 's'} in {faulty} of {len(names)} files"
          + (f", {failed} could not be checked" if failed else ""))
    return 1 if seen or failed else 0


if __name__ == "__main__":
    sys.exit(main())
