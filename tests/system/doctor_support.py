# SPDX-License-Identifier: GPL-3.0-or-later
"""What the tests of `--doctor` share: asking for it in the lab, and reading what it says."""

import json

import pytest

#: It has a limit of its own; a crowded machine has a longer one.
LIMIT = 60.0


class Diagnosis:
    """One run of `--doctor --json`."""

    def __init__(self, done):
        self.status = done.returncode
        assert done.stderr == "", done.stderr
        self.report = json.loads(done.stdout)
        self.checks = self.report["checks"]

    def of(self, area):
        """The checks of one area."""
        return [check for check in self.checks if check["area"] == area]

    def only(self, area):
        """The one check of an area."""
        found = self.of(area)
        assert len(found) == 1, (area, self.summary())
        return found[0]

    def problems(self):
        """The checks that are problems."""
        return [check for check in self.checks if check["status"] == "problem"]

    def assert_fine(self):
        """Nothing is wrong."""
        assert self.problems() == [] and self.status == 0 and self.report["status"] == "ok", self.summary()

    def assert_problem(self, area, *words, cure=(), count=1):
        """There are that many problems, all of them of this area, and the first is named by these words with this
        cure."""
        found = self.problems()
        assert [check["area"] for check in found] == [area] * count, self.summary()
        assert all(word.lower() in found[0]["text"].lower() for word in words), self.summary()
        assert found[0]["cure"] and all(word.lower() in found[0]["cure"].lower() for word in cure), self.summary()
        assert (self.status, self.report["status"], self.report["problems"]) == (1, "problem", count)
        return found[0]

    def summary(self):
        """For a failing test."""
        return "\n".join(f"{c['status']:8} {c['area']:10} {c['text']} | {c['cure']}" for c in self.checks)


class Doctor:
    """Asks for it in the session and the world of a radio."""

    def __init__(self, radio, lab):
        self.radio = radio
        self.lab = lab

    def run(self, *options, discovery=False, endpoints=None, json_text=True):
        """The finished command."""
        command = ["--doctor", *(["--json"] if json_text else []), "--endpoints", endpoints or self.lab.endpoints]
        return self.radio.ask(*command, *([] if discovery else ["--no-discovery"]), *options, timeout=LIMIT)

    def diagnose(self, *options, **how):
        """What it found."""
        return Diagnosis(self.run(*options, **how))


@pytest.fixture
def doctor(radio, lab):
    """The doctor of `radio`'s session, in which the program is not running."""
    return Doctor(radio, lab)
