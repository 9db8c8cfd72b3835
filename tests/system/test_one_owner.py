# SPDX-License-Identifier: GPL-3.0-or-later
"""There is one running program, whatever the bus does: who comes to the name too late hands over and ends."""

import os
import signal

import pytest
from radio import NAME
from zofralab.bus import Peer
from zofralab.process import wait_until


@pytest.fixture
def pair(make_radio):
    """Two runs of the program, not started yet."""
    return make_radio(), make_radio()


def alive(pair):
    """Those that have not ended."""
    return [radio for radio in pair if radio.process.poll() is None]


def wait_for_one(pair, session):
    """Wait until one of both is left, and has the name; returns it."""
    wait_until(lambda: len(alive(pair)) == 1, 30, "one program to be left", 0.1)
    left = alive(pair)[0]
    ended = next(radio for radio in pair if radio is not left)
    assert ended.wait_end() == 0, ended.transcript()
    peer = Peer(session.session_bus.address)
    try:
        wait_until(lambda: peer.owner(NAME), 10, "the name to have an owner", 0.1)
        assert peer.process_id(NAME) == left.pid
    finally:
        peer.close()
    return left


def test_a_start_while_the_bus_hangs_hands_over_when_it_answers(pair, session, ears):
    first, second = pair
    first.start()
    os.kill(session.session_bus.pid, signal.SIGSTOP)
    try:
        second.start("--play", "qmusic", wait=False)
        ears.wait_for(("qmusic", "aac"), 20, second.started_at)
    finally:
        os.kill(session.session_bus.pid, signal.SIGCONT)
    assert wait_for_one(pair, session) is first
    first.wait_status(playing=True, station="qmusic")


def test_a_start_right_after_the_bus_has_come_back_takes_over(pair, session, ears):
    first, second = pair
    first.start("--play", "qmusic")
    ears.wait_for(("qmusic", "aac"), 20, first.started_at)
    session.session_bus.stop()
    session.session_bus.start()
    second.start("--play", "joe", wait=False)
    left = wait_for_one(pair, session)
    left.wait_status(playing=True, station="joe")


def test_who_plays_hands_its_playing_over(pair, session, ears):
    first, second = pair
    first.start("--play", "qmusic")
    ears.wait_for(("qmusic", "aac"), 20, first.started_at)
    session.session_bus.stop()
    session.session_bus.start()
    second.start(wait=False)
    wait_for_one(pair, session).wait_status(playing=True, station="qmusic")


def test_of_two_starts_before_there_is_a_bus_one_is_left_when_it_comes(pair, session, ears):
    first, second = pair
    session.session_bus.stop()
    first.start("--play", "qmusic", wait=False)
    ears.wait_for(("qmusic", "aac"), 20, first.started_at)
    second.start("--play", "joe", wait=False)
    wait_until(lambda: second.lines_like("station: .*"), 20, "the second to be up")
    session.session_bus.start()
    left = wait_for_one(pair, session)
    left.wait_status(playing=True)
