# SPDX-License-Identifier: GPL-3.0-or-later
"""Playing in one room and in every room, as the players see it."""

import re

import pytest

from speakers_support import (  # noqa: F401
    BEAM, COMPANION, CONTROLLABLE, DINING, KITCHEN, OFFICE, OLD_BEDROOM, OLD_KITCHEN, acts, assert_request, binary,
    house, logged, rooms, stream_uri, system_log, tell, uri_arguments,
)
from zofralab.process import wait_until

ZOFRA = stream_uri("zofra", "/zofra.mp3")
QMUSIC = stream_uri("qmusic", "/qmusic.mp3")
#: Station, and the host and path of its address for players: Inside Radio's host is that of its other stream.
#: JOE's host has a port, which speaks TLS only.
URIS = [("zofra", ZOFRA), ("qmusic", QMUSIC), ("joe", stream_uri("joe", ":8443/joe.mp3")),
        ("zofra_class_x", stream_uri("zofra_class_x", "/zofra_classx.mp3")),
        ("radio_contact", stream_uri("radio_contact", "/radiocontact-mp3-192.mp3")),
        ("bel_rtl", stream_uri("bel_rtl", "/belrtl-mp3-192.mp3")),
        ("inside_radio", "x-rincon-mp3radio://inside-radio-aac.streams.zofra.test/cm96zpmrmm0uv"),
        ("sud_radio_belgique", stream_uri("sud_radio_belgique", "/sudradio-belgique")),
        ("sud_radio_hainaut", stream_uri("sud_radio_hainaut", "/sudradio-hainaut"))]


@pytest.fixture
def playing(radio, rooms, house):
    """The program with its rooms found, and the records of the search forgotten."""
    radio.start(discovery=True)
    rooms.wait_scanned()
    house.forget()
    return radio


@pytest.fixture
def menu(radio, rooms, house, status_bar):
    """The same with a status item: its menu. (Media keys belong to this computer's own sound.)"""
    radio.start(headless=False, discovery=True)
    rooms.wait_scanned()
    house.forget()
    return status_bar.wait_for_item().menu


def wait_playing(house, *ips):
    """Waits until these players read their streams."""
    for ip in ips:
        wait_until(lambda ip=ip: house.player(player=ip)["stream"]["bytes_now"] > 4096, 10, f"bytes at {ip}")
        assert house.player(player=ip)["state"] == "PLAYING"


def wait_action(house, action, count=1):
    """Waits until so many of these requests came; all of them. They need not have been carried out yet."""
    wait_until(lambda: len(house.requests(action=action)) >= count, 10, f"{count} of {action}")
    return house.requests(action=action)


def wait_volume(house, volume, players):
    """Waits until these players are that loud."""
    wait_until(lambda: {house.player(player=ip)["volume"] for ip in players} == {volume}, 5, f"volume {volume}")


def order(house):
    """Every action in the order of arrival, as (address, action)."""
    return [(r["ip"], r["action"]) for r in house.requests(method="POST")]


def test_playing_in_a_room_sets_the_stream_and_plays_to_the_letter(playing, house):
    tell(playing, "--output", "Living Room")
    wait_playing(house, BEAM)
    status = playing.wait_status(playing=True)
    assert status["output"] == house.player(player=BEAM)["uuid"] and status["output_title"] == "Living Room"
    assert order(house) == [(BEAM, "SetAVTransportURI"), (BEAM, "Play")]
    stream, play = house.requests(method="POST")
    assert_request(stream, "AVTransport", "SetAVTransportURI", uri_arguments(ZOFRA))
    assert_request(play, "AVTransport", "Play", "<InstanceID>0</InstanceID><Speed>1</Speed>")
    assert house.player(player=BEAM)["stream"]["url"] == "http://zofra-mp3.streams.zofra.test/zofra.mp3"


@pytest.mark.parametrize("station, uri", URIS)
def test_every_station_reaches_a_player(playing, house, station, uri):
    tell(playing, "--play", station, "--output", "Living Room")
    wait_playing(house, BEAM)
    assert acts(house, "SetAVTransportURI")[-1] == (BEAM, {
        "InstanceID": "0", "CurrentURI": uri, "CurrentURIMetaData": house.player(player=BEAM)["transport"]["metadata"]})
    assert house.player(player=BEAM)["stream"]["opened"] >= 1


def test_a_room_by_title_id_or_not_at_all(playing, house):
    tell(playing, "--output", house.player(player=OFFICE)["uuid"])
    wait_playing(house, OFFICE)
    tell(playing, "--output", "Bedroom (Zofra)")
    wait_playing(house, COMPANION)
    refused = playing.ask("--output", "Cellar")
    assert refused.returncode == 1 and len((refused.stdout + refused.stderr).splitlines()) == 1


