#!/usr/bin/python3
# SPDX-License-Identifier: GPL-3.0-or-later
"""Says what a finished program lacks of the protections that cmake/ZofraHardening.cmake asks for.

    tests/tools/hardening.py PROGRAM    one line for each that is missing; ends with 1 when there is any

Everything is read from the binary, so that a flag which the linker or a packager's environment takes back is noticed. Two
leave no certain trace there (how far stack pages are touched in order, and the level of the checked functions); these are read
from the compile commands of the build that the program came from, where there are any.
"""

import json
import os
import re
import subprocess
import sys

#: The instruction at which an indirect call may land.
LANDINGS = {"Advanced Micro Devices X86-64": b"\xf3\x0f\x1e\xfa", "AArch64": b"\x5f\x24\x03\xd5"}
FOLDERS = ("app", "stations", "playback", "metadata", "speakers", "platform")


def _readelf(path, *options):
    return subprocess.run(["readelf", "-W", *options, path], capture_output=True, text=True, check=True,
                          env={**os.environ, "LC_ALL": "C.UTF-8"}).stdout


def _commands(path):
    """The compile commands of our own production sources, or none."""
    root = os.path.dirname(os.path.dirname(os.path.abspath(path)))
    try:
        with open(os.path.join(root, "compile_commands.json"), encoding="utf-8") as file:
            commands = json.load(file)
    except FileNotFoundError:
        return []
    # Of the generated ones those count that gather ours; the others are the toolkit's business.
    return [one["command"] for one in commands
            if any(f"/{folder}/" in one["file"] for folder in FOLDERS)
            and ("/build/" not in one["file"] or "/Unity/" in one["file"]) and "/tests/" not in one["file"]]


def _section(path, name):
    """The bytes of one section."""
    found = re.search(re.escape(name) + r"\s+\w+\s+[0-9a-f]+ ([0-9a-f]+) ([0-9a-f]+)", _readelf(path, "-S"))
    if not found:
        return b""
    with open(path, "rb") as file:
        file.seek(int(found.group(1), 16))
        return file.read(int(found.group(2), 16))


def _landings(path, instruction):
    """How often the code begins something that may be jumped to."""
    return _section(path, ".text").count(instruction)


def _functions(path):
    """How many pieces of code there are, cold halves included: the entries of the table that unwinds them."""
    table = _section(path, ".eh_frame_hdr")
    return int.from_bytes(table[8:12], "little")


def missing(path):
    """What the program at `path` lacks, in words."""
    header, dynamic, segments = (_readelf(path, option) for option in ("-h", "-d", "-l"))
    symbols = _readelf(path, "--dyn-syms")
    flags = " ".join(re.findall(r"\(FLAGS(?:_1)?\)\s+(?:Flags: )?(.*)", dynamic))
    stack = re.search(r"GNU_STACK\s+(?:0x\w+\s+){5}(\S+)", segments)
    wanted = {
        "position independent (PIE)": "DYN" in header and "PIE" in flags,
        "read-only relocations (RELRO)": "GNU_RELRO" in segments,
        "immediate binding (BIND_NOW)": "BIND_NOW" in flags and "NOW" in flags.replace("BIND_NOW", ""),
        "a stack that is not executed": stack is not None and "E" not in stack.group(1),
        "no search path of its own for libraries": not re.search(r"\((RPATH|RUNPATH)\)", dynamic),
        "stack protector": "__stack_chk_fail" in symbols,
        "checked C library functions": re.search(r"\b__\w+_chk@GLIBC", symbols) is not None,
        "checked C++ library": "__glibcxx_assert_fail" in symbols,
    }
    machine = re.search(r"Machine:\s+(.*)", header).group(1)
    if machine in LANDINGS:
        # The note that a whole program has it is set by the linker only where the C library's start files have it too.
        wanted["control-flow protection"] = _landings(path, LANDINGS[machine]) > _functions(path) / 4
    commands = _commands(path)
    if commands and not any("-fsanitize" in one for one in commands):
        wanted["stack-clash protection in every source"] = all("-fstack-clash-protection" in one for one in commands)
        wanted["checked functions at level 3 in every source"] = all(
            re.findall(r"-[UD]_FORTIFY_SOURCE(?:=\d)?", one)[-1:] == ["-D_FORTIFY_SOURCE=3"] for one in commands)
    return [what for what, there in wanted.items() if not there]


def main():
    """Entry point."""
    if len(sys.argv) != 2:
        print("usage: hardening.py PROGRAM", file=sys.stderr)
        return 2
    lacking = missing(sys.argv[1])
    for what in lacking:
        print(f"{sys.argv[1]} lacks: {what}")
    return 1 if lacking else 0


if __name__ == "__main__":
    sys.exit(main())
