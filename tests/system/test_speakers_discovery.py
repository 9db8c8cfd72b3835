# SPDX-License-Identifier: GPL-3.0-or-later
"""Players are found by every means and shown as rooms as their owners know them."""

import json
import re

import pytest

from speakers_support import (  # noqa: F401
    ALL_TWELVE, BEAM, COMPANION, DINING, KITCHEN, OFFICE, OLD_BEDROOM, OLD_KITCHEN, RESCAN, SEARCH, Rooms,
    assert_request, binary, house, logged, rooms, system_log, tell,
)
from zofralab.process import wait_until

# Two kitchens of one make are told apart by any text; the order is that of name, then of the leader's id.
TWELVE = [("Bedroom (Sonos)", OLD_BEDROOM), ("Bedroom (Zofra)", COMPANION), ("Dining Room", DINING),
          (r"Kitchen (Sonos) – …", OLD_KITCHEN), ("Kitchen (Sonos) – …", KITCHEN), ("Living Room", BEAM),
          ("Office", OFFICE)]


def assert_twelve(status, house):
    """The rooms of the scene "twelve" as their owners expect them, with their ids and in their order."""
    shown = [(re.sub(r"– .+", "– …", room["title"]), room["id"], room["players"]) for room in status["rooms"]]
    assert shown == [(title, house.player(player=ip)["uuid"], 1) for title, ip in TWELVE]
    assert len({room["title"] for room in status["rooms"]}) == len(TWELVE), "no two titles are alike"


def test_twelve_players_of_two_owners_are_the_rooms_they_expect(radio, rooms, house, make_radio, tmp_path, system_log):
    radio.start(discovery=True)
    assert_twelve(rooms.wait_scanned(), house)
    radio.wait_line(r"rooms: 7 \(.*\)")
    assert radio.quit() == 0
    again = make_radio(str(tmp_path / "another-home"))
    since = system_log.entries[-1].at
    again.start(discovery=True)
    assert_twelve(Rooms(again, system_log).wait_scanned(since=since), house)


def test_the_search_is_well_formed_and_sent_once_each_way(radio, rooms, house):
    radio.start(discovery=True)
    rooms.wait_scanned()
    searches = house.searches()
    assert [(s["kind"], s["to"]) for s in searches] == [("multicast", "239.255.255.250"), ("broadcast", "10.77.0.255")]
    assert all(s["data"].encode("latin-1") == SEARCH and len(SEARCH) == 126 for s in searches)
    assert all(s["well_formed"] for s in searches)
    assert len({s["peer"] for s in searches}) == 1


def test_log_lines_of_a_run(radio, rooms, house, system_log):
    radio.start(discovery=True)
    rooms.wait_scanned()
    urls = sorted(f"http://{ip}:1400/xml/device_description.xml" for ip in ALL_TWELVE)
    assert system_log.texts() == [
        "[Sonos] home0: 2 Sendeversuche, 0 davon blockiert (letzter errno 0)",
        "[Sonos] home0: 12 SSDP-Antworten",
        "[Sonos] SSDP-Beschreibungen: [" + ", ".join(f'"{url}"' for url in urls) + "]",
    ]
    assert {entry.program for entry in system_log.entries} == {"zofrazofra"}


def test_a_log_that_hangs_holds_nothing_up(radio, house, system_log):
    system_log.hang()
    radio.start(discovery=True)
    wait_until(lambda: len(radio.status()["rooms"]) == 7, 30, "the rooms, though nobody takes a line of the log")
    assert radio.quit() == 0


def test_with_search_silenced_the_subnet_scan_finds_the_same(radio, rooms, house, system_log):
    house.ssdp(silent=True)
    radio.start(discovery=True)
    assert_twelve(rooms.wait_scanned(), house)
    assert "[Sonos] home0: 0 SSDP-Antworten" in system_log.texts()
    assert "[Sonos] SSDP-Beschreibungen: []" in system_log.texts()


def test_search_answers_that_come_twice_make_one_room(radio, rooms, house):
    house.switch(ssdp="3")
    radio.start(discovery=True)
    assert_twelve(rooms.wait_scanned(), house)


def test_topology_is_asked_for_to_the_letter(radio, rooms, house):
    radio.start(discovery=True)
    rooms.wait_scanned()
    asked = house.requests(action="GetZoneGroupState")
    assert sorted(r["ip"] for r in asked if r["status"] == 200) == [ip for ip in ALL_TWELVE if ip != COMPANION]
    for request in asked:
        assert_request(request, "ZoneGroupTopology", "GetZoneGroupState", "")


def test_an_empty_house_is_said_to_be_empty(radio, rooms, house, system_log):
    house.scene(scene="empty")
    radio.start(discovery=True)
    assert radio.status()["scanning"]
    status = rooms.wait_scanned()
    assert status["rooms"] == [] and not status["network_denied"]
    system_log.wait_for(r"\[Sonos\] Keine erreichbaren Netzwerk-Player gefunden\.")


