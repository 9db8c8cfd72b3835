# SPDX-License-Identifier: GPL-3.0-or-later
"""Sleep and waking up, long pauses, and how long a switch of stations keeps what it used."""

import time

import pytest
from zofralab.process import wait_until

ZOFRA = {"station": "zofra", "codec": "aac"}
AAC, MP3 = ("zofra", "aac"), ("zofra", "mp3")


def to_the_fallback(radio, ears, lab):
    """Play, and be on the MP3 stream while the AAC stream is healthy again."""
    radio.start("--play")
    ears.wait_for(AAC, 10, radio.started_at)
    lab.icecast.stop_mount(**ZOFRA)
    ears.wait_for(MP3, 20)
    lab.icecast.start_mount(**ZOFRA)
    return len(lab.icecast.connections(**ZOFRA))


def wake_up(logind):
    """The computer sleeps and wakes; returns the moment of waking."""
    logind.prepare_for_sleep(True)
    logind.prepare_for_sleep(False)
    return time.monotonic()


def test_two_seconds_after_waking_up_it_plays_on_the_aac_stream_again(logind, radio, ears, lab):
    before = to_the_fallback(radio, ears, lab)
    woken = wake_up(logind)
    ears.wait_for(AAC, 10, woken)
    connections = lab.icecast.connections(**ZOFRA)[before:]
    assert len(connections) == 1
    assert 1.95 <= connections[0]["opened"] - woken <= 2.5


def test_stopped_after_waking_up_it_stays_stopped(logind, radio, ears, lab, bus):
    before = to_the_fallback(radio, ears, lab)
    woken = wake_up(logind)
    radio.media_player(bus).call("Pause")
    ears.wait_recorded(woken + 5)
    assert not ears.heard(woken + 1.5, woken + 5)
    assert len(lab.icecast.connections(**ZOFRA)) == before
    assert not radio.status()["playing"]


def test_waking_up_while_stopped_does_nothing(logind, radio, ears, lab):
    radio.start()
    woken = wake_up(logind)
    ears.wait_recorded(woken + 4)
    assert not ears.heard(woken, woken + 4)
    assert lab.icecast.connections(station="*", codec="*") == []


def test_falling_asleep_alone_restarts_nothing(logind, radio, ears, lab):
    before = to_the_fallback(radio, ears, lab)
    logind.prepare_for_sleep(True)
    asleep = time.monotonic()
    ears.wait_recorded(asleep + 4)
    assert len(lab.icecast.connections(**ZOFRA)) == before


def test_a_login_manager_that_comes_back_is_listened_to_again(session, radio, ears, lab):
    from zofralab.bus import MockedLogind
    first = MockedLogind(session.system_bus).start()
    before = to_the_fallback(radio, ears, lab)
    first.stop()
    second = MockedLogind(session.system_bus).start()
    try:
        ears.wait_for(AAC, 10, wake_up(second))
        assert len(lab.icecast.connections(**ZOFRA)) == before + 1
    finally:
        second.stop()


@pytest.mark.slow
def test_after_a_pause_of_thirty_seconds_it_plays_the_live_edge(radio, ears, lab, bus):
    radio.start("--play")
    began = ears.wait_for(AAC, 10, radio.started_at)
    ears.wait_recorded(began + 2)
    player = radio.media_player(bus)
    player.call("Pause")
    paused = time.monotonic()
    ears.wait_recorded(paused + 20)
    # What goes over the network during a pause is bounded: nothing is open any more.
    assert not [c for c in lab.icecast.connections(**ZOFRA) if c["closed"] is None]
    lab.icecast.wear(**ZOFRA, of_station="joe", of_codec="aac")  # from now on the station sounds different
    ears.wait_recorded(paused + 30)
    again = time.monotonic()
    player.call("Play")
    heard = ears.wait_for(("joe", "aac"), 5, again)
    assert heard - again < 3
    assert AAC not in ears.heard(again, ears.recorded_until())


def test_a_short_pause_goes_on(radio, ears, bus):
    radio.start("--play")
    ears.wait_for(AAC, 10, radio.started_at)
    player = radio.media_player(bus)
    player.call("Pause")
    paused = time.monotonic()
    assert ears.wait_for(None, 3, paused, seconds=0.5) - paused < 1
    again = time.monotonic()
    player.call("Play")
    assert ears.wait_for(AAC, 5, again) - again < 2


@pytest.mark.slow
@pytest.mark.measured
def test_two_hundred_switches_leave_everything_where_it_was(radio, ears, bus, lab):
    radio.start("--play")
    ears.wait_for(AAC, 10, radio.started_at)

    def switch(count):
        names = ("qmusic", "joe", "bel_rtl", "zofra")
        for index in range(count):
            done = radio.ask("--play", names[index % len(names)])
            assert done.returncode == 0, done.stderr
    switch(40)  # libraries and caches are loaded now
    ears.wait_for(AAC, 10)
    held = [settled(radio, lab)]
    for _ in range(2):
        switch(100)
        ears.wait_for(AAC, 10)
        held.append(settled(radio, lab))
    print("threads, descriptors, own memory in kB:", *held)
    assert held[-1][0] <= held[0][0]
    # Connections that are kept for the next question come and go, and the heap of a crowded machine wanders by
    # megabytes; a leak grows in each stretch.
    stretches = list(zip(held, held[1:]))
    assert min(after[1] - before[1] for before, after in stretches) <= 1, "a descriptor every hundred switches"
    assert min(after[2] - before[2] for before, after in stretches) < 1500, "more than 15 kB a switch"


def settled(radio, lab):
    """Threads, descriptors and memory once only one stream is open."""
    wait_until(lambda: len([c for c in lab.icecast.connections(station="*", codec="*") if c["closed"] is None]) == 1,
               20, "old streams to be closed")
    lowest = [radio.threads(), radio.descriptors(), radio.memory()]
    deadline = time.monotonic() + 8
    while time.monotonic() < deadline:
        lowest = [min(pair) for pair in zip(lowest, (radio.threads(), radio.descriptors(), radio.memory()))]
        time.sleep(0.25)
    return lowest
