# SPDX-License-Identifier: GPL-3.0-or-later
"""What SECURITY.md says is shown by tests that are there."""

import glob
import os
import re

from conftest import ROOT


def text_of(*patterns):
    """All files of these patterns."""
    names = [name for pattern in patterns for name in glob.glob(os.path.join(ROOT, pattern), recursive=True)]
    return "\n".join(open(name, encoding="utf-8").read() for name in names)


def test_every_test_and_target_that_is_named_is_there():
    with open(os.path.join(ROOT, "SECURITY.md"), encoding="utf-8") as file:
        rows = [line for line in file if line.startswith("| ca") or line.startswith("| could")]
    named = {name for row in rows for name in re.findall(r"`(\w+)`", row.split("|")[-2])}
    assert len(rows) >= 20 and all("`" in row for row in rows), "every line names what shows it"
    there = set(re.findall(r"^def (test_\w+)", text_of("tests/system/test_*.py"), re.M))
    there |= set(re.findall(r"^TEST\w*\(\w+,\s*(\w+)\)", text_of("tests/**/*.cpp"), re.M))
    there |= set(re.findall(r"^(fuzz_\w+)", text_of("fuzz/targets"), re.M))
    assert not named - there