def test_a_companion_is_spoken_to_at_the_paths_it_announces(playing, house):
    tell(playing, "--output", "Bedroom (Zofra)")
    wait_playing(house, COMPANION)
    stream, play = house.requests(method="POST")
    assert_request(stream, "AVTransport", "SetAVTransportURI", uri_arguments(ZOFRA), prefix="/upnp")
    assert_request(play, "AVTransport", "Play", "<InstanceID>0</InstanceID><Speed>1</Speed>", prefix="/upnp")


def test_a_player_led_by_another_leaves_its_group_first(playing, house):
    tell(playing, "--output", "Dining Room")
    wait_playing(house, DINING)
    assert order(house) == [(DINING, "BecomeCoordinatorOfStandaloneGroup"), (DINING, "SetAVTransportURI"),
                            (DINING, "Play")]
    assert_request(house.requests(method="POST")[0], "AVTransport", "BecomeCoordinatorOfStandaloneGroup",
                   "<InstanceID>0</InstanceID>")
    assert house.player(player=KITCHEN)["state"] == "STOPPED"


def test_a_room_of_two_players_is_led_by_the_smaller_id_and_joined_by_the_other(radio, rooms, house):
    players = house.scene(scene="mixed")
    small, large = sorted((p for p in players if p["room"] == "Salon"), key=lambda p: p["uuid"])
    assert large["coordinator"] == large["uuid"], "the scene has the other one lead"
    radio.start(discovery=True)
    rooms.wait_scanned()
    house.forget()
    tell(radio, "--output", "Salon")
    wait_action(house, "SetAVTransportURI", 2)
    wait_playing(house, small["ip"])
    assert order(house) == [(small["ip"], "BecomeCoordinatorOfStandaloneGroup"), (small["ip"], "SetAVTransportURI"),
                            (small["ip"], "Play"), (large["ip"], "SetAVTransportURI")]
    joining = house.requests(player=large["ip"], action="SetAVTransportURI")[0]
    assert_request(joining, "AVTransport", "SetAVTransportURI", uri_arguments(f"x-rincon:{small['uuid']}"))
    wait_until(lambda: house.player(player=large["ip"])["coordinator"] == small["uuid"], 5, "the follower")
    assert house.player(player=large["ip"])["state"] == "PLAYING"


def test_pausing_reaches_who_leads_now(radio, rooms, house, status_bar):
    players = house.scene(scene="mixed")
    small = min((p for p in players if p["room"] == "Salon"), key=lambda p: p["uuid"])
    radio.start(headless=False, discovery=True)
    rooms.wait_scanned()
    tell(radio, "--output", "Salon")
    wait_playing(house, small["ip"])
    radio.wait_status(playing=True)
    status_bar.wait_for_item().menu.choose("Stop Radio")
    radio.wait_status(playing=False)
    assert house.player(player=small["ip"])["state"] == "PAUSED_PLAYBACK"
    for request in house.requests(action="Pause"):
        assert_request(request, "AVTransport", "Pause", "<InstanceID>0</InstanceID>")


def test_pause_and_play_again_in_a_room(radio, menu, house):
    tell(radio, "--output", "Living Room")
    wait_playing(house, BEAM)
    radio.wait_status(playing=True)
    menu.choose("Stop Radio")
    radio.wait_status(playing=False)
    assert house.player(player=BEAM)["state"] == "PAUSED_PLAYBACK"
    assert [ip for ip, _ in acts(house, "Pause")] == [BEAM]
    assert acts(house, "Stop") == []
    menu.choose("Play Radio")
    radio.wait_status(playing=True)
    wait_until(lambda: house.player(player=BEAM)["stream"]["opened"] == 2, 10, "the stream again")


def test_a_failed_pause_still_counts_as_playing(radio, menu, house, system_log):
    tell(radio, "--output", "Living Room")
    wait_playing(house, BEAM)
    radio.wait_status(playing=True)
    house.switch(player=BEAM, fail={"Pause": 701})
    menu.choose("Stop Radio")
    system_log.wait_for(rf"\[Sonos\] SOAP Pause an {re.escape(BEAM)} fehlgeschlagen: HTTP 500")
    assert radio.status()["playing"]


def test_another_station_while_playing_is_sent_at_once(playing, house):
    tell(playing, "--output", "Living Room")
    wait_playing(house, BEAM)
    playing.wait_status(playing=True)
    tell(playing, "--play", "qmusic")
    wait_until(lambda: house.player(player=BEAM)["stream"]["url"].endswith("/qmusic.mp3"), 10, "the other station")
    wait_playing(house, BEAM)
    assert [a["CurrentURI"] for _, a in acts(house, "SetAVTransportURI")][-1] == QMUSIC
    assert house.player(player=BEAM)["transport"]["uri"] == QMUSIC


