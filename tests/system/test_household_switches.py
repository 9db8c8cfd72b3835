# SPDX-License-Identifier: GPL-3.0-or-later
"""Players that misbehave on demand, and a network whose other addresses are silent or all taken."""

import time
import xml.etree.ElementTree as ElementTree

import pytest

from household_support import (  # noqa: F401
    AV_TRANSPORT, MULTICAST, PATHS, RENDERING, SEARCH, TOPOLOGY, envelope, eventually, house, household_lab,
    household_stranger, post, visitor,
)
from zofralab.control import ControlError

KITCHEN, DINING, OFFICE = "10.77.0.15", "10.77.0.16", "10.77.0.17"
GET = "GET /xml/device_description.xml HTTP/1.1\r\nHost: x\r\n\r\n"


def test_switches_are_per_player_and_end_with_a_reset(house, visitor, household_lab):
    house.switch(player=KITCHEN, status=503)
    assert visitor.get(KITCHEN).status == 503
    assert visitor.get(DINING).status == 200
    assert house.player(player=KITCHEN)["switches"] == {"status": 503}
    household_lab.reset()
    assert visitor.get(KITCHEN).status == 200
    house.switch(status=503)
    assert visitor.get(KITCHEN).status == visitor.get(DINING).status == 503


@pytest.mark.parametrize("wrong", [{"delya": 1}, {"delay": "long"}, {"silent": 1}, {"fail": []}])
def test_a_switch_that_does_not_exist_or_takes_something_else_is_refused(house, wrong):
    with pytest.raises(ControlError, match="switch"):
        house.switch(player=KITCHEN, **wrong)
    with pytest.raises(ControlError, match="no players called"):
        house.switch(player="Cellar", silent=True)
    with pytest.raises(ControlError, match="2 players called"):
        house.player(player="Kitchen")


def test_slow_answers_come_late(house, visitor):
    house.switch(player=KITCHEN, delay=0.6)
    assert visitor.get(KITCHEN).seconds >= 0.6
    assert visitor.act(KITCHEN, "GetTransportInfo").seconds >= 0.6
    assert visitor.get(DINING).seconds < 0.5


def test_silence_takes_a_request_and_says_nothing(house, visitor, household_stranger):
    house.switch(player=KITCHEN, silent=True)
    answer = visitor.get(KITCHEN, timeout=0.5)
    assert (answer.raw, answer.end) == ("", "timeout")
    assert [r["status"] for r in house.requests(player=KITCHEN)] == [0]
    eventually(lambda: house.counters()["open_now"] == 0, "the connection to be let go")
    assert KITCHEN not in [s for _, s, _ in household_stranger.search(SEARCH, [MULTICAST], 1.2)]


def test_refused_connections_and_back(house, visitor):
    house.switch(player=KITCHEN, refuse=True)
    assert visitor.get(KITCHEN).end == "errno 111"
    house.switch(player=KITCHEN, refuse=False)
    assert visitor.get(KITCHEN).status == 200


def test_garbage_cut_trickled_and_endless_answers(house, visitor):
    whole = visitor.get(KITCHEN).raw
    house.switch(player=KITCHEN, garbage=True)
    garbage = visitor.get(KITCHEN)
    assert garbage.status == 0 and len(garbage.raw) == 512
    house.switch(player=KITCHEN, garbage=False, close_after=300)
    assert visitor.get(KITCHEN).raw == whole[:300]
    house.switch(player=KITCHEN, close_after=0)
    assert (visitor.get(KITCHEN).raw, visitor.get(KITCHEN).end) == ("", "closed")
    house.switch(player=KITCHEN, close_after=20, trickle=0.03)
    trickled = visitor.get(KITCHEN)
    assert trickled.raw == whole[:20] and trickled.seconds >= 0.6
    house.switch(player=KITCHEN, close_after=-1, trickle=0.0, endless=True)
    endless = visitor.get(KITCHEN, timeout=3)
    assert endless.end == "endless" and "content-length" not in endless.headers and len(endless.raw) >= 4 << 20


def test_local_control_off_is_403_with_a_page_while_descriptions_stay(house, visitor):
    house.switch(player=KITCHEN, forbidden=True)
    for answer in (visitor.act(KITCHEN, "GetZoneGroupState", TOPOLOGY), visitor.act(KITCHEN, "Stop")):
        assert answer.status == 403 and answer.headers["content-type"] == "text/html" and "<html>" in answer.body
    assert visitor.get(KITCHEN).status == 200


