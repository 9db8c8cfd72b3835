# SPDX-License-Identifier: GPL-3.0-or-later
"""Descriptions, topology and control: documents, checks, faults and real state of the lab's players."""

import re
import xml.etree.ElementTree as ElementTree

import pytest

from household_support import (  # noqa: F401
    AV_TRANSPORT, PATHS, RENDERING, TOPOLOGY, ZONE_PLAYER, envelope, eventually, house, household_lab,
    household_stranger, post, visitor,
)

DEVICE = "{urn:schemas-upnp-org:device-1-0}"
RADIO = "x-rincon-mp3radio://10.77.0.2:8000/radio"
KITCHEN, DINING, LEFT, RIGHT = "10.77.0.15", "10.77.0.16", "10.77.0.17", "10.77.0.18"
BEAM, REAR, SUB, BOOST = "10.77.0.11", "10.77.0.12", "10.77.0.14", "10.77.0.19"
OLD_BEDROOM, OLD_KITCHEN, COMPANION = "10.77.0.20", "10.77.0.21", "10.77.0.22"
COMPANION_CONTROL = "/upnp/MediaRenderer/AVTransport/Control"


def play(visitor, ip, uri=RADIO, path=None):
    """Sets the address and starts; both statuses."""
    done = visitor.act(ip, "SetAVTransportURI", path=path, CurrentURI=uri, CurrentURIMetaData="")
    return done.status, visitor.act(ip, "Play", path=path, Speed=1).status


def test_a_description_nests_three_devices_and_only_the_first_names_the_player(house, visitor):
    answer = visitor.get(KITCHEN)
    root = ElementTree.fromstring(answer.body)
    types = [e.text for e in root.iter(f"{DEVICE}deviceType")]
    assert types == [ZONE_PLAYER, "urn:schemas-upnp-org:device:MediaServer:1",
                     "urn:schemas-upnp-org:device:MediaRenderer:1"]
    assert [e.text for e in root.iter(f"{DEVICE}roomName")] == ["Kitchen"]
    uuid = house.player(player=KITCHEN)["uuid"]
    assert [e.text for e in root.iter(f"{DEVICE}UDN")] == [f"uuid:{uuid}", f"uuid:{uuid}_MS", f"uuid:{uuid}_MR"]
    urls = {s.find(f"{DEVICE}serviceType").text: s.find(f"{DEVICE}controlURL").text
            for s in root.iter(f"{DEVICE}service")}
    assert {k: urls[k] for k in PATHS} == PATHS
    assert len(urls) == 14


def test_a_bridge_has_no_renderer_a_sub_has_and_a_companion_has_paths_of_its_own(house, visitor):
    bridge, sub, companion = (visitor.get(ip).body for ip in (BOOST, SUB, COMPANION))
    assert "AVTransport" not in bridge and "ZoneGroupTopology" in bridge
    assert f"<controlURL>{PATHS[AV_TRANSPORT]}</controlURL>" in sub
    assert f"<controlURL>{COMPANION_CONTROL}</controlURL>" in companion
    assert "<manufacturer>Zofra Zofra</manufacturer>" in companion and "ZoneGroupTopology" not in companion
    assert visitor.act(BOOST, "Play", Speed=1).status == 404
    assert visitor.act(COMPANION, "Play", Speed=1).status == 404
    assert visitor.act(COMPANION, "Play", path=COMPANION_CONTROL, Speed=1).fault == 701


def test_headers_are_those_of_players_and_the_connection_closes(house, visitor):
    document, control = visitor.get(KITCHEN), visitor.act(KITCHEN, "GetTransportInfo")
    assert document.end == control.end == "closed"
    assert document.lines[0] == "HTTP/1.1 200 OK"
    assert document.lines[2:] == ["CONTENT-TYPE: text/xml", "Server: Linux UPnP/1.0 Sonos/85.0-64200 (ZPS18)",
                                  "Connection: close"]
    assert control.lines[1:] == [f"CONTENT-LENGTH: {len(control.body)}", 'CONTENT-TYPE: text/xml; charset="utf-8"',
                                 "EXT: ", "Server: Linux UPnP/1.0 Sonos/85.0-64200 (ZPS18)", "Connection: close"]


