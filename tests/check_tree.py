#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Checks what no compiler checks: licence lines, the direction of includes, where platform headers may stand, test names."""

import pathlib
import re
import subprocess
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
LICENCE = "SPDX-License-Identifier: GPL-3.0-or-later"
SOURCE = (".cpp", ".h", ".py", ".js", ".cmake", ".sh")

# What each folder may include, itself aside.
MAY_INCLUDE = {
    "platform": set(),
    "stations": {"platform"},
    "playback": {"platform", "stations"},
    "metadata": {"platform", "stations", "playback"},
    "speakers": {"platform", "stations", "playback"},
    "platform/linux": {"platform"},
}
# The core knows the language's library and the toolkit's plain values; everything else is the platform's.
CORE = ("stations", "playback", "metadata", "speakers")
CORE_KNOWS = re.compile(
    r"<(Q(Bit|Byte|Char|Collator|Date|Hash|Json|Latin1|List|Locale|Map|Meta|Regular|Set|Str|Text|Time|Unicode|Url|Uuid|"
    r"Variant|Xml|tGlobal|Random|Debug|Elapsed)\w*|expat\.h|[a-z_]+)>")
SUITE = re.compile(r"^TEST(?:_F|_P)?\(\s*(\w+),", re.MULTILINE)


def folder_of(path):
    parts = path.parts
    return "platform/linux" if parts[:2] == ("platform", "linux") else parts[0]


def main():
    listed = subprocess.run(["git", "ls-files"], cwd=ROOT, capture_output=True, text=True, check=True).stdout
    faults = []
    for name in listed.splitlines():
        path = pathlib.Path(name)
        if path.suffix not in SOURCE and path.name not in ("CMakeLists.txt", "dev"):
            continue
        text = (ROOT / path).read_text(encoding="utf-8")
        if LICENCE not in "\n".join(text.splitlines()[:4]):
            faults.append(f"{name}: no licence line")
        folder = folder_of(path)
        for suite in SUITE.findall(text):
            if not (suite.endswith("Test") and path.stem.endswith("Test")):
                faults.append(f"{name}: the suite {suite} and its file are named after what they test, with Test behind it")
        if path.suffix not in (".cpp", ".h") or folder not in MAY_INCLUDE:
            continue
        for number, line in enumerate(text.splitlines(), 1):
            found = re.match(r'#include "([^"]+)/[^/"]+"', line)
            if found:
                target = found.group(1)
                target = "platform/linux" if target.startswith("platform/linux") else target.split("/")[0]
                if target != folder and target not in MAY_INCLUDE[folder]:
                    faults.append(f"{name}:{number}: {folder}/ may not include {target}/")
            system = re.match(r"#include (<[^>]+>)", line)
            if system and folder in CORE and not CORE_KNOWS.fullmatch(system.group(1)):
                faults.append(f"{name}:{number}: {folder}/ may not know {system.group(1)}")
    for fault in faults:
        print(fault)
    return 1 if faults else 0


if __name__ == "__main__":
    sys.exit(main())
