# SPDX-License-Identifier: GPL-3.0-or-later
"""The finished program has every protection, and the judge that says so misses none."""

import os
import subprocess
import sys

import pytest
from conftest import ROOT

sys.path.insert(0, os.path.join(ROOT, "tests", "tools"))

from hardening import missing  # noqa: E402

SOURCE = """
#include <cstdio>
#include <cstring>
#include <vector>
int one() { return 1; }
int two() { return 2; }
int three() { return 3; }
int four() { return 4; }
int five() { return 5; }
int six() { return 6; }
int main(int count, char** words) {
    char text[16];
    std::vector<int> numbers(static_cast<unsigned>(count));
    std::strcpy(text, words[0]);
    std::printf("%s %d\\n", text, numbers[static_cast<unsigned>(count) - 1]);
}
"""
#: What each flag, left out or turned around, takes away.
ALL = ("-O2", "-D_FORTIFY_SOURCE=3", "-D_GLIBCXX_ASSERTIONS", "-fstack-protector-strong", "-fcf-protection=full", "-fPIE",
       "-pie", "-Wl,-z,relro", "-Wl,-z,now", "-Wl,-z,noexecstack")
WITHOUT = {
    "-no-pie": "position independent", "-Wl,-z,norelro": "read-only relocations", "-Wl,-z,lazy": "immediate binding",
    "-Wl,-z,execstack": "a stack that is not executed", "-Wl,-rpath,/opt": "no search path",
    "-fcf-protection=none": "control-flow protection", "-fno-stack-protector": "stack protector", "-U_FORTIFY_SOURCE": "checked C library",
    "-U_GLIBCXX_ASSERTIONS": "checked C++ library",
}


def test_the_program_has_every_protection(binary):
    assert missing(binary) == []


@pytest.fixture(scope="module")
def made(tmp_path_factory):
    """Make the small program with all flags and one more."""
    place = tmp_path_factory.mktemp("hardening")
    (place / "small.cpp").write_text(SOURCE)

    def make(*more):
        path = place / "small"
        # What undoes a definition has to stand behind it.
        done = subprocess.run(["c++", *ALL, *more, "-o", path, place / "small.cpp"], capture_output=True, text=True,
                              check=False)
        assert done.returncode == 0, done.stderr
        return str(path)
    return make


def test_a_program_with_all_of_them_lacks_nothing(made):
    assert missing(made()) == []


@pytest.mark.parametrize("flag", WITHOUT)
def test_each_protection_that_is_taken_away_is_missed(made, flag):
    lacking = missing(made(flag))
    assert any(what.startswith(WITHOUT[flag]) for what in lacking), lacking