def test_service_documents_list_the_actions(house, visitor):
    document = visitor.get(KITCHEN, "/xml/AVTransport1.xml")
    names = re.findall(r"<action><name>(\w+)</name>", document.body)
    assert document.status == 200 and {"Play", "Pause", "Stop", "SetAVTransportURI"} <= set(names)
    assert visitor.get(KITCHEN, "/xml/Nothing1.xml").status == 404
    assert visitor.get(BOOST, "/xml/AVTransport1.xml").status == 404


def test_requests_are_kept_byte_for_byte(house, visitor):
    body = envelope(AV_TRANSPORT, "Stop", InstanceID=0)
    sent = post(PATHS[AV_TRANSPORT], body, SOAPACTION=f'"{AV_TRANSPORT}#Stop"', X_Odd="a \xe4 b")
    visitor.send(KITCHEN, sent)
    kept = house.requests()
    assert [k["head"] + k["body"] for k in kept] == [sent]
    assert kept[0]["action"] == "Stop" and kept[0]["arguments"] == {"InstanceID": "0"}
    assert kept[0]["status"] == 200 and kept[0]["ip"] == KITCHEN and kept[0]["peer"].startswith("10.77.0.2:")
    assert kept[0]["answered"] >= kept[0]["monotonic"]
    visitor.get(DINING)
    assert [k["ip"] for k in house.requests(since=kept[0]["number"])] == [DINING]
    assert [k["method"] for k in house.requests(method="GET")] == ["GET"]
    house.forget()
    assert house.requests() == []


@pytest.mark.parametrize(
    "change, status, fault",
    [({"SOAPACTION": None}, 500, 401), ({"SOAPACTION": f"{AV_TRANSPORT}#Stop"}, 500, 401),
     ({"SOAPACTION": f'"{AV_TRANSPORT}#Play"'}, 500, 401), ({"SOAPACTION": f'"{RENDERING}#Stop"'}, 500, 401),
     ({"Content-Type": "text/plain"}, 415, None), ({"Content-Type": None}, 415, None),
     ({"Content-Length": None}, 411, None), ({"Host": None}, 400, None)],
)
def test_a_request_with_a_wrong_header_is_refused(house, visitor, change, status, fault):
    named = {"SOAPACTION": f'"{AV_TRANSPORT}#Stop"', **{k.replace("-", "_"): v for k, v in change.items()}}
    answer = visitor.send(KITCHEN, post(PATHS[AV_TRANSPORT], envelope(AV_TRANSPORT, "Stop", InstanceID=0), **named))
    assert answer.status == status, answer.raw
    if fault:
        assert answer.fault == fault


def test_methods_paths_and_envelopes_are_checked(house, visitor):
    assert visitor.get(KITCHEN, PATHS[AV_TRANSPORT]).status == 405
    assert visitor.send(KITCHEN, post("/xml/device_description.xml", "")).status == 405
    assert visitor.get(KITCHEN, "/nothing").status == 404
    assert visitor.send(KITCHEN, "NONSENSE\r\n\r\n").status == 400
    action = f'"{AV_TRANSPORT}#Stop"'
    for body in ("", "<x/>", "<s:Envelope", '<!DOCTYPE x><s:Envelope/>'):
        answer = visitor.send(KITCHEN, post(PATHS[AV_TRANSPORT], body, SOAPACTION=action))
        assert (answer.status, answer.fault) == (500, 401)


