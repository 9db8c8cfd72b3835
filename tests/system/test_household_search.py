# SPDX-License-Identifier: GPL-3.0-or-later
"""Searches and announcements: the household answers as real players do, strangers included."""

import pytest

from household_support import (  # noqa: F401
    BROADCAST, MULTICAST, SEARCH, ZONE_PLAYER, eventually, house, household_lab, household_stranger, visitor,
)

TWELVE = [f"10.77.0.{n}" for n in range(11, 23)]


def search_for(target, mx=1):
    return SEARCH.replace(f"ST: {ZONE_PLAYER}", f"ST: {target}").replace("MX: 1", f"MX: {mx}")


def headers(text):
    return {k: v.strip() for k, _, v in (line.partition(":") for line in text.split("\r\n")[1:] if line)}


def test_every_player_answers_a_multicast_search_once_within_its_mx(house, household_stranger):
    heard = household_stranger.search(SEARCH, [MULTICAST], 1.6)
    assert sorted(sender for _, sender, _ in heard) == TWELVE
    assert max(after for *_, after in heard) < 1.1
    assert {headers(text)["LOCATION"] for text, *_ in heard} == {
        f"http://{ip}:1400/xml/device_description.xml" for ip in TWELVE
    }


def test_the_search_is_kept_byte_for_byte_with_how_it_came(house, household_stranger):
    household_stranger.search(SEARCH, [MULTICAST, BROADCAST, "10.77.0.15"], 0.2)
    kept = house.searches()
    assert [s["data"] for s in kept] == [SEARCH] * 3
    assert [s["kind"] for s in kept] == ["multicast", "broadcast", "unicast"]
    assert [s["well_formed"] for s in kept] == [True] * 3
    assert [s["answers"] for s in kept] == [12, 12, 1]
    assert kept[0]["peer"].startswith("10.77.0.2:")


def test_a_multicast_and_a_broadcast_search_are_two_searches(house, household_stranger):
    heard = household_stranger.search(SEARCH, [MULTICAST, BROADCAST], 1.6)
    assert sorted(sender for _, sender, _ in heard) == sorted(TWELVE * 2)


def test_a_player_asked_alone_answers_alone(house, household_stranger):
    heard = household_stranger.search(SEARCH, ["10.77.0.17"], 1.2)
    assert [sender for _, sender, _ in heard] == ["10.77.0.17"]


def test_the_answer_reads_as_that_of_a_player_of_its_generation(house, household_stranger):
    answers = {sender: text for text, sender, _ in household_stranger.search(SEARCH, [MULTICAST], 1.6)}
    new, old = house.player(player="10.77.0.15"), house.player(player="10.77.0.20")
    assert answers["10.77.0.15"].split("\r\n") == [
        "HTTP/1.1 200 OK",
        "CACHE-CONTROL: max-age = 1800",
        "EXT:",
        "LOCATION: http://10.77.0.15:1400/xml/device_description.xml",
        "SERVER: Linux UPnP/1.0 Sonos/85.0-64200 (ZPS18)",
        f"ST: {ZONE_PLAYER}",
        f"USN: uuid:{new['uuid']}::{ZONE_PLAYER}",
        f"X-RINCON-HOUSEHOLD: {new['household']}",
        "X-RINCON-BOOTSEQ: 12",
        "BOOTID.UPNP.ORG: 12",
        "X-RINCON-WIFIMODE: 0",
        "X-RINCON-VARIANT: 2",
        f"HOUSEHOLD.SMARTSPEAKER.AUDIO: {new['household']}",
        "",
        "",
    ]
    assert headers(answers["10.77.0.20"])["X-RINCON-HOUSEHOLD"] == old["household"] != new["household"]
    assert "BOOTID.UPNP.ORG" not in headers(answers["10.77.0.20"])
    assert "X-RINCON-HOUSEHOLD" not in headers(answers["10.77.0.22"])


def test_a_larger_mx_spreads_the_answers(house, household_stranger):
    house.scene(scene="many", count=32)
    heard = household_stranger.search(search_for(ZONE_PLAYER, mx=3), [MULTICAST], 3.5)
    times = sorted(after for *_, after in heard)
    assert len(times) == 32
    assert times[-1] > 1.2 and times[-1] < 3.1


@pytest.mark.parametrize(
    "target, answers_of_a_player",
    [("upnp:rootdevice", 1), ("urn:schemas-upnp-org:device:MediaRenderer:1", 1),
     ("urn:schemas-upnp-org:service:AVTransport:1", 1), ("urn:schemas-upnp-org:device:ZonePlayer:2", 0),
     ("urn:schemas-upnp-org:device:InternetGatewayDevice:1", 0)],
)
def test_strangers_searches_are_answered_where_they_apply(house, household_stranger, target, answers_of_a_player):
    house.scene(scene="one")
    heard = household_stranger.search(search_for(target), [MULTICAST], 1.2)
    assert len(heard) == answers_of_a_player
    assert all(headers(text)["ST"] == target for text, *_ in heard)
    assert all(headers(text)["USN"].endswith(f"::{target}") for text, *_ in heard)