def test_everywhere_plays_one_group_of_players_and_each_companion(playing, house, system_log):
    tell(playing, "--output", "everywhere")
    ordinary = sorted((house.player(player=ip) for ip in CONTROLLABLE - {COMPANION}), key=lambda p: p["uuid"])
    leader = ordinary[0]
    wait_action(house, "SetAVTransportURI", len(CONTROLLABLE))
    wait_playing(house, leader["ip"], COMPANION)
    playing.wait_status(playing=True, output="everywhere", output_title="Everywhere (All Rooms)")
    given = dict(acts(house, "SetAVTransportURI"))
    assert set(given) == CONTROLLABLE
    assert {ip for ip, a in given.items() if a["CurrentURI"] == ZOFRA} == {leader["ip"], COMPANION}
    assert {a["CurrentURI"] for ip, a in given.items() if ip not in (leader["ip"], COMPANION)} == {
        f"x-rincon:{leader['uuid']}"}
    assert {ip for ip, _ in acts(house, "Play")} == {leader["ip"], COMPANION}
    assert not logged(system_log, r".*Wiedergabe nur auf.*"), "followers that cannot join do not count"


def test_players_of_the_leaders_household_follow_it_everywhere(radio, rooms, house):
    players = [p for p in house.scene(scene="mixed") if p["household"] and not p["invisible"]]
    radio.start(discovery=True)
    rooms.wait_scanned()
    tell(radio, "--output", "everywhere")
    leader = min(players, key=lambda p: p["uuid"])
    wait_playing(house, leader["ip"])
    wait_until(lambda: {house.player(player=p["uuid"])["coordinator"] for p in players} == {leader["uuid"]}, 10,
               "everyone to follow")
    assert {house.player(player=p["uuid"])["state"] for p in players} == {"PLAYING"}


def test_a_partial_start_is_said_once_and_counts_as_playing(playing, house, system_log):
    house.switch(player=COMPANION, fail={"Play": 701})
    tell(playing, "--output", "everywhere")
    system_log.wait_for(r"\[Sonos\] Wiedergabe nur auf 1 von 2 Ausgabegruppen gestartet\.")
    assert logged(system_log, r"\[Sonos\] SOAP Play .*") == [
        f"[Sonos] SOAP Play an {COMPANION} fehlgeschlagen: HTTP 500"]
    playing.wait_status(playing=True)


def test_no_start_at_all_is_not_playing(playing, house, system_log):
    house.switch(player=BEAM, fail={"SetAVTransportURI": 714})
    tell(playing, "--output", "Living Room")
    system_log.wait_for(r"\[Sonos\] Wiedergabe nur auf 0 von 1 Ausgabegruppen gestartet\.")
    assert acts(house, "Play") == []
    assert not playing.status()["playing"]


@pytest.mark.parametrize(
    "switches, said",
    [({"action_status": 204}, None), ({"action_status": 201}, "HTTP 201"), ({"action_status": 206}, "HTTP 206"),
     ({"status": 503}, "HTTP 503"), ({"refuse": True}, "HTTP 0"), ({"fail": {"SetAVTransportURI": "close"}}, "HTTP 0"),
     ({"fail": {"SetAVTransportURI": "reset"}}, "HTTP 0"), ({"fail": {"SetAVTransportURI": 800}}, "HTTP 500"),
     ({"garbage": True}, "HTTP 0"), ({"forbidden": True}, "HTTP 403")],
)
def test_what_counts_as_success(playing, house, system_log, switches, said):
    house.switch(player=BEAM, **switches)
    tell(playing, "--output", "Living Room")
    if said is None:
        wait_playing(house, BEAM)
        playing.wait_status(playing=True)
        assert not logged(system_log, r".*fehlgeschlagen.*")
    else:
        system_log.wait_for(rf"\[Sonos\] SOAP SetAVTransportURI an {re.escape(BEAM)} fehlgeschlagen: {said}")
        assert acts(house, "Play") == []
        assert not playing.status()["playing"]


def test_a_player_that_never_answers_fails_after_five_seconds(playing, house, system_log):
    house.switch(player=BEAM, fail={"SetAVTransportURI": "silent"})
    tell(playing, "--output", "Living Room")
    asked = wait_action(house, "SetAVTransportURI")[0]
    failed = system_log.wait_for(rf"\[Sonos\] SOAP SetAVTransportURI an {re.escape(BEAM)} fehlgeschlagen: HTTP 0")
    assert 4.5 < failed.at - asked["monotonic"] < 6


