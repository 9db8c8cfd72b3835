# SPDX-License-Identifier: GPL-3.0-or-later
"""What was chosen last is what is heard, whatever time the players take: orders must not overtake each other."""

import time

import pytest

from speakers_support import (  # noqa: F401
    BEAM, COMPANION, CONTROLLABLE, KITCHEN, OFFICE, binary, house, logged, rooms, stream_uri, system_log, tell,
)
from zofralab.process import wait_until


@pytest.fixture
def playing(radio, rooms, house):
    """The program with its rooms found, and the records of the search forgotten."""
    radio.start(discovery=True)
    rooms.wait_scanned()
    house.forget()
    return radio


def order(house, ip):
    """Actions that a player was sent, in the order of arrival."""
    return [r["action"] for r in house.requests(player=ip, method="POST")]


def wait_sent(house, ip, action, count=1):
    wait_until(lambda: order(house, ip).count(action) >= count, 10, f"{count} of {action} at {ip}")


def wait_answered(house, ip):
    wait_until(lambda: all(r["answered"] for r in house.requests(player=ip, method="POST")), 15, f"answers of {ip}")


def wait_state(house, ip, state):
    wait_until(lambda: house.player(player=ip)["state"] == state, 10, f"{ip} {state}")


def test_here_before_the_first_answer_leaves_the_room_silent(playing, house):
    house.switch(player=BEAM, late={"SetAVTransportURI": 1.5})
    tell(playing, "--output", "Living Room")
    wait_sent(house, BEAM, "SetAVTransportURI")
    tell(playing, "--output", "here")
    wait_sent(house, BEAM, "Stop")
    assert not house.requests(player=BEAM, action="SetAVTransportURI")[0]["answered"], "at once"
    wait_answered(house, BEAM)
    time.sleep(0.5)
    assert order(house, BEAM) == ["SetAVTransportURI", "Stop"]
    assert playing.status()["playing"] is False


def test_a_play_that_a_stop_has_overtaken_is_stopped(playing, house):
    house.switch(player=BEAM, late={"Play": 1.5})
    tell(playing, "--output", "Living Room")
    wait_sent(house, BEAM, "Play")
    tell(playing, "--output", "here")
    wait_sent(house, BEAM, "Stop", 2)
    wait_answered(house, BEAM)
    wait_state(house, BEAM, "STOPPED")
    assert order(house, BEAM) == ["SetAVTransportURI", "Play", "Stop", "Stop"]
    assert playing.status()["playing"] is False


def test_quitting_during_a_start_silences_the_room(playing, house):
    house.switch(player=BEAM, late={"Play": 2.5})
    tell(playing, "--output", "Living Room")
    wait_sent(house, BEAM, "Play")
    assert playing.quit() == 0
    wait_sent(house, BEAM, "Stop", 2)
    wait_answered(house, BEAM)
    wait_state(house, BEAM, "STOPPED")


def test_the_last_of_two_quick_stations_plays(playing, house):
    tell(playing, "--output", "Living Room")
    playing.wait_status(playing=True)
    house.switch(player=BEAM, late={"SetAVTransportURI": 1.5})
    tell(playing, "--play", "joe")
    wait_sent(house, BEAM, "SetAVTransportURI", 2)
    house.switch(player=BEAM, late={})
    tell(playing, "--play", "qmusic")
    wanted = stream_uri("qmusic", "/qmusic.mp3")
    wait_until(lambda: wanted in house.requests(player=BEAM, action="SetAVTransportURI")[-1]["body"], 10, "the last one")
    wait_sent(house, BEAM, "Play", 2)
    wait_answered(house, BEAM)
    wait_until(lambda: house.player(player=BEAM)["stream"]["url"].endswith("/qmusic.mp3"), 10, "the last one's stream")
    wait_state(house, BEAM, "PLAYING")
    playing.wait_status(playing=True, station="qmusic")