@pytest.mark.parametrize(
    "service, action, arguments, fault",
    [(AV_TRANSPORT, "Dance", {}, 401), (AV_TRANSPORT, "Play", {}, 402), (AV_TRANSPORT, "Play", {"Speed": 2}, 402),
     (AV_TRANSPORT, "Play", {"Speed": 1, "InstanceID": 1}, 718), (AV_TRANSPORT, "Play", {"Speed": 1}, 701),
     (AV_TRANSPORT, "Pause", {}, 701), (AV_TRANSPORT, "SetPlayMode", {"NewPlayMode": "NORMAL"}, 602),
     (AV_TRANSPORT, "SetAVTransportURI", {"CurrentURI": "gopher://x", "CurrentURIMetaData": ""}, 714),
     (AV_TRANSPORT, "SetAVTransportURI", {"CurrentURI": "x-rincon:RINCON_NOBODY", "CurrentURIMetaData": ""}, 1023),
     (RENDERING, "SetVolume", {"Channel": "Master", "DesiredVolume": 101}, 402),
     (RENDERING, "SetVolume", {"Channel": "Master", "DesiredVolume": "loud"}, 402),
     (RENDERING, "SetVolume", {"Channel": "Middle", "DesiredVolume": 10}, 402)],
)
def test_faults_as_players_send_them(house, visitor, service, action, arguments, fault):
    answer = visitor.act(KITCHEN, action, service, **arguments)
    assert (answer.status, answer.fault) == (500, fault), answer.raw
    assert answer.lines[0] == "HTTP/1.1 500 Internal Server Error"
    assert house.player(player=KITCHEN)["transport"]["uri"] == ""
    assert house.player(player=KITCHEN)["volume"] == 25


def test_volume_and_mute_are_kept(house, visitor):
    for volume in (0, 100, 37):
        done = visitor.act(KITCHEN, "SetVolume", RENDERING, Channel="Master", DesiredVolume=volume)
        assert done.status == 200 and done.values == {}
        read = visitor.act(KITCHEN, "GetVolume", RENDERING, Channel="Master").values
        assert read == {"CurrentVolume": str(volume)}
        assert house.player(player=KITCHEN)["volume"] == volume
    visitor.act(KITCHEN, "SetMute", RENDERING, Channel="Master", DesiredMute=1)
    assert visitor.act(KITCHEN, "GetMute", RENDERING, Channel="Master").values == {"CurrentMute": "1"}
    assert house.player(player=DINING)["volume"] == 25 and not house.player(player=DINING)["mute"]


def test_topology_of_new_software_wraps_the_groups_and_puts_the_coordinator_last(house, visitor):
    root = ElementTree.fromstring(visitor.topology(DINING))
    assert [e.tag for e in root] == ["ZoneGroups", "VanishedDevices"]
    first = root.find("ZoneGroups")[0]
    assert [m.get("ZoneName") for m in first] == ["Dining Room", "Kitchen"]
    assert first.get("Coordinator") == house.player(player=KITCHEN)["uuid"]
    assert first.get("ID") == house.player(player=KITCHEN)["group_id"]
    office = next(g for g in root.find("ZoneGroups") if g[0].get("ZoneName") == "Office")
    assert [m.get("Invisible") for m in office] == ["1", None]
    assert {m.get("ChannelMapSet") for m in office} == {
        f"{house.player(player=LEFT)['uuid']}:LF,LF;{house.player(player=RIGHT)['uuid']}:RF,RF"
    }


def test_satellites_travel_inside_their_main_unit(house, visitor):
    root = ElementTree.fromstring(visitor.topology(BEAM))
    main = root.find("ZoneGroups")[0][0]
    assert main.get("ZoneName") == "Living Room" and main.get("Invisible") is None
    inside = [(s.tag, s.get("Invisible"), s.get("Location").split("/")[2]) for s in main]
    assert inside == [("Satellite", "1", f"{ip}:1400") for ip in (REAR, "10.77.0.13", SUB)]
    assert main.get("HTSatChanMapSet").count(";") == 3
    assert main[2].get("HTSatChanMapSet").endswith(":SW")


def test_topology_of_old_software_is_bare_and_households_do_not_mix(house, visitor):
    root = ElementTree.fromstring(visitor.topology(OLD_KITCHEN))
    assert root.tag == "ZoneGroups"
    seen = {m.get("ZoneName"): m.get("Invisible") for m in root.iter("ZoneGroupMember")}
    assert seen == {"Kitchen": None, "BOOST": "1", "Bedroom": None}
    assert visitor.act(COMPANION, "GetZoneGroupState", TOPOLOGY).status == 404