def test_a_search_for_everything_is_answered_with_everything(house, household_stranger):
    house.scene(scene="one")
    uuid = house.player(player="Kitchen")["uuid"]
    targets = [headers(text)["ST"] for text, *_ in household_stranger.search(search_for("ssdp:all"), [MULTICAST], 1.2)]
    # Both embedded devices have a connection manager.
    assert len(targets) == len(set(targets)) + 1 > 20
    assert {"upnp:rootdevice", f"uuid:{uuid}", f"uuid:{uuid}_MR", ZONE_PLAYER} <= set(targets)


def test_a_search_for_one_id_is_answered_by_that_player(house, household_stranger):
    uuid = house.player(player="Dining Room")["uuid"]
    heard = household_stranger.search(search_for(f"uuid:{uuid}"), [MULTICAST], 1.2)
    assert [(headers(text)["USN"], sender) for text, sender, _ in heard] == [(f"uuid:{uuid}", "10.77.0.16")]


@pytest.mark.parametrize(
    "broken",
    [SEARCH.replace("M-SEARCH", "m-search"), SEARCH.replace("HTTP/1.1", "HTTP/1.0"), SEARCH.replace("MX: 1\r\n", ""),
     SEARCH.replace("MX: 1", "MX: 0"), SEARCH.replace("MX: 1", "MX: x"), SEARCH.replace("ssdp:discover", "ssdp:find"),
     SEARCH.replace("ST:", "NT:"), SEARCH.replace("* HTTP", "/ HTTP"), SEARCH.replace("\r\n", "\n"), "", "\r\n\r\n", "M-SEARCH"],
)
def test_what_is_no_search_is_not_answered(house, household_stranger, broken):
    house.scene(scene="one")
    assert household_stranger.search(broken, [MULTICAST], 0.3) == []
    assert [(s["data"], s["well_formed"], s["answers"]) for s in house.searches()] == [(broken, False, 0)]


@pytest.mark.parametrize(
    "sloppy",
    [SEARCH.rstrip("\r\n"), SEARCH.replace('"', ""), SEARCH.replace("239.255.255.250", "10.77.0.255")],
)
def test_a_sloppy_search_is_answered_but_not_called_well_formed(house, household_stranger, sloppy):
    house.scene(scene="one")
    assert len(household_stranger.search(sloppy, [MULTICAST], 1.2)) == 1
    assert [s["well_formed"] for s in house.searches()] == [False]


def test_silence_of_all_of_one_and_duplicates(house, household_stranger):
    house.ssdp(silent=True)
    assert household_stranger.search(SEARCH, [MULTICAST, BROADCAST, "10.77.0.15"], 1.2) == []
    house.ssdp(silent=False)
    house.switch(player="10.77.0.15", ssdp="silent")
    house.switch(player="10.77.0.16", ssdp="3")
    senders = [sender for _, sender, _ in household_stranger.search(SEARCH, [MULTICAST], 1.6)]
    assert "10.77.0.15" not in senders
    assert senders.count("10.77.0.16") == 3
    assert len(senders) == 13


def test_a_player_that_comes_back_says_so(house, household_stranger):
    house.scene(scene="one")
    household_stranger.listen()
    house.vanish(player="Kitchen")
    assert household_stranger.search(SEARCH, [MULTICAST], 1.2) == []
    back = house.come_back(player="10.77.0.11", ip="10.77.0.99")
    eventually(lambda: len(household_stranger.announcements()) > 15, "announcements")
    announced = household_stranger.announcements()
    assert {sender for _, sender in announced} == {"10.77.0.99"}
    first = headers(announced[0][0])
    assert announced[0][0].startswith("NOTIFY * HTTP/1.1\r\n")
    assert first["NTS"] == "ssdp:alive" and first["X-RINCON-BOOTSEQ"] == "13"
    assert back["ip"] == "10.77.0.99"
    assert first["LOCATION"] == "http://10.77.0.99:1400/xml/device_description.xml"


def test_a_router_answers_for_itself_for_players_or_with_noise(house, household_stranger, visitor):
    house.scene(scene="one")

    def from_router(mode):
        house.router(mode=mode)
        return [t for t, sender, _ in household_stranger.search(SEARCH, [MULTICAST], 1.2) if sender == "10.77.0.254"]

    assert [headers(t)["ST"] for t in from_router("stranger")] == ["upnp:rootdevice"]
    assert [headers(t)["ST"] for t in from_router("impostor")] == [ZONE_PLAYER]
    relayed = [headers(t)["LOCATION"] for t in from_router("relay")]
    assert relayed == ["http://10.77.0.11:1400/xml/device_description.xml"]
    assert len(from_router("noise")) == 4
    assert from_router("") == []