def test_a_large_household_does_not_tell_its_topology(house, visitor):
    players = house.scene(scene="large")
    assert len(players) == 30
    answer = visitor.act(players[7]["ip"], "GetZoneGroupState", TOPOLOGY)
    assert (answer.status, answer.fault) == (500, 501)
    assert visitor.act(players[7]["ip"], "GetTransportInfo").status == 200


@pytest.mark.parametrize("status", [201, 204, 206])
def test_actions_answered_with_another_success_are_carried_out(house, visitor, status):
    house.switch(player=KITCHEN, action_status=status)
    answer = visitor.act(KITCHEN, "SetVolume", RENDERING, Channel="Master", DesiredVolume=77)
    assert answer.status == status and answer.body == ""
    assert ("content-length" in answer.headers) is (status != 204)
    assert house.player(player=KITCHEN)["volume"] == 77
    assert visitor.act(KITCHEN, "GetZoneGroupState", TOPOLOGY).status == 200


@pytest.mark.parametrize(
    "order, status, end",
    [(701, 500, "closed"), ("http:503", 503, "closed"), ("close", 0, "closed"), ("reset", 0, "reset"),
     ("silent", 0, "timeout")],
)
def test_one_action_fails_and_is_not_carried_out(house, visitor, order, status, end):
    house.switch(player=KITCHEN, fail={"SetVolume": order})
    body = envelope(RENDERING, "SetVolume", InstanceID=0, Channel="Master", DesiredVolume=77)
    request = post(PATHS[RENDERING], body, SOAPACTION=f'"{RENDERING}#SetVolume"')
    answer = visitor.send(KITCHEN, request, timeout=0.7)
    assert (answer.status, answer.end) == (status, end)
    assert house.player(player=KITCHEN)["volume"] == 25
    assert visitor.act(KITCHEN, "GetVolume", RENDERING, Channel="Master").status == 200
    assert [r["action"] for r in house.requests(action="SetVolume")] == ["SetVolume"]


@pytest.mark.parametrize(
    "form, sign, least",
    [("doctype", "<!DOCTYPE", 4000), ("huge", "xxxxxxxx", 4 << 20), ("deep", "<d><d><d>", 700_000),
     ("wide", 'a19999="1"', 200_000), ("cut", "<root", 1000)],
)
def test_hostile_descriptions(house, visitor, form, sign, least):
    house.switch(player=KITCHEN, description=form)
    answer = visitor.get(KITCHEN)
    assert answer.status == 200 and sign in answer.body and len(answer.body) >= least
    if form == "cut":
        with pytest.raises(ElementTree.ParseError):
            ElementTree.fromstring(answer.body)


@pytest.mark.parametrize("form", ["doctype", "deep", "cut", "nobody", "huge"])
def test_hostile_topologies_travel_in_good_envelopes(house, visitor, form):
    good = visitor.topology(KITCHEN)
    house.switch(player=KITCHEN, topology=form)
    told = visitor.topology(KITCHEN)
    assert told != good
    if form == "cut":
        with pytest.raises(ElementTree.ParseError):
            ElementTree.fromstring(told)
    assert visitor.topology(DINING).count("<ZoneGroupMember") == good.count("<ZoneGroupMember")


def test_a_player_without_power_is_not_there_and_comes_back_as_new(house, visitor, household_stranger):
    visitor.act(OFFICE, "SetAVTransportURI", CurrentURI="x-rincon-mp3radio://10.77.0.2:8000/radio",
                CurrentURIMetaData="")
    house.vanish(player=OFFICE)
    gone = visitor.get(OFFICE, timeout=1.0)
    assert gone.end in ("timeout", "errno 113") and gone.seconds >= 1.0
    assert OFFICE not in [s for _, s, _ in household_stranger.search(SEARCH, [MULTICAST], 1.2)]
    assert OFFICE in visitor.topology(KITCHEN)
    house.vanish(player=OFFICE, noticed=True)
    told = ElementTree.fromstring(visitor.topology(KITCHEN))
    assert OFFICE not in "".join(m.get("Location") for m in told.iter("ZoneGroupMember"))
    assert [d.get("ZoneName") for d in told.find("VanishedDevices")] == ["Office"]
    house.come_back(player=OFFICE)
    assert visitor.get(OFFICE).status == 200
    assert house.player(player=OFFICE)["transport"]["uri"] == ""
    assert OFFICE in visitor.topology(KITCHEN)