def test_the_order_differs_by_player_asked_and_says_the_same(house, visitor):
    def groups(ip):
        return [g.get("ID") for g in ElementTree.fromstring(visitor.topology(ip)).iter("ZoneGroup")]
    told = [groups(ip) for ip in (BEAM, KITCHEN, LEFT)]
    assert len({tuple(x) for x in told}) == 3
    assert len({tuple(sorted(x)) for x in told}) == 1


def test_topology_travels_escaped_inside_the_envelope(house, visitor):
    house.rename(player=KITCHEN, room='A & B "<\'>')
    answer = visitor.act(KITCHEN, "GetZoneGroupState", TOPOLOGY)
    inner = re.search(r"<ZoneGroupState>(.*)</ZoneGroupState></u:", answer.body).group(1)
    assert "<" not in inner and '"' not in inner and "&amp;amp;" in inner
    names = {m.get("ZoneName") for m in ElementTree.fromstring(answer.values["ZoneGroupState"]).iter("ZoneGroupMember")}
    assert 'A & B "<\'>' in names


def test_playing_reads_the_stream_and_pausing_stops_reading(house, visitor, household_stranger):
    assert play(visitor, BEAM) == (200, 200)
    eventually(lambda: house.player(player=BEAM)["stream"]["bytes_total"] > 4000, "bytes of the stream")
    playing = house.player(player=BEAM)
    assert playing["state"] == "PLAYING" and playing["stream"]["url"] == "http://10.77.0.2:8000/radio"
    assert playing["stream"]["content_type"] == "audio/mpeg"
    assert visitor.act(BEAM, "GetTransportInfo").values["CurrentTransportState"] == "PLAYING"
    assert visitor.act(BEAM, "GetMediaInfo").values["CurrentURI"] == RADIO
    assert household_stranger.radio_requests()[-1].startswith("GET /radio HTTP/1.1\r\nHost: 10.77.0.2:8000\r\n")
    assert visitor.act(BEAM, "Pause").status == 200
    paused = house.player(player=BEAM)
    assert paused["state"] == "PAUSED_PLAYBACK"
    assert visitor.act(BEAM, "Pause").fault == 701
    assert visitor.act(BEAM, "Play", Speed=1).status == 200
    eventually(lambda: house.player(player=BEAM)["stream"]["opened"] == 2, "the stream again")
    assert visitor.act(BEAM, "Stop").status == 200
    assert house.player(player=BEAM)["state"] == "STOPPED"
    assert house.player(player=BEAM)["transport"]["uri"] == RADIO


@pytest.mark.parametrize("path, played", [("moved", True), ("once", True), ("gone", False)])
def test_streams_that_move_end_or_are_not_there(house, visitor, path, played):
    assert play(visitor, BEAM, f"x-rincon-mp3radio://10.77.0.2:8000/{path}") == (200, 200)
    state = "PLAYING" if path == "moved" else "STOPPED"
    eventually(lambda: house.player(player=BEAM)["state"] == state, state)
    stream = house.player(player=BEAM)["stream"]
    assert (stream["bytes_total"] > 0) is played
    if path == "gone":
        assert "HTTP 404" in stream["error"]
        assert visitor.act(BEAM, "GetTransportInfo").values["CurrentTransportStatus"] == "ERROR_OCCURRED"


def test_a_follower_plays_what_its_coordinator_plays_and_takes_no_orders(house, visitor):
    assert play(visitor, KITCHEN) == (200, 200)
    eventually(lambda: house.player(player=DINING)["state"] == "PLAYING", "the follower")
    leader = house.player(player=KITCHEN)["uuid"]
    assert visitor.act(DINING, "GetMediaInfo").values["CurrentURI"] == f"x-rincon:{leader}"
    assert house.player(player=DINING)["stream"]["opened"] == 0
    for ip, action in ((DINING, "Pause"), (DINING, "Stop"), (RIGHT, "Stop"), (REAR, "Stop"), (SUB, "Stop")):
        assert visitor.act(ip, action).fault == 800
    assert house.player(player=KITCHEN)["state"] == "PLAYING"