def test_rooms_of_the_last_time_stay_while_nobody_answers(radio, rooms, house, make_radio, system_log):
    radio.start(discovery=True)
    shown = rooms.wait_scanned()["rooms"]
    assert radio.quit() == 0
    assert len(json.loads(_cached(radio))) == 7
    for ip in ALL_TWELVE:
        house.vanish(player=ip)
    since = system_log.entries[-1].at
    again = make_radio().start(discovery=True)
    assert again.status()["rooms"] == shown
    assert Rooms(again, system_log).wait_scanned(since=since + 0.001)["rooms"] == shown
    system_log.wait_for(r"\[Sonos\] Keine erreichbaren Netzwerk-Player gefunden\.", since=since)
    assert again.status()["rooms"] == shown


def _cached(radio):
    text = radio.setting("cached_sonos_rooms")
    assert text is not None, "the rooms are kept in the settings"
    # The settings format quotes a text that holds quotes.
    return text[1:-1].encode().decode("unicode_escape") if text.startswith('"') else text


def test_one_player_without_power_leaves_the_rest_alone(radio, rooms, house):
    house.vanish(player=KITCHEN)
    radio.start(discovery=True)
    status = rooms.wait_scanned()
    remaining = [house.player(player=ip)["uuid"] for _, ip in TWELVE if ip != KITCHEN]
    assert [room["id"] for room in status["rooms"]] == remaining


def test_a_player_at_another_address_is_the_same_room(radio, rooms, house, status_bar, system_log):
    radio.start(headless=False, discovery=True)
    before = rooms.wait_scanned()
    house.come_back(player=OFFICE, ip="10.77.0.123")
    since = system_log.entries[-1].at
    status_bar.wait_for_item().menu.choose(*RESCAN)
    after = rooms.wait_scanned(since=since + 0.001)
    assert [room["id"] for room in after["rooms"]] == [room["id"] for room in before["rooms"]]
    tell(radio, "--output", "Office")
    wait_until(lambda: house.player(player="10.77.0.123")["transport"]["uri"], 5, "the stream at the new address")


def test_a_large_household_shows_its_rooms_from_their_descriptions(radio, rooms, house):
    players = house.scene(scene="large")
    radio.start(discovery=True)
    assert rooms.titles(rooms.wait_scanned()) == [p["room"] for p in players]


def test_local_control_switched_off_shows_rooms_from_descriptions(radio, rooms, house, system_log):
    house.switch(forbidden=True)
    radio.start(discovery=True)
    titles = rooms.titles(rooms.wait_scanned())
    # Nobody says what is hidden; a sub is known by its name.
    assert "Living Room" in "".join(titles) and not any(t.startswith("Sub") for t in titles)
    tell(radio, "--output", house.player(player=BEAM)["uuid"])
    system_log.wait_for(rf"\[Sonos\] SOAP SetAVTransportURI an {re.escape(BEAM)} fehlgeschlagen: HTTP 403")


@pytest.mark.parametrize("mode", ["stranger", "impostor", "relay", "noise"])
def test_a_router_with_opinions_adds_no_room(radio, rooms, house, mode):
    house.router(mode=mode)
    radio.start(discovery=True)
    assert_twelve(rooms.wait_scanned(), house)


@pytest.mark.parametrize("hostile", [{"description": form} for form in ("doctype", "huge", "deep", "wide", "cut")]
                         + [{"garbage": True}, {"endless": True}, {"close_after": 300}, {"status": 503}])
def test_a_hostile_description_costs_only_its_own_room(radio, rooms, house, hostile):
    house.switch(player=BEAM, **hostile)
    radio.start(discovery=True)
    before = radio.memory()
    status = rooms.wait_scanned()
    # Others of its household may still tell of it, but nobody can describe it.
    assert [r["id"] for r in status["rooms"]] == [house.player(player=ip)["uuid"] for _, ip in TWELVE if ip != BEAM]
    assert radio.memory() - before < 16 * 1024


@pytest.mark.parametrize("form", ["doctype", "deep", "cut", "nobody", "huge"])
def test_a_hostile_topology_is_made_good_by_the_others(radio, rooms, house, form):
    house.switch(player=BEAM, topology=form)
    radio.start(discovery=True)
    assert_twelve(rooms.wait_scanned(), house)


def test_silent_and_slow_players_cost_time_but_nothing_else(radio, rooms, house):
    house.switch(player=OFFICE, silent=True)
    house.switch(player=KITCHEN, delay=1.0)
    radio.start(discovery=True)
    status = rooms.wait_scanned(timeout=30)
    assert [r["id"] for r in status["rooms"]] == [house.player(player=ip)["uuid"] for _, ip in TWELVE if ip != OFFICE]


@pytest.mark.slow
def test_at_most_32_probes_are_in_flight_and_every_address_is_asked(radio, house, system_log):
    house.scene(scene="empty")
    house.others(mode="held")
    radio.start(discovery=True)
    system_log.wait_for(r"\[Sonos\] Keine erreichbaren Netzwerk-Player gefunden\.", 30)
    counters = house.counters()
    # The program's own address is asked, too, but never leaves its computer.
    assert counters["reached"] == 253
    assert counters["most_at_once"] == 32


