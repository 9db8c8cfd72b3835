# SPDX-License-Identifier: GPL-3.0-or-later
"""Players fetch what they are given from the lab's broadcaster, as listeners of it."""

import time

import pytest

from household_support import Visitor, eventually, make_stranger
from zofralab.stations import STATIONS

BEAM = "10.77.0.11"


@pytest.fixture
def visitor(lab):
    """A controller in the program's namespace."""
    stranger = make_stranger(lab)
    yield Visitor(stranger)
    stranger.close()


def give(visitor, uri):
    done = visitor.act(BEAM, "SetAVTransportURI", CurrentURI=uri, CurrentURIMetaData="")
    return done.status, visitor.act(BEAM, "Play", Speed=1).status


def test_every_stations_stream_is_fetched_and_counted(lab, visitor):
    for station in STATIONS:
        host = f"{station.raw.replace('_', '-')}-mp3.streams.zofra.test"
        assert give(visitor, f"x-rincon-mp3radio://{host}{station.mp3_path}") == (200, 200)
        eventually(lambda: lab.household.player(player=BEAM)["stream"]["bytes_now"] > 16_000, station.raw)
        stream = lab.household.player(player=BEAM)["stream"]
        assert stream["url"] == f"http://{host}{station.mp3_path}" and stream["error"] == ""
        assert stream["content_type"] == "audio/mpeg"
        began, first = time.monotonic(), stream["bytes_now"]
        time.sleep(1.0)
        rate = (lab.household.player(player=BEAM)["stream"]["bytes_now"] - first) / (time.monotonic() - began)
        assert rate > 4000, "it plays at the speed of sound, or starts with a burst"


def test_the_broadcaster_counts_the_player_until_it_stops(lab, visitor):
    def listeners():
        return lab.icecast.listeners()["mp3"].get("/zofra.mp3", 0)
    eventually(lambda: listeners() == 0, "the listeners of before to be gone")
    give(visitor, "x-rincon-mp3radio://zofra-mp3.streams.zofra.test/zofra.mp3")
    eventually(lambda: listeners() == 1, "a listener more")
    assert visitor.act(BEAM, "Stop").status == 200
    eventually(lambda: listeners() == 0, "a listener less")


def test_a_stream_only_behind_tls_is_fetched_after_the_plain_one_failed(lab, visitor):
    give(visitor, "x-rincon-mp3radio://zofra-mp3.streams.zofra.test:443/zofra.mp3")
    eventually(lambda: lab.household.player(player=BEAM)["stream"]["bytes_now"] > 16_000, "bytes over TLS")
    assert lab.household.player(player=BEAM)["stream"]["url"] == "https://zofra-mp3.streams.zofra.test:443/zofra.mp3"


def test_names_that_nobody_knows_are_an_error_of_the_player(lab, visitor):
    assert give(visitor, "x-rincon-mp3radio://nobody.streams.zofra.test/x.mp3") == (200, 200)
    eventually(lambda: lab.household.player(player=BEAM)["transport"]["status"] == "ERROR_OCCURRED", "the error")
    assert "no such name" in lab.household.player(player=BEAM)["stream"]["error"]