def test_joining_takes_a_pair_along_and_leaving_ends_its_part(house, visitor):
    leader = house.player(player=BEAM)["uuid"]
    play(visitor, BEAM)
    join = visitor.act(LEFT, "SetAVTransportURI", CurrentURI=f"x-rincon:{leader}", CurrentURIMetaData="")
    assert join.status == 200
    assert house.player(player=LEFT)["coordinator"] == house.player(player=RIGHT)["coordinator"] == leader
    eventually(lambda: house.player(player=LEFT)["state"] == "PLAYING", "the pair")
    group = house.player(player=BEAM)["group_id"]
    alone = visitor.act(LEFT, "BecomeCoordinatorOfStandaloneGroup")
    assert alone.status == 200 and alone.values["NewGroupID"].startswith(house.player(player=LEFT)["uuid"])
    assert house.player(player=LEFT)["state"] == "STOPPED" and house.player(player=BEAM)["state"] == "PLAYING"
    assert house.player(player=RIGHT)["coordinator"] == house.player(player=LEFT)["uuid"]
    assert house.player(player=BEAM)["group_id"] == group


def test_a_coordinator_that_leaves_hands_over_what_plays(house, visitor):
    play(visitor, KITCHEN)
    eventually(lambda: house.player(player=KITCHEN)["stream"]["opened"] == 1, "the stream")
    answer = visitor.act(KITCHEN, "BecomeCoordinatorOfStandaloneGroup")
    heir = house.player(player=DINING)
    assert answer.values["DelegatedGroupCoordinatorID"] == heir["uuid"] == heir["coordinator"]
    assert house.player(player=KITCHEN)["state"] == "STOPPED"
    eventually(lambda: house.player(player=DINING)["stream"]["opened"] == 1, "the stream at the heir")
    assert house.player(player=DINING)["transport"]["uri"] == RADIO


def test_players_of_another_household_and_companions_do_not_join(house, visitor):
    leader = house.player(player=BEAM)["uuid"]
    join = {"CurrentURI": f"x-rincon:{leader}", "CurrentURIMetaData": ""}
    assert visitor.act(OLD_BEDROOM, "SetAVTransportURI", **join).fault == 1023
    assert visitor.act(COMPANION, "SetAVTransportURI", path=COMPANION_CONTROL, **join).fault == 714
    assert visitor.act(COMPANION, "BecomeCoordinatorOfStandaloneGroup", path=COMPANION_CONTROL).fault == 1023
    assert play(visitor, COMPANION, path=COMPANION_CONTROL) == (200, 200)
    eventually(lambda: house.player(player=COMPANION)["stream"]["bytes_total"] > 0, "the companion's stream")


def test_an_address_of_its_own_takes_a_follower_out_of_its_group(house, visitor):
    assert play(visitor, DINING) == (200, 200)
    assert house.player(player=DINING)["coordinator"] == house.player(player=DINING)["uuid"]
    assert len(house.player(player=KITCHEN)["group"]) == 1


def test_events_are_granted_renewed_and_ended(house, visitor):
    path = "/MediaRenderer/AVTransport/Event"

    def ask(method, *lines):
        return visitor.send(KITCHEN, "\r\n".join([f"{method} {path} HTTP/1.1", "Host: x", *lines, "", ""]))
    granted = ask("SUBSCRIBE", "CALLBACK: <http://10.77.0.2:8000/event>", "NT: upnp:event", "TIMEOUT: Second-60")
    assert granted.status == 200 and granted.headers["timeout"] == "Second-60"
    sid = granted.headers["sid"]
    assert house.counters()["subscriptions"] == 1
    assert ask("SUBSCRIBE", f"SID: {sid}").status == 200
    assert ask("SUBSCRIBE", f"SID: {sid}", "NT: upnp:event").status == 400
    assert ask("SUBSCRIBE", "NT: upnp:event").status == 412
    assert ask("UNSUBSCRIBE", f"SID: {sid}").status == 200
    assert ask("UNSUBSCRIBE", f"SID: {sid}").status == 412
    assert ask("GET").status == 405