def test_volume_reaches_every_player_of_the_room_and_no_other(radio, rooms, house, bus):
    players = house.scene(scene="mixed")
    radio.start(discovery=True)
    rooms.wait_scanned()
    tell(radio, "--output", "Salon")
    salon = {p["ip"] for p in players if p["room"] == "Salon"}
    radio.wait_status(playing=True)
    radio.media_player(bus).volume = 0.37
    requests = wait_action(house, "SetVolume", 2)
    assert {r["ip"] for r in requests} == salon
    for request in requests:
        assert_request(request, "RenderingControl", "SetVolume",
                       "<InstanceID>0</InstanceID><Channel>Master</Channel><DesiredVolume>37</DesiredVolume>")
    wait_volume(house, 37, salon)


@pytest.mark.parametrize("wanted, sent", [(0.0, 0), (0.25, 25), (0.29, 29), (1.0, 100)])
def test_volume_everywhere_reaches_everyone_who_takes_commands(playing, house, bus, wanted, sent):
    tell(playing, "--output", "everywhere")
    playing.wait_status(playing=True)
    playing.media_player(bus).volume = wanted
    requests = wait_action(house, "SetVolume", len(CONTROLLABLE))
    assert {r["ip"] for r in requests} == CONTROLLABLE
    assert {r["arguments"]["DesiredVolume"] for r in requests} == {str(sent)}
    wait_volume(house, sent, CONTROLLABLE)


def test_volume_with_output_here_stays_here(playing, house, bus):
    playing.media_player(bus).volume = 0.5
    playing.wait_status(volume=0.5)
    assert house.requests(method="POST") == []


def test_coming_back_here_stops_everyone_who_takes_commands(playing, house):
    tell(playing, "--output", "Living Room")
    wait_playing(house, BEAM)
    playing.wait_status(playing=True)
    tell(playing, "--output", "here")
    playing.wait_status(output="here", playing=False)
    requests = wait_action(house, "Stop", len(CONTROLLABLE))
    assert {r["ip"] for r in requests} == CONTROLLABLE
    for request in requests:
        prefix = "/upnp" if request["ip"] == COMPANION else ""
        assert_request(request, "AVTransport", "Stop", "<InstanceID>0</InstanceID>", prefix)
    assert house.player(player=BEAM)["state"] == "STOPPED"


def test_stopping_everywhere_and_quitting_stop_the_players(radio, menu, house):
    tell(radio, "--output", "everywhere")
    wait_playing(house, COMPANION)
    radio.wait_status(playing=True)
    menu.choose("Stop Radio")
    radio.wait_status(playing=False)
    assert {r["ip"] for r in wait_action(house, "Stop", len(CONTROLLABLE))} == CONTROLLABLE
    menu.choose("Play Radio")
    wait_until(lambda: house.player(player=COMPANION)["state"] == "PLAYING", 10, "playing again")
    house.forget()
    assert radio.quit() == 0
    wait_until(lambda: house.player(player=COMPANION)["state"] == "STOPPED", 5, "the stop at quitting")


def test_this_computer_falls_silent_before_a_room_begins(radio, rooms, house, ears):
    radio.start("--play", "zofra", discovery=True)
    rooms.wait_scanned()
    ears.wait_for(("zofra", "aac"), 10)
    tell(radio, "--output", "Living Room")
    wait_playing(house, BEAM)
    asked = wait_action(house, "SetAVTransportURI")[0]["monotonic"]
    silent = ears.wait_for(None, 5, since=asked - 2)
    assert silent < asked + 0.3, "sound that was on its way may still be heard"
    assert ears.heard(asked + 0.3, asked + 1.5) == set()


def test_a_room_named_at_the_start_is_waited_for(radio, house):
    radio.start("--output", "Office", "--play", "joe", discovery=True)
    wait_playing(house, OFFICE)
    radio.wait_status(playing=True, station="joe", output_title="Office")


def test_a_room_that_disappears_keeps_its_title(playing, house, rooms):
    tell(playing, "--output", "Office")
    wait_playing(house, OFFICE)
    house.vanish(player=OFFICE, noticed=True)
    assert playing.status()["output_title"] == "Office"


def test_a_stream_that_a_player_cannot_get_is_the_players_affair(playing, house, lab):
    lab.icecast.stop_mount(station="zofra", codec="mp3")
    tell(playing, "--output", "Living Room")
    playing.wait_status(playing=True)
    wait_until(lambda: house.player(player=BEAM)["transport"]["status"] == "ERROR_OCCURRED", 10, "the player's error")
    assert "404" in house.player(player=BEAM)["stream"]["error"]
