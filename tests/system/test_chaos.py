# SPDX-License-Identifier: GPL-3.0-or-later
"""Chaos in small: its list is the same for a seed, its judge sees each thing that does not hold, and a short seed holds."""

import json
import os
import signal
import sys
import time

import pytest
from conftest import ROOT

sys.path.insert(0, os.path.join(ROOT, "tests", "chaos"))

from faults import Faults  # noqa: E402
from judge import GROWTH, WARM, Judge, Violation  # noqa: E402
from plan import FAULTS, plan, read  # noqa: E402
from run import play  # noqa: E402

SHORT_SEED, SHORT_SECONDS = 4, 40


def test_a_seed_is_one_list_and_every_fault_of_it_can_be_brought_about(tmp_path):
    assert plan(7, 500) == plan(7, 500) != plan(8, 500)
    assert plan(7, 500)[:400] == plan(7, 1000)[:400]
    assert all(callable(getattr(Faults, name, None)) for name in FAULTS)
    seen = {step["fault"] for step in plan(1, 1000)}
    assert seen == {*FAULTS, "health"}, "a thousand faults are of every kind"
    kept = tmp_path / "report.jsonl"
    kept.write_text("".join(json.dumps({**step, "result": "held"}) + "\n" for step in plan(7, 30)))
    assert read(kept) == plan(7, 30)


class Player:
    """A media player that says one thing."""

    status = "Stopped"


class Ears:
    """What is heard."""

    what = None

    def now(self):
        """At this moment."""
        return self.what


class FakeRadio:
    """This process stands in for the program."""

    errors = []

    def __init__(self):
        self.process = self
        self.ended = None
        self.figures = dict.fromkeys(GROWTH, 1000)

    pid = property(lambda self: os.getpid())

    def poll(self):
        """Whether it has ended."""
        return self.ended

    def memory(self):
        """Kilobytes."""
        return self.figures["memory"]

    def threads(self):
        """How many."""
        return self.figures["threads"]

    def descriptors(self):
        """How many."""
        return self.figures["descriptors"]

    def ask(self, *_, **__):
        """A command that went well."""
        self.returncode = 0
        return self


class Around:
    """Surroundings in which everything is as the test says."""

    def __init__(self):
        self.radio, self.ears, self.media_player = FakeRadio(), Ears(), Player()
        self.broken, self.songs, self.wants_to_play = {}, {"joe": [(1, time.monotonic())]}, False
        self.healthy_since = time.monotonic()
        self.says = {"station": "joe", "playing": False, "buffering": False, "output": "here", "song": "Band joe – Song 1",
                     "scanning": False}
        self.late = 0.0

    def owed(self):
        """Seconds in which this thread was ready and did not run."""
        with open(f"/proc/self/task/{os.getpid()}/schedstat", encoding="ascii") as file:
            return int(file.read().split()[1]) / 1e9

    def status(self, _timeout):
        """What it says, after a while."""
        time.sleep(self.late)
        return dict(self.says)


@pytest.fixture
def around(monkeypatch):
    """With the patience of a test."""
    for name, seconds in {"ANSWER": 0.2, "SOUND": 0.5, "QUIET": 0.5, "TEXT": 0.5, "SOUND_AGAIN": 0.5}.items():
        monkeypatch.setattr(f"judge.{name}", seconds)
    return Around()


def test_what_holds_is_no_violation(around):
    judge = Judge(around)
    judge.after_fault()
    around.says.update(playing=True)
    around.ears.what, around.media_player.status = ("joe", "mp3"), "Playing"
    judge.after_fault()
    judge.after_health()
    around.says.update(buffering=True)
    around.ears.what = None
    judge.after_fault()


@pytest.mark.parametrize("what, seen", [
    (lambda a: setattr(a.radio, "ended", -11), "ended with -11"),
    (lambda a: setattr(a, "late", 0.4), "an answer took"),
    (lambda a: a.says.update(playing=True), "nothing is heard"),
    (lambda a: setattr(a.ears, "what", ("joe", "aac")), "is heard for"),
    (lambda a: (a.says.update(playing=True), setattr(a.ears, "what", ("qmusic", "aac"))), "is heard for"),
    (lambda a: a.says.update(song="Band qmusic – Song 1"), "joe shows"),
    (lambda a: (a.songs["joe"].append((2, time.monotonic() - 9)), setattr(a, "healthy_since", time.monotonic() - 9)),
     "too long"),
])
def test_each_thing_that_does_not_hold_is_seen(around, what, seen):
    judge = Judge(around)
    what(around)
    with pytest.raises(Violation, match=seen):
        judge.after_fault()


def test_a_busy_loop_is_seen(around, monkeypatch):
    judge = Judge(around)
    monkeypatch.setattr("judge.WORK", 0.1)
    monkeypatch.setattr("judge.SHARE", 0.0)
    until = time.thread_time() + 0.5
    while time.thread_time() < until:
        pass
    with pytest.raises(Violation, match="of processor"):
        judge.after_fault()


@pytest.mark.parametrize("what, seen", [
    (lambda a: setattr(a, "wants_to_play", True), "stopped to play"),
    (lambda a: (a.says.update(playing=True, buffering=True), setattr(a.media_player, "status", "Playing")), "no sound"),
    (lambda a: a.says.update(song="Loading..."), "not the newest song"),
])
def test_what_does_not_come_back_is_seen(around, what, seen):
    judge = Judge(around)
    what(around)
    with pytest.raises(Violation, match=seen):
        judge.after_health()


@pytest.mark.parametrize("what", GROWTH)
def test_what_grows_is_seen(around, what):
    judge = Judge(around)
    for _ in range(WARM + 1):
        judge.after_health()
    around.radio.figures[what] += GROWTH[what] + 1
    with pytest.raises(Violation, match=what):
        judge.after_health()


@pytest.mark.slow
@pytest.mark.measured
def test_a_short_seed_holds(binary):
    done, violations, judge = play(plan(SHORT_SEED, 60), binary, seconds=SHORT_SECONDS)
    print(f"{done} faults, worst: {judge.worst}")
    assert not violations
    assert done >= 10, "a machine this slow shows nothing"


@pytest.mark.slow
def test_a_program_that_hangs_is_a_violation(binary, monkeypatch):
    monkeypatch.setattr("judge.ANSWER", 1.0)
    hang = [{"n": 1, "fault": "hang", "with": {}, "then": 0.0}]
    monkeypatch.setattr(Faults, "hang", lambda self: os.kill(self._around.radio.pid, signal.SIGSTOP), raising=False)
    _, violations, _ = play(hang, binary)
    assert len(violations) == 1 and "no answer" in violations[0]["result"]