@pytest.mark.slow
def test_a_run_by_the_clock_searches_again_and_scans_nothing(radio, rooms, house, system_log):
    radio.start(discovery=True)
    rooms.wait_scanned()
    first = min(s["monotonic"] for s in house.searches())
    house.forget()
    house.others(mode="held")
    wait_until(lambda: len(house.searches()) == 2, 70, "the search a minute later")
    again = house.searches()[0]["monotonic"]
    assert 58 < again - first < 63
    assert_twelve(rooms.wait_scanned(since=again - 0.5), house)
    counters = house.counters()
    assert counters["reached"] == 0, "an interface that was answered is not scanned"
    assert max(r["answered"] for r in house.requests()) - again < 3.5
    assert {r["ip"] for r in house.requests(method="GET")} == set(ALL_TWELVE)


def test_a_second_search_during_a_run_is_dropped(radio, rooms, house, status_bar, system_log):
    radio.start(headless=False, discovery=True)
    menu = status_bar.wait_for_item().menu
    assert radio.status()["scanning"]
    menu.choose(*RESCAN)
    menu.choose(*RESCAN)
    assert_twelve(rooms.wait_scanned(), house)
    assert len(house.searches()) == 2, "one datagram each way"
    menu.choose(*RESCAN)
    wait_until(lambda: len(house.searches()) == 4, 5, "a search after the run")


def test_quitting_during_a_scan_does_not_wait_for_it(radio, house, system_log):
    house.scene(scene="empty")
    house.others(mode="held")
    radio.start(discovery=True)
    system_log.wait_for(r"\[Sonos\] SSDP-Beschreibungen: \[\]")
    wait_until(lambda: house.counters()["open_now"] == 32, 5, "probes in flight")
    assert radio.quit(timeout=2) == 0
    assert not logged(system_log, r".*Keine erreichbaren.*")
    wait_until(lambda: house.counters()["open_now"] == 0, 5, "the probes to be given up")


def test_no_discovery_asks_nobody(radio, house, system_log):
    radio.start(discovery=False)
    assert radio.status()["rooms"] == [] and not radio.status()["scanning"]
    assert house.searches() == [] and house.requests() == []
    assert radio.quit() == 0
    assert radio.setting("cached_sonos_rooms") is None
    assert system_log.texts() == []


def test_a_search_from_the_menu_works_without_discovery(radio, rooms, house, status_bar):
    radio.start(headless=False, discovery=False)
    menu = status_bar.wait_for_item().menu
    menu.choose(*RESCAN)
    assert_twelve(rooms.wait_scanned(), house)
    assert radio.quit() == 0
    assert radio.setting("cached_sonos_rooms") is None


def test_a_denied_network_is_said_and_a_later_success_takes_it_back(radio, rooms, house, lab, status_bar, system_log):
    lab.net.deny(networks=["10.77.0.0/24", "239.255.255.250/32"])
    radio.start(headless=False, discovery=True)
    system_log.wait_for(r"\[Sonos\] home0: 2 Sendeversuche, 2 davon blockiert \(letzter errno 1\)")
    radio.wait_status(network_denied=True)
    menu = status_bar.wait_for_item().menu
    outputs = next(e for e in menu.open().children if e.label.startswith("Audio Output ("))
    shown = [(e.label, e.enabled) for e in outputs.children if not e.separator]
    assert ("No access to local network", False) in shown and ("Allow Local Network …", True) in shown
    assert not logged(system_log, r".*SSDP-Antworten")
    # The scan cannot get through either; a new search begins when it has given up.
    radio.wait_status(40, scanning=False)
    assert radio.status()["network_denied"]
    lab.net.deny(networks=[])
    since = system_log.entries[-1].at
    menu.choose(*RESCAN)
    status = rooms.wait_scanned(since=since + 0.001)
    assert_twelve(status, house)
    radio.wait_status(network_denied=False)


def test_descriptions_that_may_not_be_fetched_are_a_denial(radio, house, lab):
    # Routes that prohibit are as specific as those that would lead unused addresses through the house.
    house.others(mode="absent")
    lab.net.deny(networks=["10.77.0.0/24"], how="prohibit")
    radio.start(discovery=True)
    radio.wait_status(15, network_denied=True)


@pytest.mark.parametrize("present", [True, False])
def test_searching_needs_no_multicast_route(radio, rooms, house, lab, present):
    lab.net.multicast_route(present=present)
    radio.start(discovery=True)
    assert_twelve(rooms.wait_scanned(), house)
    assert [s["kind"] for s in house.searches()] == ["multicast", "broadcast"]


def test_rooms_with_two_players_and_companions_that_tell_of_themselves(radio, rooms, house):
    players = house.scene(scene="mixed")
    radio.start(discovery=True)
    status = rooms.wait_scanned()
    assert [(r["title"], r["players"]) for r in status["rooms"]] == [
        ("Hall & Stairs (Sonos)", 1), ("Hall & Stairs (Zofra)", 1), ("Küche <1>", 1), ("Salon", 2), ("Workshop", 1)]
    leader = next(p for p in players if p["room"] == "Salon" and p["coordinator"] == p["uuid"])
    assert status["rooms"][3]["id"] == leader["uuid"], "a room is known by who leads it, not by the smallest id"