def test_a_player_at_another_address_is_the_same_player(house, visitor):
    before = house.player(player=DINING)
    after = house.come_back(player=DINING, ip="10.77.0.200")
    assert after["uuid"] == before["uuid"] and after["coordinator"] == after["uuid"]
    assert f"uuid:{after['uuid']}" in visitor.get("10.77.0.200").body
    assert visitor.get(DINING, timeout=0.5).end in ("timeout", "errno 113")
    assert 'Location="http://10.77.0.200:1400/' in visitor.topology(KITCHEN)
    with pytest.raises(ControlError, match="belongs to"):
        house.come_back(player=OFFICE, ip="10.77.0.200")


@pytest.mark.parametrize(
    "mode, end, most",
    [("absent", ("timeout", "errno 113"), 4), ("dropped", ("timeout",), 4), ("refused", ("errno 111",), 0.5)],
)
def test_addresses_that_are_nobodys(house, visitor, mode, end, most):
    house.others(mode=mode)
    began = time.monotonic()
    assert visitor.get("10.77.0.150", timeout=3.5).end in end
    assert most - 1.5 < time.monotonic() - began < most
    assert visitor.get(KITCHEN).status == 200, "players are not concerned"
    house.others(mode="absent")
    assert visitor.get(KITCHEN).status == 200
    assert visitor.get("10.77.0.151", timeout=0.3).end == "timeout"


def test_a_crowd_holds_every_connection_and_counts_them(house, visitor, household_stranger):
    house.others(mode="held")
    assert household_stranger.hold("10.77.0.200", 1400, 40, 0.3) == 40
    assert household_stranger.hold("10.77.0.1", 1400, 3, 0.1) == 3
    counters = house.counters()
    assert counters["most_at_once"] == 40 and counters["connections"] == 43 and counters["reached"] == 2
    eventually(lambda: house.counters()["open_now"] == 0, "the connections to end")
    assert visitor.get(KITCHEN).status == 200
    for mode, end in (("refused", "errno 111"), ("dropped", "timeout"), ("absent", "timeout")):
        house.others(mode=mode)
        assert visitor.get("10.77.0.200", timeout=0.5).end == end
        assert visitor.get(KITCHEN).status == 200


def test_connections_at_once_are_counted_for_the_house_and_each_player(house, visitor, household_stranger):
    household_stranger.hold(KITCHEN, 1400, 5, 0.2)
    visitor.get(DINING)
    counters = house.counters()
    kitchen = counters["per_player"][house.player(player=KITCHEN)["uuid"]]
    assert counters["most_at_once"] == kitchen["most"] == 5
    assert counters["per_player"][house.player(player=DINING)["uuid"]]["total"] == 1
    assert counters["requests"] == 1 and counters["statuses"] == {"200": 1}


@pytest.mark.parametrize("scene, count", [("empty", 0), ("one", 1), ("twelve", 12), ("mixed", 7), ("large", 30)])
def test_scenes_hold_what_they_say(house, scene, count):
    players = house.scene(scene=scene)
    assert len(players) == len({p["uuid"] for p in players}) == len({p["ip"] for p in players}) == count
    assert house.requests() == [] and house.searches() == []


def test_as_many_players_as_wanted_each_a_room(house, visitor):
    players = house.scene(scene="many", count=200)
    assert len({p["uuid"] for p in players}) == len({p["ip"] for p in players}) == 200
    assert len(ElementTree.fromstring(visitor.topology(players[199]["ip"])).findall(".//ZoneGroup")) == 200
    assert visitor.get(players[199]["ip"]).status == 200
    with pytest.raises(ControlError, match="1 to 200"):
        house.scene(scene="many", count=201)
    with pytest.raises(ControlError, match="no scene"):
        house.scene(scene="castle")


def test_owners_group_and_ungroup(house):
    leader = house.player(player="Living Room")["uuid"]
    house.group(player="Office", coordinator="Living Room")
    assert house.player(player="Office")["coordinator"] == leader
    house.ungroup(player="Office")
    assert house.player(player="Office")["coordinator"] == house.player(player="Office")["uuid"]
    with pytest.raises(ControlError, match="two households"):
        house.group(player="10.77.0.20", coordinator="Living Room")