def test_a_station_chosen_during_a_start_plays(playing, house):
    house.switch(player=BEAM, late={"SetAVTransportURI": 1.0})
    tell(playing, "--output", "Living Room")
    wait_sent(house, BEAM, "SetAVTransportURI")
    tell(playing, "--play", "joe")
    playing.wait_status(playing=True, station="joe", timeout=15)
    wait_answered(house, BEAM)
    wait_until(lambda: "/joe.mp3" in house.player(player=BEAM)["stream"]["url"], 10, "the new station's stream")


def test_another_room_ends_a_start_that_has_not_ended(playing, house):
    house.switch(player=BEAM, late={"Play": 1.0})
    tell(playing, "--output", "Living Room")
    wait_sent(house, BEAM, "Play")
    tell(playing, "--output", "Office")
    wait_state(house, OFFICE, "PLAYING")
    wait_sent(house, BEAM, "Stop")
    wait_answered(house, BEAM)
    assert house.player(player=BEAM)["state"] == "STOPPED"
    assert playing.status()["playing"] is True


def test_here_stops_a_room_that_has_not_been_found_again(radio, make_radio, rooms, house, system_log):
    radio.start(discovery=True)
    rooms.wait_scanned()
    assert radio.quit() == 0
    # The rooms of the last time are there at once; the run that would find them again goes on.
    house.forget()
    house.others(mode="absent")
    radio.start("--output", "Office", discovery=True)
    wait_state(house, OFFICE, "PLAYING")
    assert radio.status()["scanning"] is True
    tell(radio, "--output", "here")
    wait_state(house, OFFICE, "STOPPED")


def test_the_target_follows_a_room_whose_leader_changes(radio, rooms, house, status_bar, system_log):
    players = house.scene(scene="mixed")
    small, large = sorted((p for p in players if p["room"] == "Salon"), key=lambda p: p["uuid"])
    radio.start(headless=False, discovery=True)
    rooms.wait_scanned()
    tell(radio, "--output", "Salon")
    wait_state(house, large["ip"], "PLAYING")
    assert radio.status()["output"] == large["uuid"]
    menu = status_bar.wait_for_item().menu
    since = time.monotonic()
    menu.choose("Audio Output (…", "🔄 Search for Sonos and Zofra devices")
    radio.wait_status(60, output=small["uuid"], output_title="Salon")
    rooms.wait_scanned(since=since)
    house.forget()
    tell(radio, "--play", "joe")
    wait_sent(house, small["ip"], "Play")
    radio.wait_status(playing=True)
    wait_answered(house, small["ip"])
    menu.choose("Stop Radio")
    radio.wait_status(playing=False)
    assert house.player(player=small["ip"])["state"] == "PAUSED_PLAYBACK"


def test_everywhere_before_the_first_run_ends_plays_when_it_does(radio, house):
    radio.start(discovery=True)
    assert radio.status()["scanning"] is True
    tell(radio, "--output", "everywhere")
    assert radio.status()["output"] == "everywhere"
    wait_state(house, COMPANION, "PLAYING")
    radio.wait_status(playing=True, output="everywhere")


def test_everywhere_is_forgotten_when_something_else_is_chosen(radio, rooms, house, system_log):
    radio.start(discovery=True)
    tell(radio, "--output", "everywhere")
    tell(radio, "--output", "here")
    rooms.wait_scanned()
    time.sleep(0.5)
    assert house.requests(action="Play") == []


def test_an_unreachable_room_is_not_playing_and_here_works_meanwhile(playing, house):
    tell(playing, "--output", "Living Room")
    playing.wait_status(playing=True)
    house.switch(player=BEAM, silent=True)
    began = time.monotonic()
    tell(playing, "--play", "joe")
    playing.wait_status(8, playing=False)
    assert time.monotonic() - began < 6.5
    tell(playing, "--output", "Office")
    house.switch(player=OFFICE, silent=True)
    tell(playing, "--output", "here")
    playing.wait_status(2, output="here", playing=False)
    wait_sent(house, KITCHEN, "Stop")
    assert {r["ip"] for r in house.requests(action="Stop")} == CONTROLLABLE
